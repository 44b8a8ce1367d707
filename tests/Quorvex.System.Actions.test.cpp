#include <gtest/gtest.h>

#include <stdexcept>

#include "Quorvex.System.Actions.hpp"

namespace Quorvex::System::Actions {
namespace {

TEST(SystemActionsTest, AnonActionsRunTheirClosure) {
  IntfPtr<IAction<>> failing(Rtl::Objects::CreateObject<TAnonAction<>>([] { throw std::out_of_range("boom"); }));
  EXPECT_THROW(failing->Run(), std::out_of_range);  // passes through unchanged
  EXPECT_FALSE(failing.As<IAction<ICancellable>>());

  int runs = 0;
  IntfPtr<IInterface> work(
      Rtl::Objects::CreateObject<TAnonAction<ICancellable>>([&runs](const IntfPtr<ICancellable>&) { ++runs; }));
  auto cancellable = work.As<IAction<ICancellable>>();  // found by the instance's own GUID
  ASSERT_TRUE(cancellable);
  cancellable->Run(nullptr);
  cancellable->Run(nullptr);
  EXPECT_EQ(runs, 2);
}

}  // namespace
}  // namespace Quorvex::System::Actions
