// This Source Code Form is subject to the terms of the Mozilla Public License, v. 2.0. If a copy of
// the MPL was not distributed with this file, You can obtain one at https://mozilla.org/MPL/2.0/.

#include "operator/factor/quotient_graph.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace quor {

void QuotientGraph::eliminateAll(const Progress& progress) {
  constexpr int kBetweenReports = 4096;
  while (eliminated_ < n_) {
    eliminateUpTo(progress ? std::min(eliminated_ + kBetweenReports, n_) : n_);
    progress.report(static_cast<double>(eliminated_) / n_);
  }
}

/// Goes on until so many unknowns are eliminated, or a few more. Nearly all of the time goes into
/// these few loops, which do better in one function.
[[gnu::flatten]] void QuotientGraph::eliminateUpTo(int end) {
  while (eliminated_ < end) {
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

void QuotientGraph::insertByDegree(int i) {
  assert(node(i).degree >= 0 && node(i).degree < n_);
  int& first = firstOfDegree_[node(i).degree];
  if (first != kNone) {
    node(first).previous = i;
  }
  node(i).previous = kNone;
  node(i).next = std::exchange(first, i);
}

void QuotientGraph::removeByDegree(const Node& variable) {
  if (variable.next != kNone) {
    node(variable.next).previous = variable.previous;
  }
  (variable.previous != kNone ? node(variable.previous).next : firstOfDegree_[variable.degree]) =
      variable.next;
}

void QuotientGraph::choosePivot() {
  while (firstOfDegree_[leastDegree_] == kNone) {
    ++leastDegree_;
    assert(leastDegree_ < n_);
  }
  pivot_ = firstOfDegree_[leastDegree_];
  const Node& pivot = node(pivot_);
  removeByDegree(pivot);
  pivotSize_ = sizeOf(pivot_);
  eliminated_ += pivotSize_;
  hasElements_ = pivot.elements > 0;
  // An element has at most as many variables as its pivot's degree.
  if (hasElements_ && listsEnd_ + leastDegree_ >= lists_.size()) {
    compactLists();
  }
}

/// Closes the gaps between the lists. The first number of every list goes to its node meanwhile,
/// and the node's number, made negative, takes its place.
void QuotientGraph::compactLists() {
  const auto negative = [](int i) { return -1 - i; };
  for (int i = 0; i < n_; ++i) {
    Node& owner = node(i);
    if (parent_[i] == kNone && owner.length > 0) {
      owner.list = std::exchange(lists_[owner.list], negative(i));
    }
  }
  int end = 0;
  for (int from = 0; from < listsEnd_;) {
    const int i = negative(lists_[from++]);
    if (i >= 0) {
      Node& owner = node(i);
      lists_[end] = std::exchange(owner.list, end);
      std::copy_n(&lists_[from], owner.length - 1, &lists_[end + 1]);
      end += owner.length;
      from += owner.length - 1;
    }
  }
  listsEnd_ = end;
}

/// Makes the pivot the element of all variables next to it, and takes in the elements that it
/// belongs to: every pair of theirs is among those of the new one.
void QuotientGraph::formElement() {
  Node& pivot = node(pivot_);
  sizeOf(pivot_) = -pivotSize_;
  const int neighbours = pivot.list + pivot.elements;
  const int end = pivot.list + pivot.length;
  elementBegin_ = hasElements_ ? listsEnd_ : pivot.list;
  elementEnd_ = elementBegin_;
  degree_ = 0;
  for (int e = pivot.list; e < neighbours; ++e) {
    Node& element = node(lists_[e]);
    addVariables(element.list, element.list + element.length);
    absorb(lists_[e], pivot_);
  }
  addVariables(neighbours, end);
  assert(elementEnd_ <= lists_.size());
  pivot.list = elementBegin_;
  pivot.length = elementEnd_ - elementBegin_;
  elementOf(pivot_).degree = degree_;
}

void QuotientGraph::absorb(int element, int into) {
  parent_[element] = into;
  elementOf(element).mark = kAbsorbed;
}

/// Adds the variables in a part of lists_ to the current element, those that it has not got.
void QuotientGraph::addVariables(int begin, int end) {
  int* const lists = lists_.data();
  int* added = lists + elementEnd_;
  int unknowns = 0;
  for (const int* member = lists + begin; member != lists + end; ++member) {
    int& size = sizeOf(*member);
    if (size > 0) {
      const Node& variable = node(*member);
      unknowns += size;
      size = -size;
      removeByDegree(variable);
      *added++ = *member;
    }
  }
  elementEnd_ = static_cast<int>(added - lists);
  degree_ += unknowns;
}

/// Marks every element that the current one shares variables with by the number of unknowns that
/// it has besides, base_ added. Older marks are below base_.
void QuotientGraph::measureElements() {
  const int* const lists = lists_.data();
  const int* const end = lists + elementEnd_;
  const int base = base_;
  for (const int* member = lists + elementBegin_; member != end; ++member) {
    const Node& variable = node(*member);
    const int size = sizeOf(*member);
    const int* const elements = lists + variable.list;
    const int* const elementsEnd = elements + variable.elements;
    for (const int* e = elements; e != elementsEnd; ++e) {
      Element& element = elementOf(*e);
      if (element.mark >= base) {
        element.mark += size;
      } else if (element.mark != kAbsorbed) {
        element.mark = element.degree + base + size;
      }
    }
  }
}

/// Brings the lists and the degrees of the current element's variables up to date and sorts the
/// variables into buckets by their lists. Those next to nothing else are eliminated at once.
void QuotientGraph::updateVariables() {
  bucketsShared_ = false;
  for (int p = elementBegin_; p < elementEnd_; ++p) {
    const int i = lists_[p];
    Node& variable = node(i);
    std::uint32_t hash = 0;
    const int outside = pruneList(variable, hash);
    if (outside == 0) {
      parent_[i] = pivot_;
      const int size = std::exchange(sizeOf(i), 0);
      degree_ += size;
      pivotSize_ -= size;
      eliminated_ -= size;
    } else {
      variable.degree = std::min(variable.degree, outside);
      variable.previous = static_cast<int>(hash);
      int& first = bucketOf(variable);
      bucketsShared_ = bucketsShared_ || first != kNone;
      variable.next = std::exchange(first, i);
    }
  }
  elementOf(pivot_).degree = degree_;
  largestDegree_ = std::max(largestDegree_, degree_);
  raiseBase(largestDegree_);
}

/// Keeps the elements that have other variables than the current one, and puts that in front of
/// them; keeps the neighbours that are not in the current element. The list does not grow: it
/// loses the pivot or an element of the pivot's.
/// @param hash  receives a hash of the list, the current element left out
/// @return how many unknowns are next to the variable outside the current element, at most
int QuotientGraph::pruneList(Node& variable, std::uint32_t& hash) {
  int* const lists = lists_.data();
  const int base = base_;
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
    const int mark = elementOf(e).mark;
    if (mark > base) {
      keep(e, mark - base);
    } else if (mark != kAbsorbed) {
      absorb(e, pivot_);  // all that it has, the current element has
    }
  }
  const int keptNeighbours = kept;
  for (int p = neighbours; p < end; ++p) {
    const int j = lists[p];
    if (sizeOf(j) > 0) {
      keep(j, sizeOf(j));
    }
  }
  assert(kept < end);
  lists[kept] = lists[keptNeighbours];
  lists[keptNeighbours] = lists[begin];
  lists[begin] = pivot_;
  variable.elements = keptNeighbours - begin + 1;
  variable.length = kept - begin + 1;
  return outside;
}

int& QuotientGraph::bucketOf(const Node& variable) {
  const std::uint32_t mixed = static_cast<std::uint32_t>(variable.previous) * 0x9E3779B9U;
  return buckets_[mixed >> (32U - bucketBits_)];
}

/// Every variable takes in those behind it in its bucket that have the same list.
void QuotientGraph::mergeEqualVariables() {
  for (int p = elementBegin_; p < elementEnd_; ++p) {
    const Node& first = node(lists_[p]);
    if (bucketOf(first) == lists_[p]) {
      for (int i = lists_[p]; i != kNone; i = node(i).next) {
        takeInEquals(i);
      }
    }
  }
}

void QuotientGraph::takeInEquals(int i) {
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
        parent_[j] = i;
        sizeOf(i) += std::exchange(sizeOf(j), 0);
        node(last).next = other.next;
        continue;
      }
    }
    last = j;
  }
}

// All lists begin with the current element.
void QuotientGraph::markList(const Node& variable) {
  raiseBase(1);
  for (int p = variable.list + 1; p < variable.list + variable.length; ++p) {
    elementOf(lists_[p]).mark = base_;
  }
}

bool QuotientGraph::isListMarked(const Node& variable) {
  const int* const list = &lists_[variable.list];
  return std::all_of(list + 1, list + variable.length,
                     [this](int member) { return elementOf(member).mark == base_; });
}

/// Takes the variables back among those that await their turn, by their new degrees.
void QuotientGraph::releaseVariables() {
  Node& pivot = node(pivot_);
  int end = elementBegin_;
  for (int p = elementBegin_; p < elementEnd_; ++p) {
    const int i = lists_[p];
    Node& variable = node(i);
    bucketOf(variable) = kNone;
    if (sizeOf(i) == 0) {
      continue;
    }
    const int size = -sizeOf(i);
    sizeOf(i) = size;
    variable.degree = std::min(variable.degree + degree_ - size, n_ - eliminated_ - size);
    insertByDegree(i);
    leastDegree_ = std::min(leastDegree_, variable.degree);
    lists_[end++] = i;
  }
  sizeOf(pivot_) = pivotSize_;
  pivot.length = end - elementBegin_;
  if (pivot.length == 0) {
    elementOf(pivot_).mark = kAbsorbed;
  }
  if (hasElements_) {
    listsEnd_ = end;
  }
  raiseBase(1);
}

/// Makes all marks old ones. A degree added to the base stays below largestMark_: where it might
/// not, all marks are reset.
void QuotientGraph::raiseBase(int by) {
  base_ += by;
  if (base_ > largestMark_ - 2 * n_) {
    for (Element& any : elements_) {
      any.mark = std::min(any.mark, kUnmarked);
    }
    base_ = kUnmarked + 1;
  }
}

}  // namespace quor
