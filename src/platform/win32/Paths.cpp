// Windows only: path delimiter, current directory and the shell's path
// computations.
#include "Quorvex.Platform.Win32.hpp"
// shlwapi.h needs windows.h first.
#include <shlwapi.h>

#include "Quorvex.Platform.hpp"

namespace Quorvex::Platform {

namespace {

// The shell path functions work on MAX_PATH buffers and do not check
// their input's length themselves.
bool FitsMaxPath(PathView path) {
  if (path.size() < MAX_PATH) return true;
  ::SetLastError(ERROR_FILENAME_EXCED_RANGE);
  return false;
}

// Calls an API that fills a buffer and returns the length it needs
// (including the null) when the buffer is too small, or 0 on failure.
template <typename Call>
Path FillBuffer(Call call) {
  std::wstring buffer(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = call(static_cast<DWORD>(buffer.size()), buffer.data());
    if (length == 0) return {};
    if (length < buffer.size()) return Path(buffer.begin(), buffer.begin() + length);
    buffer.resize(length);
  }
}

}  // namespace

char16_t PathDelimiter() { return u'\\'; }

Path CurrentDirectory() {
  return FillBuffer([](DWORD size, wchar_t* buffer) { return GetCurrentDirectoryW(size, buffer); });
}

Path FullPathName(PathView path) {
  const Win32::WidePath wide(path);
  if (!wide) return {};
  return FillBuffer(
      [&wide](DWORD size, wchar_t* buffer) { return GetFullPathNameW(wide.c_str(), size, buffer, nullptr); });
}

bool CanonicalizePath(PathView path, Path& result) {
  result.clear();
  if (!FitsMaxPath(path)) return false;
  const Win32::WidePath wide(path);
  if (!wide) return false;
  wchar_t buffer[MAX_PATH] = {};
  if (!PathCanonicalizeW(buffer, wide.c_str())) return false;
  result = Win32::FromWide(buffer);
  return true;
}

bool RelativePath(PathView from, PathView to, Path& result) {
  result.clear();
  if (!FitsMaxPath(from) || !FitsMaxPath(to)) return false;
  const Win32::WidePath wideFrom(from);
  const Win32::WidePath wideTo(to);
  if (!wideFrom || !wideTo) return false;
  wchar_t buffer[MAX_PATH] = {};
  if (!PathRelativePathToW(buffer, wideFrom.c_str(), FILE_ATTRIBUTE_DIRECTORY, wideTo.c_str(), 0)) {
    return false;
  }
  result = Win32::FromWide(buffer);
  return true;
}

}  // namespace Quorvex::Platform
