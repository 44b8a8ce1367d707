#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#if defined(__linux__)
#include <fcntl.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#endif

#include "Quorvex.DateTime.Counter.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.TestSupport.hpp"

namespace Quorvex::DateTime::Counter {
namespace {

void SleepMs(int ms) { std::this_thread::sleep_for(std::chrono::milliseconds(ms)); }

TEST(DateTimeCounterTest, SumsOnlyRunningPeriods) {
  TTimeCounter counter{};
  counter.Reset();
  counter.SetElapsed(1000);
  SleepMs(20);
  EXPECT_TRUE(counter.GetSuspended());
  EXPECT_EQ(counter.GetElapsed(), 1000u);
  counter.Resume();
  SleepMs(100);
  counter.Suspend();
  SleepMs(100);
  counter.Resume();
  SleepMs(50);
  counter.Suspend();
  EXPECT_GE(counter.GetElapsed(), 1150u);
  EXPECT_LT(counter.GetElapsed(), 2000u);
  // Resume, SetElapsed and Reset each drop a running counter's period so far.
  counter.Resume();
  SleepMs(100);
  counter.Resume();
  EXPECT_LT(counter.GetElapsed(), counter.FElapsed + 100);
  SleepMs(100);
  counter.SetElapsed(5000);
  EXPECT_LT(counter.GetElapsed(), 5100u);
  SleepMs(100);
  counter.Reset();
  EXPECT_FALSE(counter.GetSuspended());
  EXPECT_LT(counter.GetElapsed(), 100u);
}

TEST(DateTimeCounterTest, WrappedTickCountOverflows) {
  // A start above every 32-bit tick stands for a count that has wrapped.
  constexpr uint64_t kAboveTicks = uint64_t{1} << 32;
  TTimeCounter counter{0, kAboveTicks};
  EXPECT_RAISES(Rtl::Exceptions::EIntOverflow, counter.GetElapsed(), u"Integer overflow");
  EXPECT_RAISES(Rtl::Exceptions::EIntOverflow, counter.Suspend(), u"Integer overflow");
  // Enough elapsed time absorbs the difference.
  counter.FElapsed = kAboveTicks;
  counter.Suspend();
  EXPECT_LT(counter.GetElapsed(), kAboveTicks);
}

#if defined(__linux__)
constexpr char kStartVariable[] = "QX_COUNTER_START";
constexpr int kNoTimeNamespace = 77;

// Runs `test` of this binary in a child process inside a new time namespace
// whose boot clock is `aheadSeconds` ahead of ours, while the monotonic
// clock is not: to the child the machine has been suspended that long. The
// child sees the environment variable `assignment` ("NAME=value"). Returns
// what the child printed, or nothing when the system has no time namespaces.
std::optional<std::string> RunAfterSuspend(const char* test, int aheadSeconds, std::string assignment) {
  const std::string exe = std::filesystem::read_symlink("/proc/self/exe").string();
  const std::string filter = std::string("--gtest_filter=") + test;
  const std::string offsets = "boottime " + std::to_string(aheadSeconds) + " 0\n";
  std::vector<char*> environment{assignment.data()};
  for (char** variable = environ; *variable != nullptr; ++variable) environment.push_back(*variable);
  environment.push_back(nullptr);
  char* const arguments[] = {const_cast<char*>(exe.c_str()), const_cast<char*>(filter.c_str()),
                             const_cast<char*>("--gtest_also_run_disabled_tests"), nullptr};
  int output[2];
  if (pipe(output) != 0) return std::nullopt;
  const pid_t child = fork();
  if (child == 0) {
    // Only system calls from here on: the parent may have other threads.
    if (unshare(CLONE_NEWTIME) != 0) _exit(kNoTimeNamespace);
    const int file = open("/proc/self/timens_offsets", O_WRONLY);
    if (file < 0 || write(file, offsets.data(), offsets.size()) != static_cast<ssize_t>(offsets.size()))
      _exit(kNoTimeNamespace);
    close(file);
    dup2(output[1], STDOUT_FILENO);
    close(output[0]);
    close(output[1]);
    execve(exe.c_str(), arguments, environment.data());  // enters the namespace
    _exit(127);
  }
  close(output[1]);
  std::string printed;
  char buffer[4096];
  for (ssize_t got; (got = read(output[0], buffer, sizeof buffer)) > 0;)
    printed.append(buffer, static_cast<size_t>(got));
  close(output[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (WIFEXITED(status) && WEXITSTATUS(status) == kNoTimeNamespace) return std::nullopt;
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << printed;
  return printed;
}

// Run by CountsTheTimeTheMachineWasSuspended in its child: a counter
// started by the parent, read after the suspend.
TEST(DateTimeCounterTest, DISABLED_ReportsElapsedAfterSuspend) {
  const char* start = std::getenv(kStartVariable);
  ASSERT_NE(start, nullptr);
  const TTimeCounter counter{0, std::stoull(start)};
  std::printf("elapsed=%llu\n", static_cast<unsigned long long>(counter.GetElapsed()));
}

TEST(DateTimeCounterTest, CountsTheTimeTheMachineWasSuspended) {
  constexpr int kSuspendedSeconds = 3600;
  constexpr uint64_t kSuspendedMs = kSuspendedSeconds * 1000;
  TTimeCounter counter{};
  counter.Resume();
  if (counter.FStartTicks > UINT32_MAX - 2 * kSuspendedMs) GTEST_SKIP() << "the tick count is about to wrap";
  const std::optional<std::string> printed =
      RunAfterSuspend("DateTimeCounterTest.DISABLED_ReportsElapsedAfterSuspend", kSuspendedSeconds,
                      std::string(kStartVariable) + "=" + std::to_string(counter.FStartTicks));
  if (!printed) GTEST_SKIP() << "no time namespaces on this system";
  const size_t at = printed->find("elapsed=");
  ASSERT_NE(at, std::string::npos) << *printed;
  const uint64_t elapsed = std::stoull(printed->substr(at + 8));
  EXPECT_GE(elapsed, kSuspendedMs);
  EXPECT_LT(elapsed, kSuspendedMs + 60'000);
}
#endif

}  // namespace
}  // namespace Quorvex::DateTime::Counter
