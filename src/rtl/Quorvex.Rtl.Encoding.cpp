#include "Quorvex.Rtl.Encoding.hpp"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "Quorvex.Platform.hpp"
#include "Quorvex.Rtl.Checked.hpp"

namespace Quorvex::Rtl::Encoding {

namespace {

constexpr uint8_t kUtf8Mark[] = {0xEF, 0xBB, 0xBF};
constexpr uint8_t kUtf16LEMark[] = {0xFF, 0xFE};
constexpr uint8_t kUtf16BEMark[] = {0xFE, 0xFF};

TBytes BytesOf(std::span<const uint8_t> bytes) { return TBytes(bytes.begin(), bytes.end()); }

TBytes BytesOf(std::string_view text) { return TBytes(text.begin(), text.end()); }

std::string_view CharsOf(TByteSpan bytes) {
  return std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

// Converts `in` run by run: runs of ASCII units are copied unit for unit,
// and only the runs between them go through `convert`. No UTF-8 or UTF-16
// sequence holds an ASCII unit, so cutting there leaves the result as a
// whole-text conversion would give it, malformed input included, while
// mostly-ASCII text skips the per-character decoding.
template <typename Unit, typename Out, typename Convert>
Out ConvertByRuns(std::span<const Unit> in, Convert convert) {
  Out out;
  out.reserve(in.size());
  for (size_t i = 0; i < in.size();) {
    size_t end = i;
    while (end < in.size() && in[end] < 0x80) ++end;
    out.insert(out.end(), in.begin() + static_cast<ptrdiff_t>(i), in.begin() + static_cast<ptrdiff_t>(end));
    for (i = end; end < in.size() && in[end] >= 0x80;) ++end;
    if (end > i) convert(in.subspan(i, end - i), out);
    i = end;
  }
  return out;
}

bool StartsWith(TByteSpan buffer, TByteSpan mark) {
  return !mark.empty() && buffer.size() >= mark.size() && std::equal(mark.begin(), mark.end(), buffer.begin());
}

// UTF-16 code units in the given byte order. The byte shuffling is written
// out rather than memcpy'd so the result does not depend on the host's order;
// compilers turn the loops into plain copies or byte swaps.
TBytes Utf16Bytes(UnicodeStringView s, bool bigEndian) {
  TBytes bytes(s.size() * 2);
  const size_t high = bigEndian ? 0 : 1;
  for (size_t i = 0; i < s.size(); ++i) {
    bytes[2 * i + high] = static_cast<uint8_t>(s[i] >> 8);
    bytes[2 * i + (1 - high)] = static_cast<uint8_t>(s[i] & 0xFF);
  }
  return bytes;
}

UnicodeString Utf16String(TByteSpan bytes, bool bigEndian) {
  UnicodeString s(bytes.size() / 2, u'\0');
  const size_t high = bigEndian ? 0 : 1;
  for (size_t i = 0; i < s.size(); ++i)
    s[i] = static_cast<char16_t>(bytes[2 * i + high] << 8 | bytes[2 * i + (1 - high)]);
  return s;
}

}  // namespace

// ---------------------------------------------------------------- TEncoding

// The singletons are never destroyed: lists and streams destroyed during
// static shut-down may still compare against them or use them.

TEncoding* TEncoding::Default() {
  static auto* const instance = new TAnsiEncoding();
  return instance;
}

TEncoding* TEncoding::UTF8() {
  static auto* const instance = new TUTF8Encoding();
  return instance;
}

TEncoding* TEncoding::Unicode() {
  static auto* const instance = new TUnicodeEncoding();
  return instance;
}

TEncoding* TEncoding::BigEndianUnicode() {
  static auto* const instance = new TBigEndianUnicodeEncoding();
  return instance;
}

TEncoding* TEncoding::ASCII() {
  static auto* const instance = new TASCIIEncoding();
  return instance;
}

bool TEncoding::IsStandardEncoding(const TEncoding* encoding) {
  return encoding != nullptr && (encoding == Default() || encoding == UTF8() || encoding == Unicode() ||
                                 encoding == BigEndianUnicode() || encoding == ASCII());
}

int TEncoding::GetBufferEncoding(TByteSpan buffer, TEncoding*& encoding, TEncoding* defaultEncoding) {
  if (encoding != nullptr) {
    const TBytes mark = encoding->GetPreamble();
    return StartsWith(buffer, mark) ? static_cast<int>(mark.size()) : 0;
  }
  for (TEncoding* candidate : {UTF8(), Unicode(), BigEndianUnicode()}) {
    const TBytes mark = candidate->GetPreamble();
    if (StartsWith(buffer, mark)) {
      encoding = candidate;
      return static_cast<int>(mark.size());
    }
  }
  encoding = defaultEncoding != nullptr ? defaultEncoding : Default();
  return 0;
}

UnicodeString TEncoding::GetString(TByteSpan bytes, int index, int count) const {
  const auto size = static_cast<int64_t>(bytes.size());
  Checked::CheckRange(index, 0, size);
  Checked::CheckRange(count, 0, size - index);
  return GetString(bytes.subspan(static_cast<size_t>(index), static_cast<size_t>(count)));
}

// ---------------------------------------------------------------- UTF-8

TBytes TUTF8Encoding::GetPreamble() const { return BytesOf(kUtf8Mark); }

TBytes TUTF8Encoding::GetBytes(UnicodeStringView s) const {
  return ConvertByRuns<char16_t, TBytes>(std::span(s.data(), s.size()), [](std::span<const char16_t> run, TBytes& out) {
    const std::string utf8 = Strings::Utf16ToUtf8(UnicodeStringView(run.data(), run.size()));
    out.insert(out.end(), utf8.begin(), utf8.end());
  });
}

UnicodeString TUTF8Encoding::GetString(TByteSpan bytes) const {
  return ConvertByRuns<uint8_t, UnicodeString>(
      bytes, [](TByteSpan run, UnicodeString& out) { out += Strings::Utf8ToUtf16(CharsOf(run)); });
}

TEncoding* TUTF8Encoding::Clone() const { return new TUTF8Encoding(); }

// ---------------------------------------------------------------- UTF-16

TBytes TUnicodeEncoding::GetPreamble() const { return BytesOf(kUtf16LEMark); }

TBytes TUnicodeEncoding::GetBytes(UnicodeStringView s) const { return Utf16Bytes(s, false); }

UnicodeString TUnicodeEncoding::GetString(TByteSpan bytes) const { return Utf16String(bytes, false); }

TEncoding* TUnicodeEncoding::Clone() const { return new TUnicodeEncoding(); }

TBytes TBigEndianUnicodeEncoding::GetPreamble() const { return BytesOf(kUtf16BEMark); }

TBytes TBigEndianUnicodeEncoding::GetBytes(UnicodeStringView s) const { return Utf16Bytes(s, true); }

UnicodeString TBigEndianUnicodeEncoding::GetString(TByteSpan bytes) const { return Utf16String(bytes, true); }

TEncoding* TBigEndianUnicodeEncoding::Clone() const { return new TBigEndianUnicodeEncoding(); }

// ---------------------------------------------------------------- ASCII

TBytes TASCIIEncoding::GetPreamble() const { return {}; }

TBytes TASCIIEncoding::GetBytes(UnicodeStringView s) const {
  TBytes bytes(s.size());
  std::transform(s.begin(), s.end(), bytes.begin(), [](char16_t c) { return static_cast<uint8_t>(c < 128 ? c : '?'); });
  return bytes;
}

UnicodeString TASCIIEncoding::GetString(TByteSpan bytes) const {
  UnicodeString s(bytes.size(), u'\0');
  std::transform(bytes.begin(), bytes.end(), s.begin(),
                 [](uint8_t b) { return static_cast<char16_t>(b < 128 ? b : '?'); });
  return s;
}

TEncoding* TASCIIEncoding::Clone() const { return new TASCIIEncoding(); }

// ---------------------------------------------------------------- ANSI

TBytes TAnsiEncoding::GetPreamble() const { return {}; }

TBytes TAnsiEncoding::GetBytes(UnicodeStringView s) const { return BytesOf(Platform::UnicodeToAnsi(s)); }

UnicodeString TAnsiEncoding::GetString(TByteSpan bytes) const { return Platform::AnsiToUnicode(CharsOf(bytes)); }

TEncoding* TAnsiEncoding::Clone() const { return new TAnsiEncoding(); }

}  // namespace Quorvex::Rtl::Encoding
