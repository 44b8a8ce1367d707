// Optional values.
#pragma once

#include <optional>
#include <utility>

#include "Quorvex.Rtl.Export.hpp"

namespace Quorvex::System::Nullable {

namespace Detail {
// Raises EInvalidOperation "Nullable value is empty".
[[noreturn]] QXRTL_API void RaiseNoValue();
}  // namespace Detail

// A value of T or nothing. Empty values are equal to each other and
// unequal to any value.
template <typename T>
class Nullable {
 public:
  Nullable() = default;
  Nullable(T value) : FValue(std::move(value)) {}  // NOLINT(google-explicit-constructor)

  bool HasValue() const { return FValue.has_value(); }
  // The value; raises EInvalidOperation "Nullable value is empty" when
  // there is none.
  const T& Value() const {
    if (!FValue) Detail::RaiseNoValue();
    return *FValue;
  }
  // The value, or T() / `fallback` when there is none. Never raises.
  T GetValueOrDefault() const { return FValue.value_or(T()); }
  T GetValueOrDefault(T fallback) const { return FValue.value_or(std::move(fallback)); }
  void Clear() { FValue.reset(); }

  friend bool operator==(const Nullable&, const Nullable&) = default;
  friend bool operator==(const Nullable& a, const T& b) { return a.FValue == b; }

 private:
  std::optional<T> FValue;
};

}  // namespace Quorvex::System::Nullable
