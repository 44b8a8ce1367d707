// POSIX only: the "ANSI" code page of Linux builds is UTF-8.
#include "Quorvex.Platform.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::Platform {

std::u16string AnsiToUnicode(std::string_view text) { return Rtl::Strings::Utf8ToUtf16(text); }

std::string UnicodeToAnsi(std::u16string_view text) { return Rtl::Strings::Utf16ToUtf8(text); }

}  // namespace Quorvex::Platform
