// gSystem: what an application asks about the machine it runs on: the
// Windows release, the process's rights and bitness, user-account control,
// physical memory and the standard folders. Nothing here raises: a failed
// query answers wvUnknown, false, 0 or empty text.
#pragma once

#include <cstdint>
#include <iterator>

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::Utils::System {

using Rtl::Strings::UnicodeString;
using Rtl::Strings::UnicodeStringView;

// Windows releases in the order IsWindows compares them. wvNT4 and
// wvWinNext are never detected; they serve as range bounds and for display.
enum TWindowsVersion : uint8_t {
  wvUnknown,
  wv95,
  wvNT4,
  wv98,
  wvME,
  wv2000,
  wvXP,
  wv2003,
  wvVista,
  wv2008,
  wvSeven,
  wvWin8,
  wvWinSrv2012,
  wvWinNext,
};

// The display text of each TWindowsVersion, indexed by it.
inline constexpr UnicodeStringView STR_WINDOWS_VERSION[] = {
    u"Unknown",      u"Windows 95", u"Windows NT",          u"Windows 98",    u"Windows Millennium",
    u"Windows 2000", u"Windows XP", u"Windows Server 2003", u"Windows Vista", u"Windows Server 2008",
    u"Windows 7",    u"Windows 8",  u"Windows Server 2012", u"Windows Next",
};
static_assert(std::size(STR_WINDOWS_VERSION) == wvWinNext + 1);

struct QXRTL_API gSystem {
  gSystem() = delete;

  // The running Windows release; wvUnknown off Windows and for releases it
  // does not know. Detected once, but again on every call while unknown.
  static TWindowsVersion GetWindowsVersion();
  // The STR_WINDOWS_VERSION text of GetWindowsVersion.
  static UnicodeString GetWindowsVersionStr();
  // True when AMin <= GetWindowsVersion() <= AMax.
  static bool IsWindows(TWindowsVersion AMin, TWindowsVersion AMax);

  // True for a 32-bit process on a 64-bit system; false when unknown.
  static bool IsWow64();
  // True when the process runs with administrator rights: from Vista on
  // the same as IsElevated, before it membership of the administrators
  // group. Off Windows, true for root. Any failure gives false.
  static bool IsAdmin();
  // True when the process token is elevated (off Windows, for root).
  static bool IsElevated();
  // True when user-account control is on; always false before Vista (the
  // registry is not read then) and off Windows.
  static bool IsUACEnabled();
  // Total physical memory in bytes, read once; 0 when it cannot be read
  // (and then read again on the next call).
  static int64_t MemorySize();

  // The standard folders, without a trailing delimiter. Off Windows they
  // follow the XDG base-directory conventions (see the README); empty text
  // when the system cannot name one.
  static UnicodeString SystemPath();
  static UnicodeString WindowsPath();
  static UnicodeString UserAppDataPath();
  static UnicodeString UserAppDataLocalPath();
  static UnicodeString UserDocsPath();
  static UnicodeString GetProgramFilesPath();
  static UnicodeString GetProgramFilesX86Path();

  // The system's name and version in words, for About boxes and logs:
  // "Windows 7 (6.1.7601)", "Windows 10.0.19045" for a release without a
  // TWindowsVersion, "Linux 6.1.0-18-amd64 (Debian GNU/Linux 12 (bookworm))".
  static UnicodeString GetOSDescription();
};

// The pure decisions behind gSystem, exposed so that they can be tested
// with any system's numbers on any platform.
namespace Detail {

// The release named by GetVersionExW's platform id (2 for NT, 1 for 9x),
// major and minor version and product type (1 for a workstation), with
// whether the process runs under WOW64 (64-bit XP reports 5.2).
TWindowsVersion WindowsVersionOf(uint32_t platformId, uint32_t major, uint32_t minor, uint8_t productType,
                                 bool isWow64);

// GetOSDescription's text for a detected `version` (wvUnknown when none)
// and the system's kernel, release and distribution names.
UnicodeString OSDescriptionOf(TWindowsVersion version, UnicodeStringView kernel, UnicodeStringView release,
                              UnicodeStringView distribution);

}  // namespace Detail

}  // namespace Quorvex::Utils::System
