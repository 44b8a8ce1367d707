// TIpAddress: an IPv4 address kept in network order (the form the socket
// functions use), with ordering, increment and distance, and gIpAddress
// with the classful network rules.
#pragma once

#include <array>
#include <compare>
#include <cstdint>

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::Types::IpAddress {

using Rtl::Strings::UnicodeString;
using Rtl::Strings::UnicodeStringView;

struct QXRTL_API TIpAddress {
  // The dotted numbers in order: Bytes[0] is the first.
  std::array<uint8_t, 4> Bytes = {};

  TIpAddress() = default;
  // The four numbers of the dotted text, first to fourth.
  TIpAddress(uint8_t first, uint8_t second, uint8_t third, uint8_t fourth);
  // The text as inet_addr reads it (in 8-bit characters). Rejected text
  // gives the word 0xFFFFFFFF, the same as "255.255.255.255"; never raises.
  explicit TIpAddress(UnicodeStringView text);
  // A network-order word as the socket functions hand it over.
  explicit TIpAddress(uint32_t word);

  // The stored bytes viewed as one word, in network order.
  uint32_t Word() const;
  // Dotted decimal text from inet_ntoa ("192.168.0.1").
  UnicodeString ToString() const;
  // The address as a number, first byte most significant (192.168.0.1
  // gives 3232235521).
  uint32_t RangeSize() const;

  // Adds one with the carry moving from the fourth byte toward the first;
  // 255.255.255.255 becomes 0.0.0.0.
  TIpAddress& operator++();

  friend bool operator==(const TIpAddress& A, const TIpAddress& B) { return A.Word() == B.Word(); }
  // Orders by RangeSize, so 10.0.0.2 comes before 10.0.1.1.
  friend std::strong_ordering operator<=>(const TIpAddress& A, const TIpAddress& B) {
    return A.RangeSize() <=> B.RangeSize();
  }
  // RangeSize(A) - RangeSize(B), negative when B is the higher address.
  friend QXRTL_API int64_t operator-(const TIpAddress& A, const TIpAddress& B);
};

enum class TIpAddressClass { icIncorrect, icA, icB, icC, icD, icE };
using enum TIpAddressClass;

struct QXRTL_API TIpAndMask {
  TIpAddress IP;
  TIpAddress Mask;
};

struct QXRTL_API gIpAddress {
  gIpAddress() = delete;

  // True for four dot-separated numbers in 0..255 (empty pieces between
  // dots are skipped before counting, so "10..0.0.1" passes), except the
  // texts "0.0.0.0" and "255.255.255.255".
  static bool IsCorrect(UnicodeStringView S);
  // The class whose address range holds `AAddress`.
  static TIpAddressClass GetClass(const TIpAddress& AAddress);
  // The default mask of a class: 255.0.0.0 for A (and Incorrect),
  // 255.255.0.0 for B, 255.255.255.0 for C, D and E.
  static TIpAddress GetClassMask(TIpAddressClass AClass);
  // "Incorrect", "A", "B", "C", "D" or "E".
  static UnicodeString ClassToString(TIpAddressClass AClass);
};

}  // namespace Quorvex::Types::IpAddress
