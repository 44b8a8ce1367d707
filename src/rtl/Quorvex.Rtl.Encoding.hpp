// Text encodings: conversions between UTF-16 strings and bytes, with the
// byte-order marks that identify them in files. The standard encodings are
// shared singletons that live as long as the process and are never freed
// by their users; other instances belong to whoever created them.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Objects.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::Rtl::Encoding {

using Strings::UnicodeString;
using Strings::UnicodeStringView;

using TBytes = std::vector<uint8_t>;
using TByteSpan = std::span<const uint8_t>;

// Converts text to and from one byte encoding.
class QXRTL_API TEncoding : public Objects::TObject {
  QX_CLASS(TEncoding, TObject, "Quorvex.Rtl.Encoding")
 public:
  // The system's ANSI code page on Windows, UTF-8 elsewhere; no
  // byte-order mark either way.
  static TEncoding* Default();
  // UTF-8 with the mark EF BB BF.
  static TEncoding* UTF8();
  // UTF-16 little-endian with the mark FF FE.
  static TEncoding* Unicode();
  // UTF-16 big-endian with the mark FE FF.
  static TEncoding* BigEndianUnicode();
  // 7-bit ASCII; other characters become '?'. No mark.
  static TEncoding* ASCII();

  // True for the shared singletons above (which callers never free).
  static bool IsStandardEncoding(const TEncoding* encoding);

  // Finds the encoding of `buffer` and answers the length of its
  // byte-order mark. With `encoding` null, the marks of UTF-8, UTF-16 LE
  // and UTF-16 BE are tried and `encoding` receives the match, or
  // `defaultEncoding` (Default when null) and 0 when none matches. With an
  // encoding given, answers its mark's length when the buffer starts with
  // it, otherwise 0; the encoding is kept either way.
  static int GetBufferEncoding(TByteSpan buffer, TEncoding*& encoding, TEncoding* defaultEncoding = nullptr);

  // The byte-order mark written before text in this encoding (may be empty).
  virtual TBytes GetPreamble() const = 0;
  // `s` encoded.
  virtual TBytes GetBytes(UnicodeStringView s) const = 0;
  // `bytes` decoded; malformed input decodes to replacement characters.
  virtual UnicodeString GetString(TByteSpan bytes) const = 0;
  // `count` bytes from `index` decoded; raises ERangeError when the range
  // leaves `bytes`.
  UnicodeString GetString(TByteSpan bytes, int index, int count) const;
  // A new instance behaving like this one, owned by the caller.
  virtual TEncoding* Clone() const = 0;
};

// UTF-8 through the runtime's own conversions.
class QXRTL_API TUTF8Encoding : public TEncoding {
  QX_CLASS(TUTF8Encoding, TEncoding, "Quorvex.Rtl.Encoding")
 public:
  TBytes GetPreamble() const override;
  TBytes GetBytes(UnicodeStringView s) const override;
  UnicodeString GetString(TByteSpan bytes) const override;
  using TEncoding::GetString;
  TEncoding* Clone() const override;
};

// UTF-16 in little-endian byte order; a trailing odd byte is ignored.
class QXRTL_API TUnicodeEncoding : public TEncoding {
  QX_CLASS(TUnicodeEncoding, TEncoding, "Quorvex.Rtl.Encoding")
 public:
  TBytes GetPreamble() const override;
  TBytes GetBytes(UnicodeStringView s) const override;
  UnicodeString GetString(TByteSpan bytes) const override;
  using TEncoding::GetString;
  TEncoding* Clone() const override;
};

// UTF-16 in big-endian byte order; a trailing odd byte is ignored.
class QXRTL_API TBigEndianUnicodeEncoding : public TEncoding {
  QX_CLASS(TBigEndianUnicodeEncoding, TEncoding, "Quorvex.Rtl.Encoding")
 public:
  TBytes GetPreamble() const override;
  TBytes GetBytes(UnicodeStringView s) const override;
  UnicodeString GetString(TByteSpan bytes) const override;
  using TEncoding::GetString;
  TEncoding* Clone() const override;
};

// 7-bit ASCII: code units and bytes above 127 both become '?'.
class QXRTL_API TASCIIEncoding : public TEncoding {
  QX_CLASS(TASCIIEncoding, TEncoding, "Quorvex.Rtl.Encoding")
 public:
  TBytes GetPreamble() const override;
  TBytes GetBytes(UnicodeStringView s) const override;
  UnicodeString GetString(TByteSpan bytes) const override;
  using TEncoding::GetString;
  TEncoding* Clone() const override;
};

// The system's ANSI code page (UTF-8 on systems that have no other).
class QXRTL_API TAnsiEncoding : public TEncoding {
  QX_CLASS(TAnsiEncoding, TEncoding, "Quorvex.Rtl.Encoding")
 public:
  TBytes GetPreamble() const override;
  TBytes GetBytes(UnicodeStringView s) const override;
  UnicodeString GetString(TByteSpan bytes) const override;
  using TEncoding::GetString;
  TEncoding* Clone() const override;
};

}  // namespace Quorvex::Rtl::Encoding
