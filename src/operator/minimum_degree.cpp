#include "operator/minimum_degree.h"

#include "util/machine.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

namespace quor {
namespace {

constexpr int kMaxIndex = std::numeric_limits<int>::max();
constexpr int kNone = -1;

/// Room for the lists of the quotient graph: all entries and a fifth more, two numbers per row.
std::int64_t listRoom(const SparseMatrix& matrix) {
  return matrix.nonZeros() + matrix.nonZeros() / 5 + 2 * matrix.cols();
}

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
  explicit QuotientGraph(const SparseMatrix& matrix)
      : n_(static_cast<int>(matrix.cols())),
        nodes_(static_cast<std::size_t>(n_) + 1),
        parent_(nodes_.size(), kNone),
        firstOfDegree_(nodes_.size(), kNone),
        room_(static_cast<int>(listRoom(matrix))),
        lists_(new int[static_cast<std::size_t>(room_)]),
        base_(kMaxIndex - 3 * n_) {
    while (bucketBits_ < kMaxBucketBits && (1 << bucketBits_) < n_) {
      ++bucketBits_;
    }
    buckets_.assign(std::size_t{1} << bucketBits_, kNone);
    listNeighbours(matrix);
    sortOutByDegree();
  }

  void eliminateAll() {
    while (eliminated_ < n_) {
      choosePivot();
      formElement();
      measureElements();
      updateVariables();
      if (bucketsShared_) {
        mergeEqualVariables();
      }
      releaseVariables();
    }
  }

  /// Writes the n unknowns in the order of their elimination: children before their parents,
  /// elements before the variables that were merged, both ascending.
  void postorder(int* order) {
    std::vector<int>& firstChild = firstOfDegree_;
    std::fill(firstChild.begin(), firstChild.end(), kNone);
    int firstRoot = kNone;
    for (const bool isElement : {false, true}) {
      for (int i = n_; i >= 0; --i) {
        if ((node(i).size > 0) == isElement) {
          int& first = parent_[at(i)] == kNone ? firstRoot : firstChild[at(parent_[at(i)])];
          node(i).next = std::exchange(first, i);
        }
      }
    }
    int next = firstRoot;
    for (int place = 0; place < n_; ++place) {  // the dummy is the last root
      while (firstChild[at(next)] != kNone) {
        next = std::exchange(firstChild[at(next)], kNone);
      }
      order[place] = next;
      next = node(next).next != kNone ? node(next).next : parent_[at(next)];
    }
  }

 private:
  /// Half a cache line, since nearly all of the time goes into waiting for these.
  struct alignas(32) Node {
    int list;      ///< where its list begins in lists_; meaningless once another has taken it in
    int length;    ///< of the list
    int elements;  ///< how many of a variable's list are elements
    int size;      ///< how many unknowns a variable stands for, or an element did as a pivot; minus
                   ///< that while the variable is in the current element; 0 if it was merged
    int degree;    ///< a bound of the unknowns next to a variable, or those of an element
    int mark;      ///< of an element: kAbsorbed, or see measureElements
    int next;      ///< the next variable of this degree, or in this bucket
    int previous;  ///< the previous variable of this degree, or the hash of the list
  };
  static constexpr int kAbsorbed = 0;
  static constexpr int kUnmarked = 1;
  static constexpr int kMaxBucketBits = 14;  // 64 KB stay in the cache

  static std::size_t at(int i) { return static_cast<std::size_t>(i); }
  Node& node(int i) { return nodes_[at(i)]; }

  /// The diagonal is left out.
  void listNeighbours(const SparseMatrix& matrix) {
    for (int i = 0; i < n_; ++i) {
      const int begin = listsEnd_;
      for (SparseMatrix::InnerIterator entry(matrix, i); entry; ++entry) {
        lists_[at(listsEnd_)] = entry.index();
        listsEnd_ += entry.index() != i ? 1 : 0;
      }
      const int entries = matrix.outerIndexPtr()[i + 1] - matrix.outerIndexPtr()[i];
      node(i) = {begin, listsEnd_ - begin, 0, 1, entries, kUnmarked, kNone, kNone};
    }
  }

  /// Unknowns on their own come first, as roots. Dense rows, which would only cost time, and rows
  /// without a diagonal entry come last, below a dummy element. The others await their turn.
  void sortOutByDegree() {
    node(n_) = {0, 0, 0, 1, 0, kAbsorbed, kNone, kNone};
    const int dense = std::min(n_ - 2, std::max(16, static_cast<int>(10 * std::sqrt(n_))));
    for (int i = 0; i < n_; ++i) {
      Node& row = node(i);
      const bool hasDiagonal = row.length < row.degree;
      if (hasDiagonal && row.length == 0) {
        row.mark = kAbsorbed;
        ++eliminated_;
      } else if (!hasDiagonal || row.degree > dense) {
        row.size = 0;
        parent_[at(i)] = n_;
        ++eliminated_;
      } else {
        insertByDegree(i);
      }
    }
  }

  void insertByDegree(int i) {
    int& first = firstOfDegree_[at(node(i).degree)];
    if (first != kNone) {
      node(first).previous = i;
    }
    node(i).previous = kNone;
    node(i).next = std::exchange(first, i);
  }

  void removeByDegree(const Node& variable) {
    if (variable.next != kNone) {
      node(variable.next).previous = variable.previous;
    }
    (variable.previous != kNone ? node(variable.previous).next
                                : firstOfDegree_[at(variable.degree)]) = variable.next;
  }

  void choosePivot() {
    while (firstOfDegree_[at(leastDegree_)] == kNone) {
      ++leastDegree_;
    }
    pivot_ = firstOfDegree_[at(leastDegree_)];
    const Node& pivot = node(pivot_);
    removeByDegree(pivot);
    if (pivot.next != kNone) {
      prefetch(&lists_[at(node(pivot.next).list)]);  // likely the next pivot's
    }
    pivotSize_ = pivot.size;
    eliminated_ += pivot.size;
    hasElements_ = pivot.elements > 0;
    // An element has at most as many variables as its pivot's degree.
    if (hasElements_ && listsEnd_ + leastDegree_ >= room_) {
      compactLists();
    }
  }

  /// Closes the gaps between the lists. The first number of every list goes to its node meanwhile,
  /// and the node's number, made negative, takes its place.
  void compactLists() {
    const auto negative = [](int i) { return -1 - i; };
    for (int i = 0; i < n_; ++i) {
      Node& owner = node(i);
      if (parent_[at(i)] == kNone && owner.length > 0) {
        owner.list = std::exchange(lists_[at(owner.list)], negative(i));
      }
    }
    int end = 0;
    for (int from = 0; from < listsEnd_;) {
      const int i = negative(lists_[at(from++)]);
      if (i >= 0) {
        Node& owner = node(i);
        lists_[at(end)] = std::exchange(owner.list, end);
        std::copy_n(&lists_[at(from)], owner.length - 1, &lists_[at(end + 1)]);
        end += owner.length;
        from += owner.length - 1;
      }
    }
    listsEnd_ = end;
  }

  /// Makes the pivot the element of all variables next to it, and takes in the elements that it
  /// belongs to: every pair of theirs is among those of the new one.
  void formElement() {
    Node& pivot = node(pivot_);
    pivot.size = -pivotSize_;
    const int neighbours = pivot.list + pivot.elements;
    const int end = pivot.list + pivot.length;
    elementBegin_ = hasElements_ ? listsEnd_ : pivot.list;
    elementEnd_ = elementBegin_;
    degree_ = 0;
    for (int e = pivot.list; e < neighbours; ++e) {
      Node& element = node(lists_[at(e)]);
      addVariables(element.list, element.list + element.length);
      absorb(lists_[at(e)], pivot_);
    }
    addVariables(neighbours, end);
    pivot.list = elementBegin_;
    pivot.length = elementEnd_ - elementBegin_;
    pivot.degree = degree_;
  }

  void absorb(int element, int into) {
    parent_[at(element)] = into;
    node(element).mark = kAbsorbed;
  }

  /// Adds the variables in a part of lists_ to the current element, those that it has not got.
  void addVariables(int begin, int end) {
    for (int p = begin; p < end; ++p) {
      const int i = lists_[at(p)];
      Node& variable = node(i);
      if (variable.size > 0) {
        prefetch(&lists_[at(variable.list)]);
        degree_ += variable.size;
        variable.size = -variable.size;
        removeByDegree(variable);
        lists_[at(elementEnd_++)] = i;
      }
    }
  }

  /// Marks every element that the current one shares variables with by the number of unknowns that
  /// it has besides, base_ added. Older marks are below base_.
  void measureElements() {
    for (int p = elementBegin_; p < elementEnd_; ++p) {
      const Node& variable = node(lists_[at(p)]);
      for (int e = variable.list; e < variable.list + variable.elements; ++e) {
        Node& element = node(lists_[at(e)]);
        if (element.mark >= base_) {
          element.mark += variable.size;
        } else if (element.mark != kAbsorbed) {
          element.mark = element.degree + base_ + variable.size;
        }
      }
    }
  }

  /// Brings the lists and the degrees of the current element's variables up to date and sorts the
  /// variables into buckets by their lists. Those next to nothing else are eliminated at once.
  void updateVariables() {
    bucketsShared_ = false;
    for (int p = elementBegin_; p < elementEnd_; ++p) {
      const int i = lists_[at(p)];
      Node& variable = node(i);
      std::uint32_t hash = 0;
      const int outside = pruneList(variable, hash);
      if (outside == 0) {
        parent_[at(i)] = pivot_;
        degree_ += variable.size;
        pivotSize_ -= variable.size;
        eliminated_ -= variable.size;
        variable.size = 0;
      } else {
        variable.degree = std::min(variable.degree, outside);
        variable.previous = static_cast<int>(hash);
        int& first = bucketOf(variable);
        bucketsShared_ = bucketsShared_ || first != kNone;
        variable.next = std::exchange(first, i);
      }
    }
    node(pivot_).degree = degree_;
    largestDegree_ = std::max(largestDegree_, degree_);
    raiseBase(largestDegree_);
  }

  /// Keeps the elements that have other variables than the current one, and puts that in front of
  /// them; keeps the neighbours that are not in the current element. The list does not grow: it
  /// loses the pivot or an element of the pivot's.
  /// @param hash  receives a hash of the list, the current element left out
  /// @return how many unknowns are next to the variable outside the current element, at most
  int pruneList(Node& variable, std::uint32_t& hash) {
    int* const lists = lists_.get();
    const int begin = variable.list;
    const int neighbours = begin + variable.elements;
    const int end = begin + variable.length;
    int outside = 0;
    int kept = begin;
    const auto keep = [&](int member, int unknowns) {
      lists[kept++] = member;
      hash += static_cast<std::uint32_t>(member);
      outside += unknowns;
    };
    for (int p = begin; p < neighbours; ++p) {
      const int e = lists[p];
      const int mark = node(e).mark;
      if (mark > base_) {
        keep(e, mark - base_);
      } else if (mark != kAbsorbed) {
        absorb(e, pivot_);  // all that it has, the current element has
      }
    }
    const int keptNeighbours = kept;
    for (int p = neighbours; p < end; ++p) {
      const int j = lists[p];
      if (node(j).size > 0) {
        keep(j, node(j).size);
      }
    }
    lists[kept] = lists[keptNeighbours];
    lists[keptNeighbours] = lists[begin];
    lists[begin] = pivot_;
    variable.elements = keptNeighbours - begin + 1;
    variable.length = kept - begin + 1;
    return outside;
  }

  int& bucketOf(const Node& variable) {
    const std::uint32_t mixed = static_cast<std::uint32_t>(variable.previous) * 0x9E3779B9U;
    return buckets_[mixed >> (32U - bucketBits_)];
  }

  /// Every variable takes in those behind it in its bucket that have the same list.
  void mergeEqualVariables() {
    for (int p = elementBegin_; p < elementEnd_; ++p) {
      const Node& first = node(lists_[at(p)]);
      if (bucketOf(first) == lists_[at(p)]) {
        for (int i = lists_[at(p)]; i != kNone; i = node(i).next) {
          takeInEquals(i);
        }
      }
    }
  }

  void takeInEquals(int i) {
    Node& variable = node(i);
    bool marked = false;
    int last = i;
    for (int j = variable.next; j != kNone; j = node(j).next) {
      Node& other = node(j);
      if (other.previous == variable.previous && other.length == variable.length &&
          other.elements == variable.elements) {
        if (!marked) {
          markList(variable);
          marked = true;
        }
        if (isListMarked(other)) {
          parent_[at(j)] = i;
          variable.size += other.size;
          other.size = 0;
          node(last).next = other.next;
          continue;
        }
      }
      last = j;
    }
  }

  // All lists begin with the current element.
  void markList(const Node& variable) {
    raiseBase(1);
    for (int p = variable.list + 1; p < variable.list + variable.length; ++p) {
      node(lists_[at(p)]).mark = base_;
    }
  }
  bool isListMarked(const Node& variable) {
    const int* const list = &lists_[at(variable.list)];
    return std::all_of(list + 1, list + variable.length,
                       [this](int member) { return node(member).mark == base_; });
  }

  /// Takes the variables back among those that await their turn, by their new degrees.
  void releaseVariables() {
    Node& pivot = node(pivot_);
    int end = elementBegin_;
    for (int p = elementBegin_; p < elementEnd_; ++p) {
      const int i = lists_[at(p)];
      Node& variable = node(i);
      bucketOf(variable) = kNone;
      if (variable.size == 0) {
        continue;
      }
      const int size = -variable.size;
      variable.size = size;
      variable.degree = std::min(variable.degree + degree_ - size, n_ - eliminated_ - size);
      insertByDegree(i);
      leastDegree_ = std::min(leastDegree_, variable.degree);
      lists_[at(end++)] = i;
    }
    pivot.size = pivotSize_;
    pivot.length = end - elementBegin_;
    if (pivot.length == 0) {
      pivot.mark = kAbsorbed;
    }
    if (hasElements_) {
      listsEnd_ = end;
    }
    raiseBase(1);
  }

  /// Makes all marks old ones. The base starts anew before a degree added to it would overflow.
  void raiseBase(int by) {
    base_ += by;
    if (base_ > kMaxIndex - 2 * n_) {
      for (Node& any : nodes_) {
        any.mark = std::min(any.mark, kUnmarked);
      }
      base_ = kUnmarked + 1;
    }
  }

  int n_;
  std::vector<Node> nodes_;         ///< n, and the dummy
  std::vector<int> parent_;         ///< of each node, what took it in
  std::vector<int> firstOfDegree_;  ///< the variable whose degree became this last
  int room_;                        ///< of lists_
  int listsEnd_ = 0;                ///< from here on lists_ is free
  std::unique_ptr<int[]> lists_;
  std::vector<int> buckets_;  ///< by hash: the variable that came last
  unsigned bucketBits_ = 1;
  int eliminated_ = 0;     ///< unknowns
  int leastDegree_ = 0;    ///< no variable has a lower one
  int largestDegree_ = 0;  ///< of any element
  int base_;  ///< above all old marks; begins so high that it soon starts anew, and that is no
              ///< rarity

  int pivot_ = kNone;
  int pivotSize_ = 0;         ///< unknowns
  bool hasElements_ = false;  ///< whether the pivot belonged to elements
  int elementBegin_ = 0;      ///< the current element's variables in lists_
  int elementEnd_ = 0;
  int degree_ = 0;              ///< of the current element
  bool bucketsShared_ = false;  ///< whether some bucket holds two variables
};

/// Counted as Eigen counts its working memory, in 32 bits: the lists, and eight numbers per row.
void requireMemoryFits(const SparseMatrix& matrix) {
  if (listRoom(matrix) > kMaxIndex || 8 * (matrix.cols() + 1) > kMaxIndex) {
    throw std::length_error("vector");
  }
}

}  // namespace

Permutation orderByMinimumDegree(const SparseMatrix& matrix, Permutation& inverse) {
  requireMemoryFits(matrix);
  QuotientGraph graph(matrix);
  graph.eliminateAll();
  inverse.resize(matrix.cols());
  graph.postorder(inverse.indices().data());
  return inverse.inverse();
}

}  // namespace quor
