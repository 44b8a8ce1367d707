#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.TestSupport.hpp"

namespace Quorvex::Rtl {
namespace {

TEST(RtlExceptionsTest, MessagesOfTheRuntimeErrors) {
  EXPECT_RAISES(Exceptions::EAssertionFailed, Exceptions::Assert(false, u"it broke", u"Sources\\Misc\\Unit", 70),
                u"it broke (Sources\\Misc\\Unit, line 70)");
  EXPECT_RAISES(Exceptions::EListError, Exceptions::RaiseListIndexError(7), u"List index out of bounds (7)");
  EXPECT_FALSE(Exceptions::SysErrorMessage(2).empty());
  EXPECT_RAISES(Exceptions::EOSError, Exceptions::RaiseLastOSError(2),
                u"System Error.  Code: 2.\r\n" + Exceptions::SysErrorMessage(2));
  EXPECT_RAISES(Exceptions::EOSError, Exceptions::RaiseLastOSError(0), u"A call to an OS function failed");
  const Exceptions::Exception utf(u"caf\u00E9");
  EXPECT_STREQ(utf.what(), "caf\xC3\xA9");
}

}  // namespace
}  // namespace Quorvex::Rtl
