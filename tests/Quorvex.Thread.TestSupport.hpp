// Helpers for the threaded tests: threads watched with a generous time-out,
// so that a lock never left or a wake-up never sent fails a test instead of
// hanging the whole run.
#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <thread>
#include <utility>

namespace Quorvex::Testing {

// Long enough for any wait that must succeed on a loaded machine.
constexpr std::chrono::seconds kPatience{30};

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
