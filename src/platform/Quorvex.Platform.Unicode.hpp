// Conversions between UTF-8 and UTF-16 for the platform layer and the
// runtime above it. Text and names differ in what they do with bytes that
// are not valid UTF-8: text replaces them, names keep them. Nothing here
// raises.
#pragma once

#include <string>
#include <string_view>

namespace Quorvex::Platform {

// UTF-8 text to UTF-16; each byte of a malformed sequence becomes U+FFFD.
std::u16string Utf8ToUtf16(std::string_view text);

// UTF-16 text to UTF-8; an unpaired surrogate becomes U+FFFD.
std::string Utf16ToUtf8(std::u16string_view text);

// A file-system name to UTF-16. Each byte that is not part of valid UTF-8
// becomes the lone surrogate U+DC00 + byte (U+DC80 to U+DCFF), so a name
// that is not UTF-8 survives the trip and can be handed back.
std::u16string NameToUtf16(std::string_view name);

// A UTF-16 name back to the bytes NameToUtf16 took it from. False when the
// name holds an unpaired surrogate that stands for no byte: such a name
// has no form on the file system, and a substitute could name another file.
bool NameToUtf8(std::u16string_view name, std::string& result);

}  // namespace Quorvex::Platform
