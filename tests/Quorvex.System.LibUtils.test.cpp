#include <gtest/gtest.h>

#include "Quorvex.Platform.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.System.LibUtils.hpp"

namespace Quorvex::System::LibUtils {
namespace {

bool OnWindows() { return Platform::PathDelimiter() == u'\\'; }

TEST(SystemLibUtilsTest, LoadsSystemLibrariesOrRaises) {
  const char16_t* existing = OnWindows() ? u"kernel32.dll" : u"libm.so.6";
  TModuleHandle handle = LibUtils::GetDLLInstance(existing);
  EXPECT_NE(handle, nullptr);
  EXPECT_EQ(LibUtils::GetDLLInstance(existing), handle);

  // ERROR_MOD_NOT_FOUND on Windows; ELIBACC where the loader has no code.
  const char16_t* prefix = OnWindows() ? u"System Error.  Code: 126.\r\n" : u"System Error.  Code: 79.\r\n";
  try {
    LibUtils::GetDLLInstance(u"no-such-library-qx.dll");
    ADD_FAILURE() << "expected EOSError";
  } catch (const Rtl::Exceptions::EOSError& raised) {
    EXPECT_TRUE(raised.Message().starts_with(prefix)) << raised.what();
    EXPECT_GT(raised.Message().size(), std::u16string_view(prefix).size()) << "the system's text follows";
  }
}

}  // namespace
}  // namespace Quorvex::System::LibUtils
