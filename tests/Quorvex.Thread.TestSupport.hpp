// Helpers for tests that cross threads. Nothing here sleeps: threads wait
// on a counter, and every wait has a time-out far beyond what a loaded
// machine needs, so that a fault fails the test instead of hanging it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <future>
#include <mutex>
#include <thread>
#include <utility>

namespace Quorvex::Testing {

// How long a test waits for something that must happen.
constexpr std::chrono::seconds kPatience{60};
// The same in milliseconds, for the library's waits.
constexpr auto kPatienceMs = static_cast<uint32_t>(std::chrono::milliseconds(kPatience).count());
// How long a test watches for something that must not happen. Failing to
// see it proves nothing by itself; seeing it is always a fault.
constexpr std::chrono::milliseconds kWatch{50};

// A count that threads raise and others wait on.
class TTestCounter {
 public:
  void Add(int amount = 1) {
    {
      std::lock_guard lock(FLock);
      FValue += amount;
    }
    FChanged.notify_all();
  }

  int Value() const {
    std::lock_guard lock(FLock);
    return FValue;
  }

  // True once the count reaches `target`; false when `timeout` passes first.
  bool Reaches(int target, std::chrono::milliseconds timeout = kPatience) {
    std::unique_lock lock(FLock);
    return FChanged.wait_for(lock, timeout, [&] { return FValue >= target; });
  }

  // True when the count is still below `target` after `kWatch`.
  bool StaysBelow(int target) { return !Reaches(target, kWatch); }

 private:
  mutable std::mutex FLock;
  std::condition_variable FChanged;
  int FValue = 0;
};

// Polls `ready` (yielding between looks) until it holds or kPatience passes,
// for conditions nobody signals, such as a flag inside the library.
template <typename Ready>
bool Eventually(Ready ready) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (!ready())
    if (std::chrono::steady_clock::now() > deadline)
      return false;
    else
      std::this_thread::yield();
  return true;
}

// Runs `work` on a thread of its own from construction on. A thread that
// does not end within the patience (it waits for something that never
// comes) is abandoned, so `work` must own whatever it uses.
class TWatchedThread {
 public:
  explicit TWatchedThread(std::function<void()> work) {
    std::packaged_task<void()> task(std::move(work));
    FDone = task.get_future();
    FThread = std::thread(std::move(task));
  }
  ~TWatchedThread() {
    if (FThread.joinable()) Ends();
  }
  TWatchedThread(const TWatchedThread&) = delete;
  TWatchedThread& operator=(const TWatchedThread&) = delete;

  // True when the work has ended, or does within the patience.
  bool Ends() {
    if (FThread.joinable() && FDone.wait_for(kPatience) == std::future_status::ready) FThread.join();
    if (FThread.joinable()) {
      FThread.detach();
      FAbandoned = true;
    }
    return !FAbandoned;
  }

 private:
  bool FAbandoned = false;
  std::future<void> FDone;
  std::thread FThread;
};

// Runs `work` on a thread of its own and answers whether it ended within
// the patience (see TWatchedThread).
inline bool EndsOnItsOwnThread(std::function<void()> work) { return TWatchedThread(std::move(work)).Ends(); }

}  // namespace Quorvex::Testing
