// gPath: small path manipulations shared by the file, folder, settings and
// enumeration code. The delimiter is passed in by the caller; the library
// passes the platform's (Rtl::Files::PathDelim()).
#pragma once

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::Utils::Path {

using Rtl::Strings::Char;
using Rtl::Strings::UnicodeString;
using Rtl::Strings::UnicodeStringView;

struct QXRTL_API gPath {
  gPath() = delete;

  // `s` trimmed at both ends with `tail` appended unless its last
  // character already is `tail`. An empty trimmed `s` stays empty.
  static UnicodeString AddTail(UnicodeStringView s, UnicodeStringView tail);

  // `s` trimmed at both ends without one trailing `tail` character.
  static UnicodeString RemoveTail(UnicodeStringView s, UnicodeStringView tail);

  // `s` trimmed at both ends without one leading `delimiter` character.
  static UnicodeString RemoveHeadDelimiter(UnicodeStringView s, UnicodeStringView delimiter);

  // `head` and `tail` joined with exactly one delimiter between them: the
  // head loses trailing blanks and gains a delimiter, the tail loses one
  // leading delimiter. An empty head or tail adds no delimiter.
  static UnicodeString Make(UnicodeStringView head, UnicodeStringView tail, UnicodeStringView delimiter);

  // The same as Make.
  static UnicodeString Combine(UnicodeStringView head, UnicodeStringView tail, UnicodeStringView delimiter);

  // False when `s` starts with a path delimiter or a drive ("C:") and for
  // the empty string; true otherwise.
  static bool IsRelative(UnicodeStringView s);

  // True when `s` holds none of \ / : * ? " < > |.
  static bool IsValidName(UnicodeStringView s);

  // `s` with each of the characters IsValidName refuses replaced by
  // `replacement`.
  static UnicodeString ValidateName(UnicodeStringView s, Char replacement);

  // `path` expanded against the current folder, "." and ".." resolved.
  static UnicodeString ToAbsolute(UnicodeStringView path);

  // `path` appended to `baseFolder` with "." and ".." removed; "" when the
  // result would not fit 259 characters.
  static UnicodeString ToAbsolute(UnicodeStringView path, UnicodeStringView baseFolder);

  // The path of file `path` relative to folder `baseFolder` (".\name",
  // "..\folder\name" with the platform's delimiter); "" when the two share
  // no root or the result would not fit 259 characters.
  static UnicodeString ToRelative(UnicodeStringView path, UnicodeStringView baseFolder);
};

}  // namespace Quorvex::Utils::Path
