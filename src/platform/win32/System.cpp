// Windows only: system facts, token rights and the shell's standard folders.
#include "Quorvex.Platform.Win32.hpp"
// shlobj.h needs windows.h first.
#include <shlobj.h>

#include <memory>
#include <string>
#include <string_view>

#include "Quorvex.Platform.System.hpp"

namespace Quorvex::Platform {

namespace {

static_assert(sizeof(OSVERSIONINFOEXW) == 284, "GetVersionExW takes the extended record");
static_assert(sizeof(MEMORYSTATUSEX) == 64, "GlobalMemoryStatusEx takes the 64-byte record");

// A token handle closed on every path out.
struct TokenCloser {
  void operator()(HANDLE token) const { CloseHandle(token); }
};
using TokenHandle = std::unique_ptr<void, TokenCloser>;

struct SidFreer {
  void operator()(PSID sid) const { FreeSid(sid); }
};
using SidHandle = std::unique_ptr<void, SidFreer>;

// The process token opened for query, or null.
TokenHandle OpenProcessTokenForQuery() {
  HANDLE token = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) return nullptr;
  return TokenHandle(token);
}

// The thread's own token when it impersonates, else the process token.
TokenHandle OpenEffectiveToken() {
  HANDLE token = nullptr;
  if (OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &token)) return TokenHandle(token);
  if (::GetLastError() != ERROR_NO_TOKEN) return nullptr;
  return OpenProcessTokenForQuery();
}

// The well-known group BUILTIN\Administrators.
SidHandle AdministratorsGroup() {
  SID_IDENTIFIER_AUTHORITY ntAuthority = SECURITY_NT_AUTHORITY;
  PSID sid = nullptr;
  if (!AllocateAndInitializeSid(&ntAuthority, 2, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS, 0, 0, 0, 0, 0, 0,
                                &sid))
    return nullptr;
  return SidHandle(sid);
}

int FolderId(SpecialFolder folder) {
  switch (folder) {
    case SpecialFolder::System:
      return CSIDL_SYSTEM;  // 37
    case SpecialFolder::Windows:
      return CSIDL_WINDOWS;  // 36
    case SpecialFolder::RoamingAppData:
      return CSIDL_APPDATA;  // 26
    case SpecialFolder::LocalAppData:
      return CSIDL_LOCAL_APPDATA;  // 28
    case SpecialFolder::Documents:
      return CSIDL_PERSONAL;  // 5
    case SpecialFolder::ProgramFiles:
      return CSIDL_PROGRAM_FILES;  // 38
    case SpecialFolder::ProgramFilesX86:
      return CSIDL_PROGRAM_FILESX86;  // 42
  }
  return -1;
}

}  // namespace

OSVersion ReadOSVersion() {
  OSVERSIONINFOEXW info = {};
  info.dwOSVersionInfoSize = sizeof(info);
  if (!GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&info))) return {};
  return {info.dwPlatformId, info.dwMajorVersion, info.dwMinorVersion, info.dwBuildNumber, info.wProductType};
}

OSIdentity ReadOSIdentity() {
  const OSVersion version = ReadOSVersion();
  const auto decimal = [](uint32_t value) {
    const std::string digits = std::to_string(value);
    return std::u16string(digits.begin(), digits.end());
  };
  return {u"Windows", decimal(version.Major) + u'.' + decimal(version.Minor) + u'.' + decimal(version.Build), {}};
}

bool ProcessIsWow64() {
  BOOL wow64 = FALSE;
  return IsWow64Process(GetCurrentProcess(), &wow64) && wow64;
}

bool TokenInAdministrators() {
  const TokenHandle token = OpenEffectiveToken();
  if (!token) return false;
  // A fixed kilobyte holds the groups of any ordinary account; a token
  // with more groups fails the call and counts as not an administrator.
  alignas(TOKEN_GROUPS) BYTE buffer[1024];
  DWORD returned = 0;
  if (!GetTokenInformation(token.get(), TokenGroups, buffer, sizeof(buffer), &returned)) return false;
  const SidHandle administrators = AdministratorsGroup();
  if (!administrators) return false;
  const auto* groups = reinterpret_cast<const TOKEN_GROUPS*>(buffer);
  for (DWORD i = 0; i < groups->GroupCount; ++i) {
    if (EqualSid(administrators.get(), groups->Groups[i].Sid)) return true;
  }
  return false;
}

bool TokenIsElevated() {
  const TokenHandle token = OpenProcessTokenForQuery();
  if (!token) return false;
  TOKEN_ELEVATION elevation = {};
  DWORD returned = 0;
  return GetTokenInformation(token.get(), TokenElevation, &elevation, sizeof(elevation), &returned) &&
         returned == sizeof(elevation) && elevation.TokenIsElevated != 0;
}

bool UserAccountControlEnabled() {
  // The policy key is named "\\SOFTWARE\\...": the leading backslash means
  // "from the root key". RegOpenKeyExW takes sub-key names without it (it
  // answers ERROR_BAD_PATHNAME otherwise), so it is dropped for the call.
  constexpr std::wstring_view kPolicies = L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Policies\\System";
  constexpr REGSAM kReadOnly = 0x20019;  // KEY_READ
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kPolicies.substr(1).data(), 0, kReadOnly, &key) != ERROR_SUCCESS)
    return false;
  DWORD value = 0;
  DWORD size = sizeof(value);
  DWORD type = 0;
  const LONG status = RegQueryValueExW(key, L"EnableLUA", nullptr, &type, reinterpret_cast<BYTE*>(&value), &size);
  RegCloseKey(key);
  return status == ERROR_SUCCESS && type == REG_DWORD && size == sizeof(value) && value != 0;
}

int64_t PhysicalMemorySize() {
  MEMORYSTATUSEX status = {};
  status.dwLength = sizeof(status);
  if (!GlobalMemoryStatusEx(&status)) return 0;
  return static_cast<int64_t>(status.ullTotalPhys);
}

Path SpecialFolderPath(SpecialFolder folder) {
  // Cleared first: the call's result is not consulted, so a failure must
  // leave empty text rather than stale characters.
  wchar_t buffer[MAX_PATH + 1] = {};
  SHGetFolderPathW(nullptr, FolderId(folder), nullptr, 0, buffer);
  buffer[MAX_PATH] = L'\0';
  return Win32::FromWide(buffer);
}

}  // namespace Quorvex::Platform
