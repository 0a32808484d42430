#ifndef FILTER_INSPECT_SRC_COMPARE_SIDE_BY_SIDE_H_
#define FILTER_INSPECT_SRC_COMPARE_SIDE_BY_SIDE_H_

namespace FiltersInspect {

// Goes through two sorted ranges at the same time. Calls `visit` once for each key, in ascending
// order, with pointers to the elements with that key. If a range has no such element, its pointer
// is null.
template <class A, class B, class KeyOf, class Visit>
void forEachOfBoth(const A& a, const B& b, KeyOf keyOf, Visit visit) {
  auto x = a.begin();
  auto y = b.begin();
  while (x != a.end() || y != b.end()) {
    const bool first = y == b.end() || (x != a.end() && !(keyOf(*y) < keyOf(*x)));
    const bool second = x == a.end() || (y != b.end() && !(keyOf(*x) < keyOf(*y)));
    visit(first ? &*x : nullptr, second ? &*y : nullptr);
    if (first) ++x;
    if (second) ++y;
  }
}

}  // namespace FiltersInspect

#endif  // FILTER_INSPECT_SRC_COMPARE_SIDE_BY_SIDE_H_
