#include <gtest/gtest.h>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.System.Nullable.hpp"
#include "Quorvex.TestSupport.hpp"

namespace Quorvex::System::Nullable {
namespace {

TEST(SystemNullableTest, EmptyAndSetValues) {
  Nullable<int> value;
  EXPECT_RAISES(Rtl::Exceptions::EInvalidOperation, value.Value(), u"Nullable value is empty");
  EXPECT_EQ(value.GetValueOrDefault(9), 9);
  EXPECT_EQ(value, Nullable<int>());
  value = 5;
  EXPECT_EQ(value.Value(), 5);
  EXPECT_NE(value, Nullable<int>());
  value.Clear();
  EXPECT_FALSE(value.HasValue());
  EXPECT_NE(value, 0);
}

}  // namespace
}  // namespace Quorvex::System::Nullable
