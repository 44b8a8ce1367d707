// The UTF-8 and UTF-16 conversions of every platform.
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "Quorvex.Platform.Unicode.hpp"

namespace Quorvex::Platform {

namespace {

constexpr char32_t kReplacement = 0xFFFD;
// What DecodeUtf8 answers for a byte that starts no valid sequence.
constexpr char32_t kMalformed = 0xFFFFFFFF;
// Lone surrogates that stand for the bytes 0x80 to 0xFF of a name.
constexpr char16_t kFirstEscape = 0xDC80;
constexpr char16_t kLastEscape = 0xDCFF;

bool IsSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }

// Decodes one UTF-8 sequence at `i` and moves past it. A malformed one
// (overlong, surrogate, beyond U+10FFFF, cut short) answers kMalformed
// and moves past its first byte only, so decoding resumes at the next.
char32_t DecodeUtf8(std::string_view text, size_t& i) {
  const auto lead = static_cast<unsigned char>(text[i++]);
  if (lead < 0x80) return lead;
  int extra;
  char32_t cp;
  if ((lead & 0xE0) == 0xC0) {
    extra = 1, cp = lead & 0x1F;
  } else if ((lead & 0xF0) == 0xE0) {
    extra = 2, cp = lead & 0x0F;
  } else if ((lead & 0xF8) == 0xF0) {
    extra = 3, cp = lead & 0x07;
  } else {
    return kMalformed;
  }
  if (i + static_cast<size_t>(extra) > text.size()) return kMalformed;
  for (int k = 0; k < extra; ++k) {
    const auto next = static_cast<unsigned char>(text[i + static_cast<size_t>(k)]);
    if ((next & 0xC0) != 0x80) return kMalformed;
    cp = (cp << 6) | (next & 0x3F);
  }
  static constexpr char32_t kMinimum[] = {0, 0x80, 0x800, 0x10000};
  if (cp < kMinimum[extra] || cp > 0x10FFFF || IsSurrogate(cp)) return kMalformed;
  i += static_cast<size_t>(extra);
  return cp;
}

void AppendUtf16(std::u16string& out, char32_t cp) {
  if (cp < 0x10000) {
    out.push_back(static_cast<char16_t>(cp));
  } else {
    cp -= 0x10000;
    out.push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
    out.push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
  }
}

void AppendUtf8(std::string& out, char32_t cp) {
  if (cp < 0x80) {
    out.push_back(static_cast<char>(cp));
  } else if (cp < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else if (cp < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  }
}

// Where the run of ASCII characters that starts at `from` ends.
template <typename Text>
size_t AsciiRunEnd(const Text& text, size_t from) {
  while (from < text.size() && static_cast<std::make_unsigned_t<typename Text::value_type>>(text[from]) < 0x80) ++from;
  return from;
}

// Decodes `text`, with `malformed(byte)` standing for each byte that is
// not part of valid UTF-8.
template <typename Malformed>
std::u16string Decode(std::string_view text, Malformed malformed) {
  std::u16string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size();) {
    // Runs of ASCII, most of any text, are widened in one go.
    const size_t ascii = AsciiRunEnd(text, i);
    out.append(text.begin() + static_cast<std::ptrdiff_t>(i), text.begin() + static_cast<std::ptrdiff_t>(ascii));
    if ((i = ascii) == text.size()) break;
    const size_t start = i;
    const char32_t cp = DecodeUtf8(text, i);
    AppendUtf16(out, cp == kMalformed ? malformed(static_cast<unsigned char>(text[start])) : cp);
  }
  return out;
}

// Encodes `text`; `unpaired(out, c)` deals with each unpaired surrogate
// and answers false to give up.
template <typename Unpaired>
bool Encode(std::u16string_view text, std::string& out, Unpaired unpaired) {
  out.clear();
  out.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    const size_t ascii = AsciiRunEnd(text, i);
    out.append(text.begin() + static_cast<std::ptrdiff_t>(i), text.begin() + static_cast<std::ptrdiff_t>(ascii));
    if ((i = ascii) == text.size()) break;
    const char32_t c = text[i];
    if (c >= 0xD800 && c <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
      AppendUtf8(out, 0x10000 + ((c - 0xD800) << 10) + (text[i + 1] - 0xDC00));
      ++i;
    } else if (!IsSurrogate(c)) {
      AppendUtf8(out, c);
    } else if (!unpaired(out, c)) {
      return false;
    }
  }
  return true;
}

}  // namespace

std::u16string Utf8ToUtf16(std::string_view text) {
  return Decode(text, [](unsigned char) { return kReplacement; });
}

std::string Utf16ToUtf8(std::u16string_view text) {
  std::string out;
  Encode(text, out, [](std::string& bytes, char32_t) {
    AppendUtf8(bytes, kReplacement);
    return true;
  });
  return out;
}

std::u16string NameToUtf16(std::string_view name) {
  return Decode(name, [](unsigned char byte) { return static_cast<char32_t>(0xDC00 + byte); });
}

bool NameToUtf8(std::u16string_view name, std::string& result) {
  return Encode(name, result, [](std::string& bytes, char32_t c) {
    if (c < kFirstEscape || c > kLastEscape) return false;
    bytes.push_back(static_cast<char>(c - 0xDC00));
    return true;
  });
}

}  // namespace Quorvex::Platform
