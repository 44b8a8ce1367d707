#include "Quorvex.Types.MacAddress.hpp"

#include "Quorvex.Rtl.Checked.hpp"
#include "Quorvex.Utils.Strings.hpp"

namespace Quorvex::Types::MacAddress {

using Utils::Strings::gString;

namespace {

// A piece read as hexadecimal the runtime's way, through a "$" prefix.
UnicodeString AsHex(UnicodeStringView piece) { return u"$" + UnicodeString(piece); }

}  // namespace

TMacAddress::TMacAddress(uint8_t A, uint8_t B, uint8_t C, uint8_t D, uint8_t E, uint8_t F) : Groups{A, B, C, D, E, F} {}

TMacAddress::TMacAddress(UnicodeStringView AMac) : TMacAddress(FromString(AMac)) {}

TMacAddress TMacAddress::FromString(UnicodeStringView AMac) {
  TMacAddress result;
  if (AMac.size() <= 2) return result;
  const auto pieces = gString::Split(AMac, AMac.substr(2, 1));
  if (pieces.size() != result.Groups.size()) return result;
  for (size_t i = 0; i < pieces.size(); ++i)
    result.Groups[i] = Rtl::Checked::Narrow<uint8_t>(Rtl::Strings::StrToInt(AsHex(pieces[i])));
  return result;
}

bool TMacAddress::IsCorrect(UnicodeStringView S) {
  const auto pieces = gString::DeleteEmpties(gString::Split(S, u"."));
  if (pieces.size() != TMacByteArray().size()) return false;
  for (const UnicodeString& piece : pieces) {
    const int32_t value = Rtl::Strings::StrToIntDef(AsHex(piece), -1);
    if (value < 0 || value > 255) return false;
  }
  return true;
}

UnicodeString TMacAddress::ToString(UnicodeStringView ADelim) const {
  UnicodeString result;
  for (uint8_t group : Groups) gString::Add(result, Rtl::Strings::IntToHex(group, 2), ADelim);
  return result;
}

}  // namespace Quorvex::Types::MacAddress
