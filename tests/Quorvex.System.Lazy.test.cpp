#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "Quorvex.System.Lazy.hpp"

namespace Quorvex::System::Lazy {
namespace {

TEST(SystemLazyTest, ConcurrentFirstCallsMakeTheValueOnce) {
  std::atomic<int> made{0};
  Lazy<std::string> value([&made] {
    ++made;
    std::this_thread::yield();
    return std::string("made");
  });
  EXPECT_FALSE(value.IsValueCreated());
  std::atomic<int> agreed{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t) threads.emplace_back([value, &agreed] { agreed += (*value == "made"); });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(made, 1);
  EXPECT_EQ(agreed, 8);
  EXPECT_TRUE(value.AsInterface()->IsValueCreated());
  EXPECT_EQ(value.AsInterface()->ValuePointer(), &value.Value());
}

}  // namespace
}  // namespace Quorvex::System::Lazy
