// TMacAddress: a six-byte hardware address with conversion from and to
// delimited hexadecimal text and a validity check.
#pragma once

#include <array>
#include <cstdint>

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::Types::MacAddress {

using Rtl::Strings::UnicodeString;
using Rtl::Strings::UnicodeStringView;

using TMacByteArray = std::array<uint8_t, 6>;

struct QXRTL_API TMacAddress {
  // The six bytes in the order they are written; A() to F() name them.
  TMacByteArray Groups = {};

  TMacAddress() = default;
  TMacAddress(uint8_t A, uint8_t B, uint8_t C, uint8_t D, uint8_t E, uint8_t F);
  // FromString.
  explicit TMacAddress(UnicodeStringView AMac);

  uint8_t& A() { return Groups[0]; }
  uint8_t& B() { return Groups[1]; }
  uint8_t& C() { return Groups[2]; }
  uint8_t& D() { return Groups[3]; }
  uint8_t& E() { return Groups[4]; }
  uint8_t& F() { return Groups[5]; }
  uint8_t A() const { return Groups[0]; }
  uint8_t B() const { return Groups[1]; }
  uint8_t C() const { return Groups[2]; }
  uint8_t D() const { return Groups[3]; }
  uint8_t E() const { return Groups[4]; }
  uint8_t F() const { return Groups[5]; }

  // Six hexadecimal pieces split at the text's third character, whatever
  // it is ("00:1a:2b:3c:4d:5e", "00-1A-..."). Text of fewer than three
  // characters or with another piece count gives all zeros. A piece that
  // is not hexadecimal raises EConvertError, one above FF ERangeError.
  static TMacAddress FromString(UnicodeStringView AMac);

  // True for exactly six "."-separated hexadecimal pieces in 00..FF (empty
  // pieces skipped). Only "." counts: "00-1A-2B-3C-4D-5E" is not correct
  // even though FromString reads it, and callers rely on that.
  static bool IsCorrect(UnicodeStringView S);

  // The bytes as two upper-case hex digits joined by `ADelim`
  // ("00-1A-2B-3C-4D-5E").
  UnicodeString ToString(UnicodeStringView ADelim) const;

  friend bool operator==(const TMacAddress& L, const TMacAddress& R) = default;
};

}  // namespace Quorvex::Types::MacAddress
