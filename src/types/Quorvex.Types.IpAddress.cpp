#include "Quorvex.Types.IpAddress.hpp"

#include <bit>

#include "Quorvex.Platform.Net.hpp"
#include "Quorvex.Platform.hpp"
#include "Quorvex.Rtl.Checked.hpp"
#include "Quorvex.Utils.Strings.hpp"

namespace Quorvex::Types::IpAddress {

using Utils::Strings::gString;

TIpAddress::TIpAddress(uint8_t first, uint8_t second, uint8_t third, uint8_t fourth)
    : Bytes{first, second, third, fourth} {}

TIpAddress::TIpAddress(UnicodeStringView text) : TIpAddress(Platform::InetAddr(Platform::UnicodeToAnsi(text))) {}

TIpAddress::TIpAddress(uint32_t word) : Bytes(std::bit_cast<std::array<uint8_t, 4>>(word)) {}

uint32_t TIpAddress::Word() const { return std::bit_cast<uint32_t>(Bytes); }

UnicodeString TIpAddress::ToString() const { return Platform::InetNtoa(Word()); }

uint32_t TIpAddress::RangeSize() const {
  return uint32_t{Bytes[0]} << 24 | uint32_t{Bytes[1]} << 16 | uint32_t{Bytes[2]} << 8 | Bytes[3];
}

TIpAddress& TIpAddress::operator++() {
  for (size_t i = Bytes.size(); i-- > 0;) {
    if (Bytes[i] < 255) {
      ++Bytes[i];
      break;
    }
    Bytes[i] = 0;
  }
  return *this;
}

int64_t operator-(const TIpAddress& A, const TIpAddress& B) { return int64_t{A.RangeSize()} - int64_t{B.RangeSize()}; }

namespace {

struct TClassRange {
  TIpAddressClass Class;
  TIpAddress From, To;
};

}  // namespace

bool gIpAddress::IsCorrect(UnicodeStringView S) {
  // Empty pieces are dropped first, as the runtime's string extraction does.
  const auto pieces = gString::DeleteEmpties(gString::Split(S, u"."));
  if (pieces.size() != 4) return false;
  for (const UnicodeString& piece : pieces) {
    const int32_t value = Rtl::Strings::StrToIntDef(piece, -1);
    if (value < 0 || value > 255) return false;
  }
  return S != u"0.0.0.0" && S != u"255.255.255.255";
}

TIpAddressClass gIpAddress::GetClass(const TIpAddress& AAddress) {
  static const TClassRange kRanges[] = {
      {icA, TIpAddress(0, 0, 0, 0), TIpAddress(127, 255, 255, 255)},
      {icB, TIpAddress(128, 0, 0, 0), TIpAddress(191, 255, 255, 255)},
      {icC, TIpAddress(192, 0, 0, 0), TIpAddress(223, 255, 255, 255)},
      {icD, TIpAddress(224, 0, 0, 0), TIpAddress(239, 255, 255, 255)},
      {icE, TIpAddress(240, 0, 0, 0), TIpAddress(255, 255, 255, 255)},
  };
  for (const TClassRange& range : kRanges)
    if (AAddress >= range.From && AAddress <= range.To) return range.Class;
  return icIncorrect;
}

TIpAddress gIpAddress::GetClassMask(TIpAddressClass AClass) {
  switch (AClass) {
    case icB:
      return TIpAddress(255, 255, 0, 0);
    case icC:
    case icD:
    case icE:
      return TIpAddress(255, 255, 255, 0);
    default:
      // Incorrect shares the class A mask rather than failing.
      return TIpAddress(255, 0, 0, 0);
  }
}

UnicodeString gIpAddress::ClassToString(TIpAddressClass AClass) {
  static constexpr const char16_t* kNames[] = {u"Incorrect", u"A", u"B", u"C", u"D", u"E"};
  return Rtl::Checked::At(kNames, static_cast<int64_t>(AClass));
}

}  // namespace Quorvex::Types::IpAddress
