// Facts about the machine and the user the process runs as: the system's
// version, the process's bitness and rights, physical memory and the
// standard folders. Nothing here raises; a failed query gives false, 0 or
// empty text.
#pragma once

#include <cstdint>

#include "Quorvex.Platform.hpp"

namespace Quorvex::Platform {

// The version record of GetVersionExW. Off Windows every field stays 0,
// a platform id that no Windows version decision recognises.
struct OSVersion {
  uint32_t PlatformId = 0;
  uint32_t Major = 0;
  uint32_t Minor = 0;
  uint32_t Build = 0;
  uint8_t ProductType = 0;
};
OSVersion ReadOSVersion();

// The names of the running system for people to read: the kernel
// ("Windows", "Linux"), its release ("6.1.7601", "6.1.0-18-amd64") and,
// where there is one, the distribution ("Debian GNU/Linux 12 (bookworm)").
struct OSIdentity {
  std::u16string Kernel;
  std::u16string Release;
  std::u16string Distribution;
};
OSIdentity ReadOSIdentity();

// True for a 32-bit process on a 64-bit system.
bool ProcessIsWow64();

// True when the calling thread's (else the process's) token holds the
// administrators group; off Windows, when the effective user is root.
bool TokenInAdministrators();

// True when the process token is elevated; off Windows, when the
// effective user is root.
bool TokenIsElevated();

// The policy value "EnableLUA" read as a boolean; false when the key or
// the value is missing, and always false off Windows.
bool UserAccountControlEnabled();

// Total physical memory in bytes, 0 when it cannot be read.
int64_t PhysicalMemorySize();

// The standard folders the library hands out.
enum class SpecialFolder {
  System,
  Windows,
  RoamingAppData,
  LocalAppData,
  Documents,
  ProgramFiles,
  ProgramFilesX86,
};

// The folder's path without a trailing delimiter; empty when the system
// cannot name it. The folder need not exist.
Path SpecialFolderPath(SpecialFolder folder);

}  // namespace Quorvex::Platform
