#include <gtest/gtest.h>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Variants.hpp"
#include "Quorvex.TestSupport.hpp"

namespace Quorvex::Rtl::Variants {
namespace {

using Exceptions::EVariantTypeCastError;

TEST(VariantsTest, TextConvertsToNumbersAndBooleans) {
  struct TCase {
    const char16_t* Text;
    int64_t Integer;
    long double Real;
  };
  const TCase cases[] = {
      {u"42", 42, 42}, {u" -7 ", -7, -7}, {u"$1F", 31, 0}, {u"2.5", 2, 2.5L}, {u"3.5", 4, 3.5L}, {u"1E3", 1000, 1000},
  };
  for (const TCase& c : cases) {
    SCOPED_TRACE(Strings::Utf16ToUtf8(c.Text));
    EXPECT_EQ(TVariant(c.Text).AsInt64(), c.Integer);
    if (c.Real != 0) {
      EXPECT_EQ(TVariant(c.Text).AsDouble(), c.Real);
    }
  }
  EXPECT_TRUE(TVariant(u"true").AsBoolean());
  EXPECT_FALSE(TVariant(u"0").AsBoolean());
  EXPECT_EQ(TVariant().AsInt64(), 0);
  EXPECT_EQ(TVariant(true).AsString(), u"True");
  EXPECT_EQ(TVariant(2.5).AsString(), u"2.5");
}

TEST(VariantsTest, ConversionsThatCannotBeMadeRaise) {
  EXPECT_RAISES(EVariantTypeCastError, TVariant(u"abc").AsInt64(u"Integer"),
                u"Could not convert variant \"abc\" of type (UnicodeString) into type (Integer)");
  EXPECT_RAISES(EVariantTypeCastError, TVariant(u"1,5x").AsDouble(),
                u"Could not convert variant \"1,5x\" of type (UnicodeString) into type (Double)");
  EXPECT_RAISES(EVariantTypeCastError, TVariant(u"1E30").AsInt64(),
                u"Could not convert variant \"1E30\" of type (UnicodeString) into type (Int64)");
  EXPECT_RAISES(EVariantTypeCastError, TVariant::Null().AsString(),
                u"Could not convert variant of type (Null) into type (UnicodeString)");
  EXPECT_RAISES(EVariantTypeCastError, TVariant(u"maybe").AsBoolean(),
                u"Could not convert variant \"maybe\" of type (UnicodeString) into type (Boolean)");
}

}  // namespace
}  // namespace Quorvex::Rtl::Variants
