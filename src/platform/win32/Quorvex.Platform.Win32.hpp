// Windows only: helpers shared by the Win32 implementation files.
#pragma once

#include <windows.h>

// windows.h maps these names to their W forms with macros, which would
// rename the platform functions and interface methods of the same names.
#undef CreateDirectory
#undef DeleteFile
#undef GetFileAttributes
#undef GetMessage
#undef RemoveDirectory
#undef ReplaceFile
#undef SetFileAttributes

#include <string>

#include "Quorvex.Platform.hpp"

namespace Quorvex::Platform::Win32 {

// A null-terminated copy of `path` for the wide-character API (wchar_t is
// 16-bit UTF-16 on Windows, so the units are the same). A path holding a
// NUL is refused with ERROR_INVALID_NAME: the API would end the name there
// and act on another file. Every path reaches the system through this one
// check.
class WidePath {
 public:
  explicit WidePath(PathView path) : FValid(path.find(u'\0') == PathView::npos) {
    if (FValid) {
      FText.assign(path.begin(), path.end());
    } else {
      ::SetLastError(ERROR_INVALID_NAME);
    }
  }

  // False when the path was refused; GetLastError says why.
  explicit operator bool() const { return FValid; }
  const wchar_t* c_str() const { return FText.c_str(); }

 private:
  std::wstring FText;
  bool FValid;
};

// A null-terminated wide buffer returned by the API as a path.
inline Path FromWide(const wchar_t* text) { return Path(reinterpret_cast<const char16_t*>(text)); }

}  // namespace Quorvex::Platform::Win32
