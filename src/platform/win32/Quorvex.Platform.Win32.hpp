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
#undef SetFileAttributes

#include <string>

#include "Quorvex.Platform.hpp"

namespace Quorvex::Platform::Win32 {

// A null-terminated copy of `path` for the wide-character API (wchar_t is
// 16-bit UTF-16 on Windows, so the units are the same).
inline std::wstring Wide(PathView path) { return std::wstring(path.begin(), path.end()); }

// A null-terminated wide buffer returned by the API as a path.
inline Path FromWide(const wchar_t* text) { return Path(reinterpret_cast<const char16_t*>(text)); }

}  // namespace Quorvex::Platform::Win32
