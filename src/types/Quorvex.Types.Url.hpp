// TUrl: a light URL value split into protocol, host, port and path by a
// few fixed rules (it is not a full URL parser), with joining, escaping
// through the platform, a syntax check by one fixed regular expression,
// and opening in the user's browser.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::Types::Url {

using Rtl::Strings::UnicodeString;
using Rtl::Strings::UnicodeStringView;

// Options of EscapeURL and UnescapeURL, each standing for one flag of the
// platform's URL functions (see TUrlEscapeOptionsFormat).
enum class TURLEscapeOption {
  ueoDontEscapeExtraInfo,
  ueoBrowserMode,
  ueoEscapeSpacesOnly,
  ueoEscapePercent,
  ueoEscapeSegmentOnly
};
using enum TURLEscapeOption;

// A set of TURLEscapeOption values.
class QXRTL_API TURLEscapeOptions {
 public:
  constexpr TURLEscapeOptions() = default;
  constexpr TURLEscapeOptions(std::initializer_list<TURLEscapeOption> AOptions) {
    for (TURLEscapeOption option : AOptions) FBits |= Bit(option);
  }

  constexpr bool Contains(TURLEscapeOption AOption) const { return (FBits & Bit(AOption)) != 0; }

  friend constexpr bool operator==(TURLEscapeOptions, TURLEscapeOptions) = default;

 private:
  static constexpr uint32_t Bit(TURLEscapeOption AOption) { return 1u << static_cast<uint32_t>(AOption); }

  uint32_t FBits = 0;
};

struct QXRTL_API TUrlEscapeOptionsFormat {
  TUrlEscapeOptionsFormat() = delete;

  // The platform flags of all members ORed together, 0 for the empty set:
  // 0x02000000 for both ueoDontEscapeExtraInfo and ueoBrowserMode (the
  // platform defines them alike), 0x04000000 for ueoEscapeSpacesOnly,
  // 0x00001000 for ueoEscapePercent, 0x00002000 for ueoEscapeSegmentOnly.
  static uint32_t Flags(TURLEscapeOptions AOptions);
};

struct QXRTL_API TUrl {
  // Including the "://" separator, e.g. "https://".
  UnicodeString Protocol;
  UnicodeString Host;
  // 0 when not given.
  int32_t Port = 0;
  // Never filled by parsing, only set by code.
  UnicodeString Username;
  UnicodeString Password;
  // From the first "/" after the host on, with any query and anchor.
  UnicodeString Path;

  TUrl() = default;
  // FromString.
  explicit TUrl(UnicodeStringView AUrl);

  // Splits `AUrl`: the protocol through the first "://", the host up to the
  // next "/", a port after a ":" in the host (0 when not an integer), the
  // rest as path. "user:pw@host/x" gives Host "user". Never raises.
  static TUrl FromString(UnicodeStringView AUrl);

  // Protocol, "Username[:Password]@" when there is a user name, Host,
  // ":Port" unless the port is 0 or 80 (left out for any protocol), Path.
  UnicodeString ToString() const;

  // `AUrl` and `APath` joined by exactly one "/" (gPath.Combine).
  static UnicodeString Combine(UnicodeStringView AUrl, UnicodeStringView APath);
  static UnicodeString Combine(const TUrl& AUrl, UnicodeStringView APath);

  // The URL escaped (UrlEscapeW rules) with the flags of `AOptions`. Empty
  // text, a failure or a result of 2084 characters or more give `AURL`
  // back unchanged.
  static UnicodeString EscapeURL(UnicodeStringView AURL, TURLEscapeOptions AOptions);
  // The same for unescaping (UrlUnescapeW rules).
  static UnicodeString UnescapeURL(UnicodeStringView AURL, TURLEscapeOptions AOptions);

  // True when the whole text matches VerifyPattern, case-insensitively
  // and with "." matching line breaks. Decided in time linear in the
  // text's length, whatever it holds, and never cut short by a limit.
  // Never raises; safe on any thread.
  static bool VerifyUrl(UnicodeStringView AUrl);
  // The regular expression of VerifyUrl.
  static UnicodeStringView VerifyPattern();

  // Opens the URL in the default browser, with "http://" when it has no
  // protocol, and returns without waiting; whether it opened is not
  // reported.
  static void GoUrl(const TUrl& AUrl);
  // GoUrl of FromString(AUrl).
  static void GoUrl(UnicodeStringView AUrl);
};

}  // namespace Quorvex::Types::Url
