#include "Quorvex.Utils.System.hpp"

#include <atomic>

#include "Quorvex.Platform.System.hpp"
#include "Quorvex.Utils.Strings.hpp"

namespace Quorvex::Utils::System {

namespace {

using Platform::SpecialFolder;
using Strings::gString;

constexpr uint32_t kPlatformWin9x = 1;
constexpr uint32_t kPlatformNT = 2;
constexpr uint8_t kWorkstation = 1;
constexpr uint8_t kDomainController = 2;
constexpr uint8_t kServer = 3;

// Written without a lock: concurrent first calls compute the same value,
// so either write may win. Atomic only so that the race is a defined one.
std::atomic<TWindowsVersion> FWindowsVersion{wvUnknown};
std::atomic<int64_t> FMemorySize{0};

TWindowsVersion NTVersionOf(uint32_t major, uint32_t minor, uint8_t productType, bool isWow64) {
  if (major == 5) {
    if (minor == 0) return wv2000;
    if (minor == 1) return wvXP;
    // 64-bit XP calls itself 5.2, the number of Server 2003.
    if (minor == 2) return isWow64 ? wvXP : wv2003;
    return wvUnknown;
  }
  if (major == 6) {
    // Any server edition of 6.x, 6.2 included, counts as Server 2008; the
    // answer has always been given so and callers rely on it.
    if (productType != kWorkstation) return wv2008;
    if (minor == 0) return wvVista;
    if (minor == 1) return wvSeven;
    if (minor == 2) return wvWin8;
    return wvUnknown;
  }
  if (major > 6 && minor >= 2) {
    if (productType == kWorkstation) return wvWin8;
    if (productType == kDomainController || productType == kServer) return wvWinSrv2012;
  }
  return wvUnknown;
}

TWindowsVersion Win9xVersionOf(uint32_t minor) {
  if (minor < 10) return wv95;
  if (minor >= 90) return wvME;
  return wv98;
}

}  // namespace

namespace Detail {

TWindowsVersion WindowsVersionOf(uint32_t platformId, uint32_t major, uint32_t minor, uint8_t productType,
                                 bool isWow64) {
  if (platformId == kPlatformNT) return NTVersionOf(major, minor, productType, isWow64);
  if (platformId == kPlatformWin9x) return Win9xVersionOf(minor);
  return wvUnknown;
}

UnicodeString OSDescriptionOf(TWindowsVersion version, UnicodeStringView kernel, UnicodeStringView release,
                              UnicodeStringView distribution) {
  if (version != wvUnknown) return Rtl::Strings::Format(u"%s (%s)", STR_WINDOWS_VERSION[version], release);
  UnicodeString result(kernel);
  gString::Add(result, release, u" ");
  if (!distribution.empty()) gString::Add(result, u"(" + UnicodeString(distribution) + u")", u" ");
  return result;
}

}  // namespace Detail

TWindowsVersion gSystem::GetWindowsVersion() {
  TWindowsVersion version = FWindowsVersion.load(std::memory_order_relaxed);
  if (version != wvUnknown) return version;
  const Platform::OSVersion os = Platform::ReadOSVersion();
  version = Detail::WindowsVersionOf(os.PlatformId, os.Major, os.Minor, os.ProductType, IsWow64());
  FWindowsVersion.store(version, std::memory_order_relaxed);
  return version;
}

UnicodeString gSystem::GetWindowsVersionStr() { return UnicodeString(STR_WINDOWS_VERSION[GetWindowsVersion()]); }

bool gSystem::IsWindows(TWindowsVersion AMin, TWindowsVersion AMax) {
  const TWindowsVersion version = GetWindowsVersion();
  return AMin <= version && version <= AMax;
}

bool gSystem::IsWow64() { return Platform::ProcessIsWow64(); }

bool gSystem::IsAdmin() {
  if (GetWindowsVersion() >= wvVista) return IsElevated();
  return Platform::TokenInAdministrators();
}

bool gSystem::IsElevated() { return Platform::TokenIsElevated(); }

bool gSystem::IsUACEnabled() { return IsWindows(wvVista, wvWinNext) && Platform::UserAccountControlEnabled(); }

int64_t gSystem::MemorySize() {
  int64_t size = FMemorySize.load(std::memory_order_relaxed);
  if (size > 0) return size;
  size = Platform::PhysicalMemorySize();
  FMemorySize.store(size, std::memory_order_relaxed);
  return size;
}

UnicodeString gSystem::SystemPath() { return Platform::SpecialFolderPath(SpecialFolder::System); }

UnicodeString gSystem::WindowsPath() { return Platform::SpecialFolderPath(SpecialFolder::Windows); }

UnicodeString gSystem::UserAppDataPath() { return Platform::SpecialFolderPath(SpecialFolder::RoamingAppData); }

UnicodeString gSystem::UserAppDataLocalPath() { return Platform::SpecialFolderPath(SpecialFolder::LocalAppData); }

UnicodeString gSystem::UserDocsPath() { return Platform::SpecialFolderPath(SpecialFolder::Documents); }

UnicodeString gSystem::GetProgramFilesPath() { return Platform::SpecialFolderPath(SpecialFolder::ProgramFiles); }

UnicodeString gSystem::GetProgramFilesX86Path() { return Platform::SpecialFolderPath(SpecialFolder::ProgramFilesX86); }

UnicodeString gSystem::GetOSDescription() {
  const Platform::OSIdentity identity = Platform::ReadOSIdentity();
  return Detail::OSDescriptionOf(GetWindowsVersion(), identity.Kernel, identity.Release, identity.Distribution);
}

}  // namespace Quorvex::Utils::System
