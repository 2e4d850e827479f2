// The graph in which unknowns are eliminated, by approximate minimum degree.
//
// Sources: P. R. Amestoy, T. A. Davis, I. S. Duff, An approximate minimum degree ordering
// algorithm, SIAM J. Matrix Anal. Appl. 17 (1996); T. A. Davis, Direct Methods for Sparse Linear
// Systems (2006), section 7.1, whose rule for ties, and so whose result, is Eigen's too. The
// steps follow Eigen's Amd.h by Gael Guennebaud, after CSparse by Timothy A. Davis.
//
// This Source Code Form is subject to the terms of the Mozilla Public License, v. 2.0. If a copy of
// the MPL was not distributed with this file, You can obtain one at https://mozilla.org/MPL/2.0/.
#pragma once

#include "operator/factor/sparse_matrix.h"
#include "util/index.h"
#include "util/progress.h"

#include <Eigen/Core>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace quor {

/// The graph of what is left of the matrix while it is eliminated, without any fill.
///
/// Its nodes are variables and elements. A variable stands for unknowns still to be eliminated that
/// have the same neighbours. An element is what an eliminated variable, the pivot, left: its list
/// names the variables that have become neighbours of each other. A variable's list names the
/// elements it belongs to, the latest first, and then the neighbours that it has by entries of the
/// matrix alone. Elements and variables that others have taken in hang below them in a tree, and
/// the order of elimination is a postorder of it.
///
/// Among variables of the least degree the one whose degree was computed last is the next pivot.
/// That, and the order of every list, decides the result; how the lists lie in memory, and how
/// equal variables are found, does not.
class QuotientGraph {
 public:
  static constexpr int kMaxIndex = std::numeric_limits<int>::max();

  /// How many numbers its lists need: the entries and a fifth more, two per row.
  static std::int64_t room(const SparseMatrix& matrix);

  /// @param matrix  symmetric, both triangles stored, compressed; room(matrix) and eight times its
  ///                rows at most 2^31 - 1
  /// @param largestMark  marks rise with every pivot, and are all reset when they come near to it;
  ///                     at least 2n + 2. The order does not depend on it.
  explicit QuotientGraph(const SparseMatrix& matrix, int largestMark = kMaxIndex);

  /// @param progress  is reported to by unknowns, every few thousand
  void eliminateAll(const Progress& progress = {});

  /// Writes the n unknowns in the order of their elimination: children before their parents,
  /// elements before the variables that were merged, both ascending. To be called last.
  void postorder(int* order);

 private:
  struct Node {
    int list;      ///< where its list begins in lists_; meaningless once another has taken it in
    int length;    ///< of the list
    int elements;  ///< how many of a variable's list are elements
    int degree;    ///< a bound of the unknowns next to a variable
    int next;      ///< the next variable of this degree, or in this bucket
    int previous;  ///< the previous variable of this degree, or the hash of the list
  };
  struct Element {
    int degree;  ///< its unknowns
    int mark;    ///< kAbsorbed, or see measureElements; also that of a variable, see markList
  };
  static constexpr int kNone = -1;
  static constexpr int kAbsorbed = 0;
  static constexpr int kUnmarked = 1;
  static constexpr int kMaxBucketBits = 14;  // 64 KB stay in the cache

  Node& node(int i) { return nodes_[toSize(i)]; }
  Element& elementOf(int e) { return elements_[toSize(e)]; }
  int& sizeOf(int i) { return sizes_[toSize(i)]; }

  void eliminateUpTo(int end);
  void listNeighbours(const SparseMatrix& matrix);
  void sortOutByDegree();
  void insertByDegree(int i);
  void removeByDegree(const Node& variable);
  void choosePivot();
  void compactLists();
  void formElement();
  void absorb(int element, int into);
  void addVariables(int begin, int end);
  void measureElements();
  void updateVariables();
  int pruneList(Node& variable, std::uint32_t& hash);
  int& bucketOf(const Node& variable);
  void mergeEqualVariables();
  void takeInEquals(int i);
  void markList(const Node& variable);
  bool isListMarked(const Node& variable);
  void releaseVariables();
  void raiseBase(int by);

  int n_;
  std::vector<Node> nodes_;  ///< n, and the dummy

  // A hub's whole list is asked for these at every pivot next to it: apart from the nodes more of
  // them stay in the cache.
  std::vector<Element> elements_;
  std::vector<int> sizes_;  ///< how many unknowns a variable stands for, or an element did as a
                            ///< pivot; minus that while the variable is in the current element; 0
                            ///< if it was merged

  Eigen::VectorXi parent_;         ///< of each node, what took it in
  Eigen::VectorXi firstOfDegree_;  ///< the variable whose degree became this last
  int listsEnd_ = 0;               ///< from here on lists_ is free
  Eigen::VectorXi lists_;
  std::vector<int> buckets_;  ///< by hash: the variable that came last
  unsigned bucketBits_ = 1;
  int eliminated_ = 0;        ///< unknowns
  int leastDegree_ = 0;       ///< no variable has a lower one
  int largestDegree_ = 0;     ///< of any element
  int base_ = kUnmarked + 1;  ///< above all old marks, and at least 2n below largestMark_
  int largestMark_;

  int pivot_ = kNone;
  int pivotSize_ = 0;         ///< unknowns
  bool hasElements_ = false;  ///< whether the pivot belonged to elements
  int elementBegin_ = 0;      ///< the current element's variables in lists_
  int elementEnd_ = 0;
  int degree_ = 0;              ///< of the current element
  bool bucketsShared_ = false;  ///< whether some bucket holds two variables
};

}  // namespace quor
