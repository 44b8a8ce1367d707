// POSIX only: message windows kept by the library itself. A window is an
// entry in one process-wide table; each thread that owns windows has a
// queue with an eventfd that is readable whenever the queue holds messages.
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "Quorvex.Platform.Messages.hpp"
#include "Quorvex.Platform.Threads.hpp"

namespace Quorvex::Platform {

namespace {

constexpr uint32_t kNoTimeLimit = 0xFFFFFFFFu;
// Registered message numbers take the range Windows gives them.
constexpr uint32_t kFirstRegisteredMessage = 0xC000;
constexpr uint32_t kLastRegisteredMessage = 0xFFFF;

struct PostedMessage {
  MessageWindow Window = 0;
  WindowMessage Message;
};

// The messages waiting for one thread, and the eventfd that wakes it. A
// post that finds the queue empty adds 1 to the counter once it has left
// the locks, so the woken thread does not at once wait for them; the
// owner clears the counter before it takes messages (Take). The counter is
// therefore non-zero whenever messages wait, and may stay so for a moment
// after they were taken; a wait that finds the queue empty clears it again.
class ThreadQueue {
 public:
  ThreadQueue() : FEvent(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}
  ~ThreadQueue() {
    if (FEvent >= 0) close(FEvent);
  }
  ThreadQueue(const ThreadQueue&) = delete;
  ThreadQueue& operator=(const ThreadQueue&) = delete;

  int Descriptor() const { return FEvent; }

  // True when the queue was empty: the caller then calls Wake, unlocked.
  bool Push(const PostedMessage& posted) {
    const std::lock_guard lock(FLock);
    FMessages.push_back(posted);
    return FMessages.size() == 1;
  }

  // Adding 1 to the counter cannot fail on a valid descriptor.
  void Wake() {
    const uint64_t one = 1;
    const ssize_t done = write(FEvent, &one, sizeof one);
    (void)done;
  }

  // Reading resets the counter; a counter of 0 is just found so.
  void ClearWake() {
    uint64_t value = 0;
    const ssize_t done = read(FEvent, &value, sizeof value);
    (void)done;
  }

  bool Pop(PostedMessage& posted) {
    const std::lock_guard lock(FLock);
    if (FMessages.empty()) return false;
    posted = FMessages.front();
    FMessages.pop_front();
    return true;
  }

  bool Empty() {
    const std::lock_guard lock(FLock);
    return FMessages.empty();
  }

  void Drop(MessageWindow window) {
    const std::lock_guard lock(FLock);
    std::erase_if(FMessages, [window](const PostedMessage& posted) { return posted.Window == window; });
    if (FMessages.empty()) ClearWake();
  }

 private:
  std::mutex FLock;
  std::deque<PostedMessage> FMessages;
  int FEvent;
};

using HandlerPtr = std::shared_ptr<const MessageHandler>;

struct WindowEntry {
  HandlerPtr Handler;
  std::shared_ptr<ThreadQueue> Queue;
  uint32_t Owner = 0;
};

// Every window of the process and the registered message names. Posting
// holds the table's lock while it queues, so once a window is gone from
// the table no message for it can still arrive in its owner's queue. Lock
// order: the table, then a queue.
class WindowTable {
 public:
  MessageWindow Add(MessageHandler handler, std::shared_ptr<ThreadQueue> queue) {
    const std::lock_guard lock(FLock);
    const MessageWindow window = FNextWindow++;
    FWindows.emplace(window, WindowEntry{std::make_shared<const MessageHandler>(std::move(handler)), std::move(queue),
                                         CurrentThreadId()});
    return window;
  }

  // The handlers of removed windows are destroyed after the lock is left:
  // what they hold may post or destroy windows when it goes.
  bool Remove(MessageWindow window) {
    WindowEntry removed;
    const std::lock_guard lock(FLock);
    const auto found = FWindows.find(window);
    if (found == FWindows.end()) return Fail(EBADF);
    if (found->second.Owner != CurrentThreadId()) return Fail(EPERM);
    found->second.Queue->Drop(window);
    removed = std::move(found->second);
    FWindows.erase(found);
    return true;
  }

  void RemoveOwnedBy(uint32_t owner) {
    std::vector<WindowEntry> removed;
    const std::lock_guard lock(FLock);
    for (auto entry = FWindows.begin(); entry != FWindows.end();) {
      if (entry->second.Owner == owner) {
        removed.push_back(std::move(entry->second));
        entry = FWindows.erase(entry);
      } else {
        ++entry;
      }
    }
  }

  bool Post(MessageWindow window, const WindowMessage& message) {
    std::shared_ptr<ThreadQueue> queue;
    {
      const std::lock_guard lock(FLock);
      const auto found = FWindows.find(window);
      if (found == FWindows.end()) return Fail(EBADF);
      if (found->second.Queue->Push({window, message})) queue = found->second.Queue;
    }
    if (queue) queue->Wake();
    return true;
  }

  HandlerPtr HandlerOf(MessageWindow window) {
    const std::lock_guard lock(FLock);
    const auto found = FWindows.find(window);
    return found == FWindows.end() ? nullptr : found->second.Handler;
  }

  uint32_t Register(PathView name) {
    const std::lock_guard lock(FLock);
    const auto [entry, added] = FNames.try_emplace(std::u16string(name), FNextName);
    if (!added) return entry->second;
    if (FNextName > kLastRegisteredMessage) {
      FNames.erase(entry);
      Fail(ENOSPC);
      return 0;
    }
    return FNextName++;
  }

 private:
  static bool Fail(int code) {
    errno = code;
    return false;
  }

  std::mutex FLock;
  std::unordered_map<MessageWindow, WindowEntry> FWindows;
  MessageWindow FNextWindow = 1;
  std::unordered_map<std::u16string, uint32_t> FNames;
  uint32_t FNextName = kFirstRegisteredMessage;
};

// Never freed: threads may still post while the process ends.
WindowTable& Windows() {
  static WindowTable* const table = new WindowTable;
  return *table;
}

// The calling thread's queue, made when first needed; the windows the
// thread still owns go with it when it ends, as they do on Windows.
class ThreadState {
 public:
  ~ThreadState() {
    if (FQueue) Windows().RemoveOwnedBy(CurrentThreadId());
  }

  // Null, with errno set, when the queue's descriptor cannot be made.
  std::shared_ptr<ThreadQueue> Queue() {
    if (!FQueue) {
      auto queue = std::make_shared<ThreadQueue>();
      if (queue->Descriptor() >= 0) FQueue = std::move(queue);
    }
    return FQueue;
  }

  const std::shared_ptr<ThreadQueue>& Existing() const { return FQueue; }

 private:
  std::shared_ptr<ThreadQueue> FQueue;
};

thread_local ThreadState tThread;

using Clock = std::chrono::steady_clock;

// The time from now to `deadline`, none when it has passed, as ppoll takes it.
timespec TimeLeft(Clock::time_point deadline) {
  const auto rest = std::max(deadline - Clock::now(), Clock::duration::zero());
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(rest);
  return {static_cast<time_t>(seconds.count()),
          static_cast<long>(std::chrono::duration_cast<std::chrono::nanoseconds>(rest - seconds).count())};
}

// Waits for the descriptor to become readable until `deadline` (none: no
// limit); EINTR restarts the wait. A time-out leaves errno 0.
bool WaitReadable(int descriptor, const std::optional<Clock::time_point>& deadline) {
  for (;;) {
    timespec left = deadline ? TimeLeft(*deadline) : timespec{};
    pollfd entry{descriptor, POLLIN, 0};
    errno = 0;
    const int ready = ppoll(&entry, 1, deadline ? &left : nullptr, nullptr);
    if (ready >= 0) return ready > 0;
    if (errno != EINTR) return false;
  }
}

}  // namespace

MessageWindow CreateMessageWindow(MessageHandler handler) {
  std::shared_ptr<ThreadQueue> queue = tThread.Queue();
  return queue ? Windows().Add(std::move(handler), std::move(queue)) : 0;
}

bool DestroyMessageWindow(MessageWindow window) { return Windows().Remove(window); }

bool PostWindowMessage(MessageWindow window, uint32_t msg, uintptr_t wParam, intptr_t lParam) {
  return Windows().Post(window, {msg, wParam, lParam, 0});
}

intptr_t DefaultWindowProc(MessageWindow, const WindowMessage&) { return 0; }

uint32_t RegisterMessageName(PathView name) {
  if (name.find(u'\0') != PathView::npos) {
    errno = EINVAL;
    return 0;
  }
  return Windows().Register(name);
}

size_t DispatchThreadMessages() {
  const std::shared_ptr<ThreadQueue> queue = tThread.Existing();
  if (!queue) return 0;
  // Cleared before taking: any post from now on wakes the thread again.
  queue->ClearWake();
  size_t count = 0;
  PostedMessage posted;
  try {
    while (queue->Pop(posted)) {
      // Held for the call, so a handler may destroy its own window.
      const HandlerPtr handler = Windows().HandlerOf(posted.Window);
      if (!handler) continue;
      (*handler)(posted.Window, posted.Message);
      ++count;
    }
  } catch (...) {
    // The messages after the failing one still wait, and say so.
    if (!queue->Empty()) queue->Wake();
    throw;
  }
  return count;
}

bool WaitThreadMessage(uint32_t timeoutMs) {
  const std::shared_ptr<ThreadQueue> queue = tThread.Queue();
  if (!queue) return false;
  std::optional<Clock::time_point> deadline;
  if (timeoutMs != kNoTimeLimit) deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
  // A wake may outlive the messages that caused it: clear it and wait on.
  while (queue->Empty()) {
    if (!WaitReadable(queue->Descriptor(), deadline)) return false;
    queue->ClearWake();
  }
  return true;
}

int ThreadMessageDescriptor() {
  const std::shared_ptr<ThreadQueue> queue = tThread.Queue();
  return queue ? queue->Descriptor() : -1;
}

}  // namespace Quorvex::Platform
