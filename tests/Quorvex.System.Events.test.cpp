#include <gtest/gtest.h>

#include <string>

#include "Quorvex.System.Events.hpp"

namespace Quorvex::System::Events {
namespace {

TEST(SystemEventsTest, HandlersRunInOrderAndChangesWaitForTheNextInvoke) {
  Event<char> changed;
  std::string log;
  const TEventToken first = changed.Add([&log](char v) { log += {'a', v}; });
  TEventToken second = 0;
  second = changed.Add([&](char v) {
    log += {'b', v};
    changed.Remove(first);
    changed.Remove(second);  // itself, while running
    changed.Add([&log](char w) { log += {'c', w}; });
  });
  changed('1');
  changed('2');
  EXPECT_EQ(log, "a1b1c2");
  EXPECT_FALSE(changed.Remove(first));
  EXPECT_EQ(changed.Count(), 1u);
  changed.Clear();
  EXPECT_TRUE(changed.IsEmpty());
}

}  // namespace
}  // namespace Quorvex::System::Events
