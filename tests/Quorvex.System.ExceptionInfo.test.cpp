#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
#include <utility>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.System.ExceptionInfo.hpp"
#include "Quorvex.TestSupport.hpp"

namespace Quorvex::System::ExceptionInfo {
namespace {

namespace Exceptions = Rtl::Exceptions;
using TLevel = std::pair<const char16_t*, const char16_t*>;  // qualified class name, message

// Raises "outer" around "middle" around "inner", like code that wraps the
// failures of the layer below.
void RaiseThreeLevels() {
  try {
    try {
      throw Exceptions::EConvertError(u"inner");
    } catch (...) {
      Exceptions::RaiseOuterException(Exceptions::EListError(u"middle"));
    }
  } catch (...) {
    Exceptions::RaiseOuterException(Exceptions::EOSError(u"outer", 5));
  }
}

IntfPtr<IExceptionInfo> Capture(void (*raise)()) {
  try {
    raise();
  } catch (...) {
    return IntfPtr<IExceptionInfo>(Rtl::Objects::CreateObject<TExceptionInfo>(std::current_exception()));
  }
  return nullptr;
}

void ExpectChain(IntfPtr<IExceptionInfo> info, std::initializer_list<TLevel> levels) {
  for (const auto& [className, message] : levels) {
    SCOPED_TRACE(Rtl::Strings::Utf16ToUtf8(className));
    ASSERT_TRUE(info);
    EXPECT_EQ(info->GetExceptClass()->QualifiedClassName(), className);
    EXPECT_EQ(info->GetMessage(), message);
    info = info->GetInnerInfo();
  }
  EXPECT_FALSE(info);
}

TEST(SystemExceptionInfoTest, CapturesWholeChains) {
  ExpectChain(Capture(RaiseThreeLevels), {{u"Quorvex.Rtl.Exceptions.EOSError", u"outer"},
                                          {u"Quorvex.Rtl.Exceptions.EListError", u"middle"},
                                          {u"Quorvex.Rtl.Exceptions.EConvertError", u"inner"}});
  const auto nested = Capture([] {
    try {
      try {
        throw std::runtime_error("disk");
      } catch (...) {
        std::throw_with_nested(Exceptions::EReadError(u""));
      }
    } catch (...) {
      std::throw_with_nested(std::logic_error("load"));
    }
  });
  ExpectChain(
      nested,
      {{u"std.logic_error", u"load"}, {u"Quorvex.Rtl.Exceptions.EReadError", u""}, {u"std.runtime_error", u"disk"}});
  ExpectChain(Capture([] { throw 42; }), {{u"int", u""}});
  EXPECT_RAISES(Exceptions::EArgumentException, TExceptionInfo(std::exception_ptr()), u"No exception to capture");
}

TEST(SystemExceptionInfoTest, CaptureOutlivesTheExceptionAndCrossesThreads) {
  Exceptions::SetStackTraceProvider([] { return UnicodeString(u"@"); });
  auto info = Capture(RaiseThreeLevels);  // the exceptions are gone after this
  Exceptions::SetStackTraceProvider(nullptr);
  UnicodeString seen;
  std::thread([&seen, info] {
    for (auto level = info; level; level = level->GetInnerInfo()) seen += level->GetMessage() + level->GetStackTrace();
  }).join();
  EXPECT_EQ(seen, u"outer@middle@inner@");
}

}  // namespace
}  // namespace Quorvex::System::ExceptionInfo
