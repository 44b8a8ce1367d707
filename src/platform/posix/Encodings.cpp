// POSIX only: the "ANSI" code page of Linux builds is UTF-8.
#include "Quorvex.Platform.Unicode.hpp"
#include "Quorvex.Platform.hpp"

namespace Quorvex::Platform {

std::u16string AnsiToUnicode(std::string_view text) { return Utf8ToUtf16(text); }

std::string UnicodeToAnsi(std::u16string_view text) { return Utf16ToUtf8(text); }

}  // namespace Quorvex::Platform
