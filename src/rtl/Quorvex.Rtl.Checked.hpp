// Checked integer arithmetic and index checks. The library treats integer
// overflow and out-of-range indexing as errors throughout: results that do
// not fit raise instead of wrapping, so every such check goes through here.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "Quorvex.Rtl.Exceptions.hpp"

namespace Quorvex::Rtl::Checked {

// a + b; raises EIntOverflow when the sum does not fit in T.
template <std::integral T>
T Add(T a, T b) {
  T result;
  if (__builtin_add_overflow(a, b, &result)) Exceptions::RaiseIntOverflow();
  return result;
}

// a - b; raises EIntOverflow when the difference does not fit in T.
template <std::integral T>
T Sub(T a, T b) {
  T result;
  if (__builtin_sub_overflow(a, b, &result)) Exceptions::RaiseIntOverflow();
  return result;
}

// a * b; raises EIntOverflow when the product does not fit in T.
template <std::integral T>
T Mul(T a, T b) {
  T result;
  if (__builtin_mul_overflow(a, b, &result)) Exceptions::RaiseIntOverflow();
  return result;
}

// `value` converted to To; raises ERangeError when it does not fit (the
// range check of an assignment to a narrower variable).
template <std::integral To, std::integral From>
To Narrow(From value) {
  if (!std::in_range<To>(value)) Exceptions::RaiseRangeError();
  return static_cast<To>(value);
}

// Raises ERangeError unless low <= index <= high.
inline void CheckRange(int64_t index, int64_t low, int64_t high) {
  if (index < low || index > high) Exceptions::RaiseRangeError();
}

// Element `index` (0-based) of a sized container; raises ERangeError when
// the index is outside it.
template <typename Container>
decltype(auto) At(Container& c, int64_t index) {
  CheckRange(index, 0, static_cast<int64_t>(std::size(c)) - 1);
  return c[static_cast<size_t>(index)];
}

// Character at 1-based `position` of a string; raises ERangeError outside
// 1..length (an empty string has no valid position).
template <typename String>
auto CharAt(const String& s, int64_t position) {
  CheckRange(position, 1, static_cast<int64_t>(s.size()));
  return s[static_cast<size_t>(position - 1)];
}

}  // namespace Quorvex::Rtl::Checked
