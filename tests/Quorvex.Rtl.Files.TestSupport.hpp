// Helpers for the file-system tests: a fresh temporary folder per test and
// paths written with '/' in the platform's form, so one table runs everywhere.
#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <random>
#include <string>

#include "Quorvex.Rtl.Files.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::Rtl::Files::Testing {

inline bool OnWindows() { return PathDelim() == u'\\'; }

constexpr uint32_t kNotFound = 2;                                   // ERROR_FILE_NOT_FOUND and ENOENT alike
inline uint32_t AlreadyExists() { return OnWindows() ? 183 : 17; }  // ERROR_ALREADY_EXISTS, EEXIST
inline uint32_t InvalidName() { return OnWindows() ? 123 : 22; }    // ERROR_INVALID_NAME, EINVAL

// `path` with '/' turned into the platform's delimiter; on Windows a
// leading '/' also gains the drive "C:", so "/a/b" reads "C:\a\b".
inline UnicodeString P(UnicodeStringView path) {
  UnicodeString result(path);
  for (Char& c : result) {
    if (c == u'/') c = PathDelim();
  }
  if (OnWindows() && !path.empty() && path.front() == u'/') result.insert(0, u"C:");
  return result;
}

// A new empty folder under the system's temporary folder, removed with
// everything in it (read-only entries included) when the test ends.
class TTempFolder {
 public:
  // Under `base`, the system's temporary folder unless told otherwise.
  explicit TTempFolder(const std::filesystem::path& base = std::filesystem::temp_directory_path()) {
    std::random_device random;
    FRoot = base / ("qxrtl-test-" + std::to_string(random()) + "-" + std::to_string(random()));
    std::filesystem::create_directories(FRoot);
    FPath = FRoot.u16string();
  }
  ~TTempFolder() {
    std::error_code ignored;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(FRoot, ignored)) {
      std::filesystem::permissions(entry.path(), std::filesystem::perms::owner_write,
                                   std::filesystem::perm_options::add, ignored);
    }
    std::filesystem::remove_all(FRoot, ignored);
  }
  TTempFolder(const TTempFolder&) = delete;
  TTempFolder& operator=(const TTempFolder&) = delete;

  // The folder itself, without a trailing delimiter.
  const UnicodeString& Path() const { return FPath; }
  // `name` (which may hold '/') inside the folder, in the platform's form.
  UnicodeString operator/(UnicodeStringView name) const { return FPath + PathDelim() + P(name); }

 private:
  std::filesystem::path FRoot;
  UnicodeString FPath;
};

// A folder on another file system than the temporary folder, where there
// is one ("/dev/shm" on Linux); empty otherwise.
inline std::filesystem::path OtherFileSystem() {
  struct stat temp {};
  struct stat shared {};
  const std::filesystem::path candidate = "/dev/shm";
  if (OnWindows() || stat(std::filesystem::temp_directory_path().string().c_str(), &temp) != 0 ||
      stat(candidate.string().c_str(), &shared) != 0 || temp.st_dev == shared.st_dev) {
    return {};
  }
  return candidate;
}

}  // namespace Quorvex::Rtl::Files::Testing
