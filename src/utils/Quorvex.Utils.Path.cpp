#include "Quorvex.Utils.Path.hpp"

#include "Quorvex.Platform.hpp"
#include "Quorvex.Rtl.Files.hpp"
#include "Quorvex.Utils.Strings.hpp"

namespace Quorvex::Utils::Path {

namespace {

// Characters that cannot appear in a file name, in ascending code order.
constexpr UnicodeStringView kInvalidNameChars = u"\"*/:<>?\\|";

// True when `c` equals the whole of `text`, so a text of two or more
// characters never matches.
bool IsChar(Char c, UnicodeStringView text) { return text.size() == 1 && text.front() == c; }

}  // namespace

UnicodeString gPath::AddTail(UnicodeStringView s, UnicodeStringView tail) {
  UnicodeString result = Rtl::Strings::Trim(s);
  if (!result.empty() && !IsChar(result.back(), tail)) result += tail;
  return result;
}

UnicodeString gPath::RemoveTail(UnicodeStringView s, UnicodeStringView tail) {
  UnicodeString result = Rtl::Strings::Trim(s);
  if (!result.empty() && IsChar(result.back(), tail)) result.pop_back();
  return result;
}

UnicodeString gPath::RemoveHeadDelimiter(UnicodeStringView s, UnicodeStringView delimiter) {
  UnicodeString result = Rtl::Strings::Trim(s);
  if (!result.empty() && IsChar(result.front(), delimiter)) result.erase(0, 1);
  return result;
}

UnicodeString gPath::Make(UnicodeStringView head, UnicodeStringView tail, UnicodeStringView delimiter) {
  UnicodeString result = Rtl::Strings::TrimRight(head);
  if (tail.empty()) return result;
  result = AddTail(result, delimiter);
  // The head already ends in the delimiter, so the pieces join with none.
  Strings::gString::Add(result, RemoveHeadDelimiter(tail, delimiter), u"");
  return result;
}

UnicodeString gPath::Combine(UnicodeStringView head, UnicodeStringView tail, UnicodeStringView delimiter) {
  return Make(head, tail, delimiter);
}

bool gPath::IsRelative(UnicodeStringView s) { return Rtl::Files::IsRelativePath(s); }

bool gPath::IsValidName(UnicodeStringView s) { return s.find_first_of(kInvalidNameChars) == UnicodeStringView::npos; }

UnicodeString gPath::ValidateName(UnicodeStringView s, Char replacement) {
  UnicodeString result(s);
  // Every invalid character gets the same replacement, so one pass gives
  // what replacing them one kind after another would.
  for (Char& c : result) {
    if (kInvalidNameChars.find(c) != UnicodeStringView::npos) c = replacement;
  }
  return result;
}

UnicodeString gPath::ToAbsolute(UnicodeStringView path) { return Rtl::Files::ExpandFileName(path); }

UnicodeString gPath::ToAbsolute(UnicodeStringView path, UnicodeStringView baseFolder) {
  Platform::Path result;
  Platform::CanonicalizePath(Rtl::Files::IncludeTrailingPathDelimiter(baseFolder) + UnicodeString(path), result);
  return result;
}

UnicodeString gPath::ToRelative(UnicodeStringView path, UnicodeStringView baseFolder) {
  Platform::Path result;
  Platform::RelativePath(baseFolder, path, result);
  return result;
}

}  // namespace Quorvex::Utils::Path
