#include <gtest/gtest.h>

#include <cstdint>
#include <exception>
#include <stdexcept>
#include <string>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.TestSupport.hpp"

namespace Quorvex::Rtl {
namespace {

QX_DECLARE_EXCEPTION(ETestError, Exceptions::EListError, "Tests");

TEST(RtlExceptionsTest, MessagesAndClassesOfTheRuntimeErrors) {
  EXPECT_RAISES(Exceptions::EAssertionFailed, Exceptions::Assert(false, u"it broke", u"Sources\\Misc\\Unit", 70),
                u"it broke (Sources\\Misc\\Unit, line 70)");
  EXPECT_RAISES(Exceptions::EListError, Exceptions::RaiseListIndexError(7), u"List index out of bounds (7)");
  EXPECT_FALSE(Exceptions::SysErrorMessage(2).empty());
  EXPECT_RAISES(Exceptions::EOSError, Exceptions::RaiseLastOSError(2),
                u"System Error.  Code: 2.\r\n" + Exceptions::SysErrorMessage(2));
  EXPECT_RAISES(Exceptions::EOSError, Exceptions::RaiseLastOSError(0), u"A call to an OS function failed");
  EXPECT_RAISES(Exceptions::EOSError, Exceptions::RaiseOSError(79, u"loader says no"),
                u"System Error.  Code: 79.\r\nloader says no");
  EXPECT_RAISES(Exceptions::EInvalidPointer, Exceptions::RaiseInvalidPointer(), u"Invalid pointer operation");
  EXPECT_RAISES(Exceptions::EIntfCastError, Exceptions::RaiseIntfCastError(), u"Interface not supported");
  const Exceptions::Exception utf(u"caf\u00E9");
  EXPECT_STREQ(utf.what(), "caf\xC3\xA9");

  const Exceptions::EStringListError error(u"x");
  EXPECT_EQ(error.QualifiedClassName(), u"Quorvex.Rtl.Exceptions.EStringListError");
  EXPECT_TRUE(error.InheritsFrom(Objects::TObject::StaticClass()));
  const ETestError test(u"y");
  EXPECT_EQ(test.QualifiedClassName(), u"Tests.ETestError");
  EXPECT_EQ(test.ClassParent(), Exceptions::EListError::StaticClass());
}

TEST(RtlExceptionsTest, OuterExceptionsKeepTheirInnerOneAndStackTrace) {
  try {
    try {
      throw Exceptions::EConvertError(u"bad digit");
    } catch (const Exceptions::Exception&) {
      Exceptions::SetStackTraceProvider([]() -> Strings::UnicodeString { throw std::runtime_error("no symbols"); });
      Exceptions::RaiseOuterException(Exceptions::EReadError(u"cannot read"));
    }
  } catch (const Exceptions::EReadError& outer) {
    EXPECT_EQ(outer.StackTrace(), u"");  // the failing provider is ignored
    EXPECT_RAISES(Exceptions::EConvertError, std::rethrow_exception(outer.InnerException()), u"bad digit");
  }
  Exceptions::SetStackTraceProvider(nullptr);
  EXPECT_FALSE(Exceptions::GetStackTraceProvider());
  try {
    Exceptions::RaiseOuterException(Exceptions::EReadError(u"alone"));
  } catch (const Exceptions::EReadError& outer) {
    EXPECT_FALSE(outer.InnerException());  // raised outside a handler
  }
}

}  // namespace
}  // namespace Quorvex::Rtl
