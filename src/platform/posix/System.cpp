// POSIX only: system facts and the standard folders for Linux builds.
#include <pwd.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Quorvex.Platform.System.hpp"
#include "Quorvex.Platform.Unicode.hpp"

namespace Quorvex::Platform {

namespace {

// `raw` without its surrounding quotes, with the backslash escapes of a
// double-quoted word resolved.
std::string Unquoted(std::string_view raw) {
  const bool quoted = raw.size() >= 2 && (raw.front() == '"' || raw.front() == '\'') && raw.back() == raw.front();
  const bool escapes = quoted && raw.front() == '"';
  if (quoted) raw = raw.substr(1, raw.size() - 2);
  std::string value;
  for (size_t i = 0; i < raw.size(); ++i) {
    if (escapes && raw[i] == '\\' && i + 1 < raw.size()) ++i;
    value += raw[i];
  }
  return value;
}

// The value of `key` in a file of shell-style assignments (os-release,
// user-dirs.dirs). The last assignment wins, as it would when the shell
// sources the file.
std::optional<std::string> AssignedValue(const std::string& fileName, std::string_view key) {
  const std::string prefix = std::string(key) + "=";
  std::ifstream file(fileName);
  std::optional<std::string> result;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with(prefix)) result = Unquoted(std::string_view(line).substr(prefix.size()));
  }
  return result;
}

// "/a/b/" as "/a/b"; the root stays "/".
std::string WithoutTrailingSlash(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

// $HOME, else the home folder of the user's passwd entry; "" when neither
// names one.
std::string HomeFolder() {
  if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') return WithoutTrailingSlash(home);
  long size = sysconf(_SC_GETPW_R_SIZE_MAX);
  std::vector<char> buffer(size > 0 ? static_cast<size_t>(size) : 16384);
  passwd entry{};
  passwd* found = nullptr;
  if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr ||
      found->pw_dir == nullptr)
    return {};
  return WithoutTrailingSlash(found->pw_dir);
}

// `tail` inside the home folder; "" when there is no home folder.
std::string UnderHome(std::string_view tail) {
  const std::string home = HomeFolder();
  if (home.empty()) return {};
  return home == "/" ? "/" + std::string(tail) : home + "/" + std::string(tail);
}

// The base directory named by an XDG variable: its value when that is an
// absolute path (relative values are to be ignored), else `fallback` in
// the home folder.
std::string XdgBaseDirectory(const char* variable, std::string_view fallback) {
  if (const char* value = std::getenv(variable); value != nullptr && value[0] == '/')
    return WithoutTrailingSlash(value);
  return UnderHome(fallback);
}

std::string ConfigHome() { return XdgBaseDirectory("XDG_CONFIG_HOME", ".config"); }

// XDG_DOCUMENTS_DIR of the user's user-dirs.dirs, which holds either
// "$HOME/..." or an absolute path; anything else falls back to ~/Documents.
std::string DocumentsFolder() {
  const std::string config = ConfigHome();
  std::optional<std::string> value;
  if (!config.empty()) value = AssignedValue(config + "/user-dirs.dirs", "XDG_DOCUMENTS_DIR");
  if (value && (*value == "$HOME" || value->starts_with("$HOME/"))) {
    const std::string home = HomeFolder();
    return home.empty() ? home : WithoutTrailingSlash(home + value->substr(std::string_view("$HOME").size()));
  }
  if (value && value->starts_with('/')) return WithoutTrailingSlash(*value);
  return UnderHome("Documents");
}

std::string FolderPath(SpecialFolder folder) {
  switch (folder) {
    case SpecialFolder::System:
      return "/usr/bin";
    case SpecialFolder::Windows:
      return "/";
    case SpecialFolder::RoamingAppData:
      return ConfigHome();
    case SpecialFolder::LocalAppData:
      return XdgBaseDirectory("XDG_DATA_HOME", ".local/share");
    case SpecialFolder::Documents:
      return DocumentsFolder();
    case SpecialFolder::ProgramFiles:
    case SpecialFolder::ProgramFilesX86:
      return "/opt";
  }
  return {};
}

// PRETTY_NAME of os-release, which lives in /etc or, failing that, in
// /usr/lib.
std::string DistributionName() {
  for (const char* fileName : {"/etc/os-release", "/usr/lib/os-release"}) {
    if (std::optional<std::string> name = AssignedValue(fileName, "PRETTY_NAME")) return *name;
  }
  return {};
}

}  // namespace

OSVersion ReadOSVersion() { return {}; }

OSIdentity ReadOSIdentity() {
  OSIdentity identity;
  if (utsname names{}; uname(&names) == 0) {
    identity.Kernel = Utf8ToUtf16(names.sysname);
    identity.Release = Utf8ToUtf16(names.release);
  }
  identity.Distribution = Utf8ToUtf16(DistributionName());
  return identity;
}

bool ProcessIsWow64() {
  if constexpr (sizeof(void*) != 4) return false;
  utsname names{};
  if (uname(&names) != 0) return false;
  const std::string_view machine = names.machine;
  return machine == "x86_64" || machine == "aarch64";
}

bool TokenInAdministrators() { return geteuid() == 0; }

bool TokenIsElevated() { return geteuid() == 0; }

// There is no user-account control to ask about.
bool UserAccountControlEnabled() { return false; }

int64_t PhysicalMemorySize() {
  const long pages = sysconf(_SC_PHYS_PAGES);
  const long pageSize = sysconf(_SC_PAGESIZE);
  if (pages <= 0 || pageSize <= 0) return 0;
  return static_cast<int64_t>(pages) * pageSize;
}

Path SpecialFolderPath(SpecialFolder folder) { return NameToUtf16(FolderPath(folder)); }

}  // namespace Quorvex::Platform
