// POSIX only: the shell's URL escaping rules (UrlEscapeW / UrlUnescapeW)
// for the flags the library passes, kept character for character with the
// Windows results so escaped URLs read the same on both platforms.
#include <algorithm>

#include "Quorvex.Platform.Net.hpp"

namespace Quorvex::Platform {

namespace {

using Text = std::u16string_view;

// How the characters of one URL are treated, decided once from its scheme
// and the caller's flags.
struct TEscapeRules {
  bool SpacesOnly = false;
  bool EscapePercent = false;
  bool EscapeSlash = false;
  bool EscapeQuestion = false;
  bool EscapeHash = false;
  // Escaping ends for good at the first "?" or "#" (the query or anchor).
  bool StopOnQuestion = false;
  bool StopOnHash = false;
  bool BackslashAsSlash = false;
  // For file URLs: the run of delimiters after "file:" is normalised.
  bool CollapseSlashes = false;
  size_t SlashesAt = 0;
};

bool IsAsciiAlnum(char16_t c) {
  return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

bool IsHexDigit(char16_t c) { return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F'); }

int HexValue(char16_t c) { return c <= u'9' ? c - u'0' : (c | 0x20) - u'a' + 10; }

bool IsDelimiter(char16_t c) { return c == u'/' || c == u'\\'; }

bool SameAsciiText(Text a, Text b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char16_t x, char16_t y) {
           const auto lower = [](char16_t c) { return c >= u'A' && c <= u'Z' ? char16_t(c + 32) : c; };
           return lower(x) == lower(y);
         });
}

// The scheme: two or more letters, digits, "+", "-" or "." before the first
// ":"; empty when the text has none (a single letter is a drive).
Text SchemeOf(Text url) {
  size_t end = 0;
  while (end < url.size() && (IsAsciiAlnum(url[end]) || url[end] == u'+' || url[end] == u'-' || url[end] == u'.'))
    ++end;
  if (end < 2 || end >= url.size() || url[end] != u':') return {};
  return url.substr(0, end);
}

TEscapeRules RulesFor(Text url, uint32_t flags) {
  TEscapeRules rules;
  // Escaping spaces only overrides every other flag; without it the query
  // and anchor are always left alone.
  rules.SpacesOnly = (flags & UrlEscapeSpacesOnly) != 0;
  if (rules.SpacesOnly)
    flags &= ~(UrlDontEscapeExtraInfo | UrlEscapePercent | UrlEscapeSegmentOnly);
  else
    flags |= UrlDontEscapeExtraInfo;
  rules.EscapePercent = (flags & UrlEscapePercent) != 0;

  if (flags & UrlEscapeSegmentOnly) {
    // The whole text is one path segment.
    rules.EscapeSlash = rules.EscapeQuestion = rules.EscapeHash = true;
    return rules;
  }
  rules.StopOnQuestion = rules.StopOnHash = (flags & UrlDontEscapeExtraInfo) != 0;
  const Text scheme = SchemeOf(url);
  if (scheme.empty()) return rules;
  const Text rest = url.substr(scheme.size() + 1);
  const char16_t first = rest.empty() ? u'\0' : rest.front();
  if (SameAsciiText(scheme, u"file")) {
    // Backslashes are path delimiters; "#" belongs to the file name.
    rules.BackslashAsSlash = rules.CollapseSlashes = rules.EscapeHash = true;
    rules.StopOnHash = false;
    rules.SlashesAt = scheme.size() + 1;
  } else if (SameAsciiText(scheme, u"http") || SameAsciiText(scheme, u"https")) {
    // Web addresses take backslashes for slashes; without a path after the
    // scheme ("http:x/y") the slashes are data.
    rules.BackslashAsSlash = true;
    rules.EscapeSlash = !IsDelimiter(first);
  } else if (SameAsciiText(scheme, u"mailto")) {
    // The whole address is data, "?" and "#" included.
    rules.EscapeSlash = rules.EscapeQuestion = rules.EscapeHash = true;
    rules.StopOnQuestion = rules.StopOnHash = false;
  } else {
    rules.EscapeSlash = first != u'/';
  }
  return rules;
}

bool NeedsEscape(char16_t c, const TEscapeRules& rules) {
  if (rules.SpacesOnly) return c == u' ';
  if (c == u'%') return rules.EscapePercent;
  // Control characters and the 8-bit range are escaped; wider characters
  // pass as they are.
  if (c <= 0x1F || (c >= 0x7F && c <= 0xFF)) return true;
  switch (c) {
    case u' ':
    case u'"':
    case u'&':
    case u'<':
    case u'>':
    case u'[':
    case u'\\':
    case u']':
    case u'^':
    case u'`':
    case u'{':
    case u'|':
    case u'}':
      return true;
    case u'/':
      return rules.EscapeSlash;
    case u'?':
      return rules.EscapeQuestion;
    case u'#':
      return rules.EscapeHash;
    default:
      return false;
  }
}

void AppendEscaped(std::u16string& out, char16_t c) {
  static constexpr char16_t kDigits[] = u"0123456789ABCDEF";
  out += u'%';
  out += kDigits[(c >> 4) & 0xF];
  out += kDigits[c & 0xF];
}

// Replaces the run of delimiters at `i` by "///" (one or three of them),
// "//" (two, or four and more) or nothing; "//localhost" counts as three.
size_t CollapseSlashes(Text url, size_t i, std::u16string& out) {
  size_t slashes = 0;
  while (i < url.size() && IsDelimiter(url[i])) ++slashes, ++i;
  if (slashes == 2 && SameAsciiText(url.substr(i, 9), u"localhost")) {
    // The host name goes only when a delimiter follows it.
    if (i + 9 < url.size() && IsDelimiter(url[i + 9])) i += 10;
    slashes = 3;
  }
  if (slashes == 1 || slashes == 3)
    out += u"///";
  else if (slashes != 0)
    out += u"//";
  return i;
}

// The text up to its first null, as the C API sees it.
Text UpToNull(Text url) { return url.substr(0, std::min(url.find(u'\0'), url.size())); }

// Stores `out` as the result when it fits the caller's buffer.
bool Deliver(std::u16string&& out, std::u16string& result) {
  result.clear();
  if (out.size() >= UrlBufferLength) return false;
  result = std::move(out);
  return true;
}

}  // namespace

bool UrlEscape(std::u16string_view url, uint32_t flags, std::u16string& result) {
  url = UpToNull(url);
  const TEscapeRules rules = RulesFor(url, flags);
  std::u16string out;
  out.reserve(url.size());
  bool stopped = false;
  for (size_t i = 0; i < url.size();) {
    if (rules.CollapseSlashes && i == rules.SlashesAt) {
      i = CollapseSlashes(url, i, out);
      if (i >= url.size()) break;
    }
    char16_t c = url[i++];
    if ((c == u'#' && rules.StopOnHash) || (c == u'?' && rules.StopOnQuestion)) stopped = true;
    if (stopped) {
      out += c;
      continue;
    }
    if (c == u'\\' && rules.BackslashAsSlash) c = u'/';
    if (NeedsEscape(c, rules))
      AppendEscaped(out, c);
    else
      out += c;
  }
  return Deliver(std::move(out), result);
}

bool UrlUnescape(std::u16string_view url, uint32_t flags, std::u16string& result) {
  url = UpToNull(url);
  const bool keepExtraInfo = (flags & UrlDontEscapeExtraInfo) != 0;
  std::u16string out;
  out.reserve(url.size());
  bool stopped = false;
  for (size_t i = 0; i < url.size(); ++i) {
    const char16_t c = url[i];
    if (keepExtraInfo && (c == u'#' || c == u'?')) stopped = true;
    if (!stopped && c == u'%' && i + 2 < url.size() && IsHexDigit(url[i + 1]) && IsHexDigit(url[i + 2])) {
      out += char16_t(HexValue(url[i + 1]) * 16 + HexValue(url[i + 2]));
      i += 2;
    } else {
      out += c;
    }
  }
  // A decoded null ends the text, but the whole result had to fit.
  if (!Deliver(std::move(out), result)) return false;
  result.resize(std::min(result.find(u'\0'), result.size()));
  return true;
}

}  // namespace Quorvex::Platform
