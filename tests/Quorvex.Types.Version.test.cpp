#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <utility>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.TestSupport.hpp"
#include "Quorvex.Types.Version.hpp"

namespace Quorvex::Types::Version {
namespace {

using Rtl::Strings::Utf16ToUtf8;

TEST(TypesVersionTest, FromStringReadsDottedParts) {
  const std::pair<UnicodeStringView, UnicodeStringView> cases[] = {
      {u"", u"0.0.0.0"},     {u"1.2.3.4.5", u"1.2.3.4"},       {u"1.x.3", u"1.0.3.0"},
      {u"1..3", u"1.0.3.0"}, {u"70000.-1", u"4464.65535.0.0"}, {u"9999999999.7", u"0.7.0.0"}};
  for (const auto& [text, expected] : cases)
    EXPECT_EQ(TVersionValue::FromString(text).AsString(), expected) << Utf16ToUtf8(text);
  UnicodeString rest = u"12.rest.x";
  EXPECT_EQ(TVersionValue::GetNextStrPart(rest), 12);
  EXPECT_EQ(rest, u"rest.x");
}

TEST(TypesVersionTest, TextIntegerAndFloatForms) {
  EXPECT_EQ((TVersionValue{5, 0, 1, 77}).AsLongString(), u"5.0.1 build 77");
  // Build is left out, and a Minor of 100 spills into Major's places.
  EXPECT_EQ((TVersionValue{1, 2, 3, 999}).AsInteger(), 10203);
  EXPECT_EQ((TVersionValue{1, 100, 0, 0}).AsInteger(), 20000);
  EXPECT_EQ((TVersionValue{65535, 65535, 65535, 65535}).AsInteger(), 661969035);

  struct Case {
    TVersionValue a, b;
    int order;  // sign of a - b as the operators see it
  } cases[] = {{{1, 10, 0, 0}, {1, 9, 0, 0}, 1},
               {{1, 65535, 0, 0}, {2, 0, 0, 0}, -1},
               {{1, 0, 0, 1}, {1, 0, 0, 0}, 1},
               // Build 1 falls below the last bit of 65535's significand.
               {{65535, 0, 0, 1}, {65535, 0, 0, 0}, 0}};
  for (const Case& c : cases) {
    SCOPED_TRACE(Utf16ToUtf8(c.a.AsString() + u" vs " + c.b.AsString()));
    EXPECT_EQ((std::array{c.a == c.b, c.a != c.b, c.a<c.b, c.a> c.b, c.a <= c.b, c.a >= c.b}),
              (std::array{c.order == 0, c.order != 0, c.order<0, c.order> 0, c.order <= 0, c.order >= 0}));
  }
}

TEST(TypesVersionTest, FromFloatTruncatesEachField) {
  EXPECT_EQ(TVersionValue::FromFloat(TVersionValue{5, 0, 1, 77}).AsString(), u"5.0.1.77");
  // The float lies just below 1.2.3.4, so Build comes out one lower.
  EXPECT_EQ(TVersionValue::FromFloat(TVersionValue{1, 2, 3, 4}).AsString(), u"1.2.3.3");
  // 1.7 asks for a Minor of 70000.
  for (long double bad : {-1.0L, 65536.0L, 1.7L, static_cast<long double>(NAN)}) {
    SCOPED_TRACE(static_cast<double>(bad));
    EXPECT_RAISES(Rtl::Exceptions::ERangeError, TVersionValue::FromFloat(bad), u"Range check error");
  }
}

}  // namespace
}  // namespace Quorvex::Types::Version
