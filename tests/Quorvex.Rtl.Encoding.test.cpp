#include <gtest/gtest.h>

#include <memory>
#include <tuple>

#include "Quorvex.Rtl.Encoding.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.TestSupport.hpp"

namespace Quorvex::Rtl::Encoding {
namespace {

// "A", e acute, the euro sign and a character outside the BMP.
constexpr char16_t kMixed[] = u"A\u00E9\u20AC\U0001F600";

TEST(RtlEncodingTest, StandardEncodingsConvertBothWaysInCheckedRanges) {
  const std::tuple<TEncoding*, TBytes, TBytes> cases[] = {
      {TEncoding::UTF8(), {0xEF, 0xBB, 0xBF}, {0x41, 0xC3, 0xA9, 0xE2, 0x82, 0xAC, 0xF0, 0x9F, 0x98, 0x80}},
      {TEncoding::Unicode(), {0xFF, 0xFE}, {0x41, 0, 0xE9, 0, 0xAC, 0x20, 0x3D, 0xD8, 0x00, 0xDE}},
      {TEncoding::BigEndianUnicode(), {0xFE, 0xFF}, {0, 0x41, 0, 0xE9, 0x20, 0xAC, 0xD8, 0x3D, 0xDE, 0x00}},
  };
  for (const auto& [encoding, preamble, bytes] : cases) {
    SCOPED_TRACE(Strings::Utf16ToUtf8(encoding->ClassName()));
    EXPECT_EQ(encoding->GetPreamble(), preamble);
    EXPECT_EQ(encoding->GetBytes(kMixed), bytes);
    EXPECT_EQ(encoding->GetString(bytes), kMixed);
    EXPECT_TRUE(TEncoding::IsStandardEncoding(encoding));
    EXPECT_FALSE(TEncoding::IsStandardEncoding(std::unique_ptr<TEncoding>(encoding->Clone()).get()));
  }

  // ASCII replaces each code unit above 127 (so both halves of a pair).
  EXPECT_EQ(TEncoding::ASCII()->GetBytes(kMixed), (TBytes{0x41, '?', '?', '?', '?'}));
  EXPECT_EQ(TEncoding::ASCII()->GetString(TBytes{0x41, 0xE9, 0x7F}), u"A?\x7F");
  EXPECT_TRUE(TEncoding::ASCII()->GetPreamble().empty() && TEncoding::Default()->GetPreamble().empty());

  // Broken input: a lone UTF-8 lead byte and an odd UTF-16 tail byte.
  EXPECT_EQ(TEncoding::UTF8()->GetString(TBytes{0x41, 0xE2, 0x82, 0x41, 0xC3}), u"A\uFFFD\uFFFDA\uFFFD");
  EXPECT_EQ(TEncoding::Unicode()->GetString(TBytes{0x41, 0, 0x42}), u"A");
}

TEST(RtlEncodingTest, BufferEncodingPrefersGivenThenMarkThenDefault) {
  const std::tuple<const char*, TBytes, TEncoding*, TEncoding*, TEncoding*, int> cases[] = {
      {"utf-8 mark", {0xEF, 0xBB, 0xBF, 0x41}, nullptr, nullptr, TEncoding::UTF8(), 3},
      {"utf-16 le mark", {0xFF, 0xFE, 0x41, 0}, nullptr, nullptr, TEncoding::Unicode(), 2},
      {"utf-16 be mark", {0xFE, 0xFF, 0, 0x41}, nullptr, TEncoding::UTF8(), TEncoding::BigEndianUnicode(), 2},
      {"no mark", {0x41, 0x42}, nullptr, nullptr, TEncoding::Default(), 0},
      {"no mark, fallback", {0x41, 0x42}, nullptr, TEncoding::Unicode(), TEncoding::Unicode(), 0},
      {"given wins", {0xEF, 0xBB, 0xBF, 0x41}, TEncoding::Unicode(), nullptr, TEncoding::Unicode(), 0},
      {"given and its mark", {0xFF, 0xFE, 0x41, 0}, TEncoding::Unicode(), nullptr, TEncoding::Unicode(), 2},
      {"given without mark", {0xEF, 0xBB, 0xBF}, TEncoding::ASCII(), nullptr, TEncoding::ASCII(), 0},
  };
  for (const auto& [name, buffer, given, fallback, expected, markLength] : cases) {
    SCOPED_TRACE(name);
    TEncoding* encoding = given;
    EXPECT_EQ(TEncoding::GetBufferEncoding(buffer, encoding, fallback), markLength);
    EXPECT_EQ(encoding, expected);
  }

  const TBytes bytes{'a', 'b', 'c'};
  EXPECT_EQ(TEncoding::ASCII()->GetString(bytes, 1, 2), u"bc");
  EXPECT_RAISES(Exceptions::ERangeError, TEncoding::ASCII()->GetString(bytes, -1, 1), u"Range check error");
  EXPECT_RAISES(Exceptions::ERangeError, TEncoding::ASCII()->GetString(bytes, 1, 3), u"Range check error");
}

TEST(RtlEncodingTest, EncodingsMadeInTheLibraryAreOfTheClassesAProgramNames) {
  // A program linked to the shared library holds its own records of the library's classes.
  TEncoding* utf8 = TEncoding::UTF8();
  EXPECT_TRUE(utf8->InheritsFrom(TEncoding::StaticClass()));
  EXPECT_EQ(Objects::ObjectCast<TUTF8Encoding>(utf8), utf8);
  EXPECT_RAISES(Exceptions::EInvalidCast, Objects::ObjectCast<TUnicodeEncoding>(utf8), u"Invalid class typecast");
}

}  // namespace
}  // namespace Quorvex::Rtl::Encoding
