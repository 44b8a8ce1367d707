// Threads of the runtime: a thread object whose Execute runs on a thread of
// its own, and a bounded blocking queue that hands items from thread to
// thread.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Objects.hpp"

namespace Quorvex::Rtl::Threads {

using Objects::TObject;

// A thread as the system numbers it: never 0 for a running thread.
using TThreadID = uint32_t;

// The time-out that waits as long as it takes.
constexpr uint32_t kInfinite = 0xFFFFFFFF;

// Misuse of a thread object, such as a thread waiting for itself.
QX_DECLARE_EXCEPTION(EThread, Exceptions::Exception, "Quorvex.Rtl.Threads");

// The system's identifier of the calling thread.
QXRTL_API TThreadID CurrentThreadID();

// Work that runs on a thread of its own: subclasses override Execute. Make
// threads with CreateObject: the thread starts once the whole object is
// constructed, so Execute never meets a half-made object. An exception that
// escapes Execute ends the thread and is kept as its FatalException.
// Freeing a thread (FreeObject) tells it to terminate and waits for it.
class QXRTL_API TThread : public TObject {
  QX_CLASS(TThread, TObject, "Quorvex.Rtl.Threads")
 public:
  // Starts the system thread, which waits for AfterConstruction before it
  // runs Execute. Raises std::system_error when the system has no thread
  // to give.
  TThread();
  // Waits for the system thread; one that never started leaves without
  // running Execute. A plain delete of a running thread waits only once the
  // subclass is gone, so free running threads with FreeObject.
  ~TThread() override;
  TThread(const TThread&) = delete;
  TThread& operator=(const TThread&) = delete;

  // Lets Execute begin.
  void AfterConstruction() override;
  // Terminate, then WaitFor; raises EThread "A thread cannot wait for
  // itself" from the thread itself, and the object then stays alive.
  void BeforeDestruction() override;

  // Asks Execute to stop: Terminated is true from now on. Execute decides
  // when to look.
  void Terminate();
  bool Terminated() const { return FTerminated.load(std::memory_order_acquire); }

  // Returns once Execute has ended, normally or by an exception. Raises
  // EThread "A thread cannot wait for itself" when called from Execute.
  void WaitFor();

  // The system's identifier of the thread, as CurrentThreadID gives it
  // inside Execute.
  TThreadID ThreadID() const { return FThreadID; }

  // The exception that ended Execute, or null while it runs and after it
  // returned normally.
  std::exception_ptr FatalException() const;

 protected:
  // The thread's work. Long work polls Terminated.
  virtual void Execute() = 0;

 private:
  enum class TPhase : uint8_t { Created, Running, Abandoned, Finished };

  void ThreadMain();
  // Publishes the thread's id, then waits to be let run; false when the
  // object goes before it was.
  bool AwaitStart();
  // Moves a thread that has not yet been let run to `phase`.
  void LeaveCreated(TPhase phase);
  // Raises EThread when the caller is this thread, which would wait forever.
  void RefuseOwnThread() const;
  // Terminate, and wait until Execute has ended or was skipped.
  void Stop();
  void WaitUntilEnded();

  mutable std::mutex FLock;
  std::condition_variable FChanged;
  TPhase FPhase = TPhase::Created;
  TThreadID FThreadID = 0;
  std::atomic<bool> FTerminated{false};
  std::exception_ptr FFatalException;
  std::thread FThread;  // last: everything above is ready when it starts
};

namespace Detail {
[[noreturn]] QXRTL_API void RaiseBadCapacity(int32_t capacity);
}  // namespace Detail

// A first-in first-out queue of at most Capacity items, shared between
// threads under one lock: Push waits for room and Pop for an item, each up
// to its time-out in milliseconds (kInfinite: as long as it takes).
// DoShutDown wakes every waiter and refuses later pushes; pops still take
// what is left, then fail. Items still queued go with the queue.
template <typename T>
class TBlockingQueue {
 public:
  // Raises EArgumentOutOfRangeException "Queue capacity must be at least 1
  // (<capacity>)" for a capacity below 1.
  explicit TBlockingQueue(int32_t capacity) : FCapacity(capacity) {
    if (capacity < 1) Detail::RaiseBadCapacity(capacity);
  }
  TBlockingQueue(const TBlockingQueue&) = delete;
  TBlockingQueue& operator=(const TBlockingQueue&) = delete;

  // Appends `item`; false, with the item dropped, when the time-out passes
  // on a full queue or the queue is shut down.
  bool Push(T item, uint32_t timeoutMs = kInfinite) {
    std::unique_lock lock(FLock);
    if (!WaitUntil(FNotFull, lock, timeoutMs, [this] { return FShutDown || Size() < FCapacity; }) || FShutDown)
      return false;
    FItems.push_back(std::move(item));
    lock.unlock();
    FNotEmpty.notify_one();
    return true;
  }

  // Moves the head of the queue into `item`; false, with `item` untouched,
  // when the time-out passes on an empty queue or a shut-down queue is
  // empty. The value `item` held before goes outside the lock, so its
  // destructor may use the queue.
  bool Pop(T& item, uint32_t timeoutMs = kInfinite) {
    std::unique_lock lock(FLock);
    if (!WaitUntil(FNotEmpty, lock, timeoutMs, [this] { return FShutDown || !FItems.empty(); }) || FItems.empty())
      return false;
    T head = std::move(FItems.front());
    FItems.pop_front();
    lock.unlock();
    FNotFull.notify_one();
    item = std::move(head);
    return true;
  }

  // Wakes every waiting Push and Pop; from now on pushes fail at once.
  void DoShutDown() {
    {
      std::lock_guard lock(FLock);
      FShutDown = true;
    }
    FNotFull.notify_all();
    FNotEmpty.notify_all();
  }

  bool ShutDown() const {
    std::lock_guard lock(FLock);
    return FShutDown;
  }

  // The number of items waiting to be popped.
  int32_t QueueSize() const {
    std::lock_guard lock(FLock);
    return Size();
  }

  int32_t Capacity() const { return FCapacity; }

 private:
  int32_t Size() const { return static_cast<int32_t>(FItems.size()); }

  template <typename Ready>
  static bool WaitUntil(std::condition_variable& signal, std::unique_lock<std::mutex>& lock, uint32_t timeoutMs,
                        Ready ready) {
    if (timeoutMs != kInfinite) return signal.wait_for(lock, std::chrono::milliseconds(timeoutMs), ready);
    signal.wait(lock, ready);
    return true;
  }

  const int32_t FCapacity;
  mutable std::mutex FLock;
  std::condition_variable FNotFull;
  std::condition_variable FNotEmpty;
  std::deque<T> FItems;
  bool FShutDown = false;
};

}  // namespace Quorvex::Rtl::Threads
