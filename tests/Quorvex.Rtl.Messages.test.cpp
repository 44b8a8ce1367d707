#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <vector>

#if !defined(_WIN32)
#include <poll.h>
#include <sys/resource.h>

#include <cerrno>
#endif

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Messages.hpp"
#include "Quorvex.Rtl.Threads.hpp"
#include "Quorvex.TestSupport.hpp"
#include "Quorvex.Thread.TestSupport.hpp"

namespace Quorvex::Rtl::Messages {
namespace {

using Exceptions::EArgumentException;
using Exceptions::EOSError;
using Threads::CurrentThreadID;
using Strings::UnicodeString;

constexpr uint32_t kPing = WmUser + 1;
using Testing::kPatienceMs;

struct TReceived {
  uint32_t Msg;
  uintptr_t WParam;
  intptr_t LParam;
  uint32_t Thread;
  friend bool operator==(const TReceived&, const TReceived&) = default;
};

// A window of the calling thread that records every message it receives
// (checking it went to this window); `react` runs after the recording.
class TRecordingWindow {
 public:
  explicit TRecordingWindow(std::function<void(TRecordingWindow&, const TMessage&)> react = nullptr)
      : FReact(std::move(react)), FHandle(AllocateHWnd([this](TMessage& message) { Receive(message); })) {}
  ~TRecordingWindow() {
    if (FHandle != 0) DeallocateHWnd(FHandle);
  }

  TWindowHandle Handle() const { return FHandle; }
  const std::vector<TReceived>& Received() const { return FReceived; }
  void Close() { DeallocateHWnd(std::exchange(FHandle, 0)); }

 private:
  void Receive(const TMessage& message) {
    EXPECT_EQ(message.Wnd, FHandle);
    FReceived.push_back({message.Msg, message.WParam, message.LParam, CurrentThreadID()});
    if (FReact) FReact(*this, message);
  }

  std::function<void(TRecordingWindow&, const TMessage&)> FReact;
  std::vector<TReceived> FReceived;
  TWindowHandle FHandle;
};

// Runs `body` on a thread of its own until that thread has ended.
void OnOtherThread(std::function<void()> body) {
  EXPECT_TRUE(Testing::EndsOnItsOwnThread(std::move(body))) << "the thread did not end";
}

UnicodeString OSErrorText(uint32_t code) {
  return Strings::Format(u"System Error.  Code: %d.\r\n%s", code, Exceptions::SysErrorMessage(code));
}

TEST(RtlMessagesTest, PostsFromOtherThreadsRunOnTheOwnerOnlyWhenItPumps) {
  constexpr int kSenders = 4;
  constexpr int kEach = 250;
  TRecordingWindow window;
  std::vector<std::unique_ptr<Testing::TWatchedThread>> senders;
  for (int sender = 0; sender < kSenders; ++sender)
    senders.push_back(std::make_unique<Testing::TWatchedThread>([&window, sender] {
      for (int i = 0; i < kEach; ++i) EXPECT_TRUE(PostMessage(window.Handle(), kPing, sender, i));
    }));
  for (const auto& sender : senders) ASSERT_TRUE(sender->Ends());
  EXPECT_TRUE(window.Received().empty()) << "nothing runs before the owner pumps";

  EXPECT_EQ(ProcessMessages(), size_t{kSenders * kEach});
  ASSERT_EQ(window.Received().size(), size_t{kSenders * kEach});
  std::vector<intptr_t> next(kSenders, 0);
  for (const TReceived& received : window.Received()) {
    EXPECT_EQ(received.Thread, CurrentThreadID());
    ASSERT_LT(received.WParam, uintptr_t{kSenders});
    EXPECT_EQ(received.LParam, next[received.WParam]++) << "each sender's messages arrive in order, once";
  }
  EXPECT_EQ(ProcessMessages(), 0u);
}

TEST(RtlMessagesTest, WaitingForMessages) {
  TRecordingWindow window;
  EXPECT_FALSE(WaitMessage(0));
  ASSERT_TRUE(PostMessage(window.Handle(), kPing, 1, 2));
  EXPECT_TRUE(WaitMessage(0));
  EXPECT_TRUE(WaitMessage(0)) << "waiting takes nothing from the queue";
  EXPECT_EQ(ProcessMessages(), 1u);
  EXPECT_FALSE(WaitMessage(0));

  Testing::TWatchedThread sender([&window] { PostMessage(window.Handle(), kPing, 3, 4); });
  EXPECT_TRUE(WaitMessage(kPatienceMs));
  EXPECT_TRUE(sender.Ends());
  EXPECT_EQ(ProcessMessages(), 1u);
  const uint32_t self = CurrentThreadID();
  EXPECT_EQ(window.Received(), (std::vector<TReceived>{{kPing, 1, 2, self}, {kPing, 3, 4, self}}));
}

#if !defined(_WIN32)
bool Readable(int fd) {
  pollfd entry{fd, POLLIN, 0};
  return poll(&entry, 1, 0) == 1 && (entry.revents & POLLIN) != 0;
}

TEST(RtlMessagesTest, DescriptorIsReadableWhileMessagesWait) {
  TRecordingWindow window;
  const int fd = MessageFd();
  ASSERT_GE(fd, 0);
  EXPECT_FALSE(Readable(fd));
  OnOtherThread([&window] {
    PostMessage(window.Handle(), kPing, 1, 0);
    PostMessage(window.Handle(), kPing, 2, 0);
  });
  EXPECT_TRUE(Readable(fd));
  EXPECT_TRUE(Readable(fd)) << "polling takes nothing from the queue";
  EXPECT_EQ(ProcessMessages(), 2u);
  EXPECT_FALSE(Readable(fd));

  Testing::TWatchedThread sender([&window] { PostMessage(window.Handle(), kPing, 3, 0); });
  pollfd entry{fd, POLLIN, 0};
  EXPECT_EQ(poll(&entry, 1, static_cast<int>(kPatienceMs)), 1) << "a blocked poll wakes for a post";
  EXPECT_TRUE(sender.Ends());
  EXPECT_EQ(MessageFd(), fd) << "one descriptor for the thread's life";
  EXPECT_EQ(ProcessMessages(), 1u);
  EXPECT_FALSE(Readable(fd));

  TRecordingWindow other;
  PostMessage(other.Handle(), kPing, 4, 0);
  other.Close();
  EXPECT_FALSE(Readable(fd)) << "a destroyed window's messages leave the queue with it";

  TRecordingWindow failing([](TRecordingWindow&, const TMessage& message) {
    if (message.WParam == 5) throw EArgumentException(u"refused");
  });
  PostMessage(failing.Handle(), kPing, 5, 0);
  PostMessage(failing.Handle(), kPing, 6, 0);
  EXPECT_RAISES(EArgumentException, ProcessMessages(), u"refused");
  EXPECT_TRUE(Readable(fd)) << "the message after the failing one still waits";
  EXPECT_EQ(ProcessMessages(), 1u);
  EXPECT_FALSE(Readable(fd));
}

// No new descriptor can be opened in the process while this lives.
class TNoNewDescriptors {
 public:
  TNoNewDescriptors() {
    getrlimit(RLIMIT_NOFILE, &FSaved);
    const rlimit none{0, FSaved.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
  }
  ~TNoNewDescriptors() { setrlimit(RLIMIT_NOFILE, &FSaved); }

 private:
  rlimit FSaved{};
};

TEST(RtlMessagesTest, AThreadWithoutADescriptorHasNoMessages) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizers' own checks need new descriptors too";
#endif
  const TNoNewDescriptors limit;
  OnOtherThread([] {
    const UnicodeString tooMany = OSErrorText(EMFILE);
    EXPECT_RAISES(EOSError, AllocateHWnd([](TMessage&) {}), tooMany);
    EXPECT_RAISES(EOSError, MessageFd(), tooMany);
    EXPECT_RAISES(EOSError, WaitMessage(0), tooMany);
    EXPECT_EQ(ProcessMessages(), 0u);
  });
}
#else
TEST(RtlMessagesTest, NoDescriptorOnWindows) { EXPECT_EQ(MessageFd(), -1); }
#endif

TEST(RtlMessagesTest, MessagesForAWindowThatIsGoneAreDropped) {
  TRecordingWindow gone;
  TRecordingWindow kept;
  OnOtherThread([&] {
    PostMessage(gone.Handle(), kPing, 1, 0);
    PostMessage(kept.Handle(), kPing, 2, 0);
    PostMessage(gone.Handle(), kPing, 3, 0);
  });
  const TWindowHandle handle = gone.Handle();
  gone.Close();
  EXPECT_EQ(ProcessMessages(), 1u);
  EXPECT_TRUE(gone.Received().empty());
  EXPECT_EQ(kept.Received(), (std::vector<TReceived>{{kPing, 2, 0, CurrentThreadID()}}));

  EXPECT_FALSE(PostMessage(handle, kPing, 4, 0));
  bool posted = true;
  OnOtherThread([&] { posted = PostMessage(handle, kPing, 5, 0); });
  EXPECT_FALSE(posted);
  EXPECT_EQ(ProcessMessages(), 0u);
  EXPECT_TRUE(gone.Received().empty());
}

TEST(RtlMessagesTest, AWindowMethodMayDestroyItsOwnWindow) {
  TRecordingWindow window([](TRecordingWindow& self, const TMessage&) { self.Close(); });
  for (uintptr_t i = 1; i <= 3; ++i) PostMessage(window.Handle(), kPing, i, 0);
  EXPECT_EQ(ProcessMessages(), 1u);
  EXPECT_EQ(window.Received(), (std::vector<TReceived>{{kPing, 1, 0, CurrentThreadID()}}));
}

TEST(RtlMessagesTest, WhatAWindowMethodHoldsMayPostWhenItGoes) {
  TRecordingWindow told;
  for (const bool byThreadEnd : {false, true}) {
    SCOPED_TRACE(byThreadEnd ? "window gone with its thread" : "window destroyed");
    const auto postOnRelease = [&told](uintptr_t tag) {
      return std::shared_ptr<void>(nullptr, [&told, tag](void*) { PostMessage(told.Handle(), kPing, tag, 0); });
    };
    const auto make = [&](uintptr_t tag) { return AllocateHWnd([held = postOnRelease(tag)](TMessage&) {}); };
    if (byThreadEnd)
      OnOtherThread([&] { make(2); });
    else
      DeallocateHWnd(make(1));
    EXPECT_EQ(ProcessMessages(), 1u);
    EXPECT_EQ(told.Received().back().WParam, byThreadEnd ? 2u : 1u);
  }
}

TEST(RtlMessagesTest, MessagesPostedWhileDispatchingAreDispatchedToo) {
  TRecordingWindow window([](TRecordingWindow& self, const TMessage& message) {
    if (message.WParam < 3) PostMessage(self.Handle(), kPing, message.WParam + 1, 0);
  });
  PostMessage(window.Handle(), kPing, 1, 0);
  EXPECT_EQ(ProcessMessages(), 3u);
  ASSERT_EQ(window.Received().size(), 3u);
  EXPECT_EQ(window.Received().back().WParam, 3u);
}

TEST(RtlMessagesTest, AnExceptionFromAWindowMethodEndsProcessMessages) {
  TRecordingWindow window([](TRecordingWindow&, const TMessage& message) {
    if (message.WParam == 2) throw EArgumentException(u"second message refused");
  });
  for (uintptr_t i = 1; i <= 3; ++i) PostMessage(window.Handle(), kPing, i, 0);
  EXPECT_RAISES(EArgumentException, ProcessMessages(), u"second message refused");
  EXPECT_EQ(window.Received().size(), 2u);
  EXPECT_EQ(ProcessMessages(), 1u) << "the message after it still waits";
  EXPECT_EQ(window.Received().back().WParam, 3u);
}

TEST(RtlMessagesTest, OnlyTheOwnerThreadDestroysAWindow) {
#if defined(_WIN32)
  constexpr uint32_t kAccessDenied = 5, kInvalidHandle = 1400;
#else
  constexpr uint32_t kAccessDenied = 1, kInvalidHandle = 9;  // EPERM, EBADF
#endif
  TRecordingWindow window;
  TRecordingWindow closed;
  const TWindowHandle gone = closed.Handle();
  closed.Close();
  struct TCase {
    const char* Name;
    bool OtherThread;
    TWindowHandle Handle;
    uint32_t Code;
  };
  const TCase cases[] = {
      {"another thread's window", true, window.Handle(), kAccessDenied},
      {"a destroyed window", false, gone, kInvalidHandle},
      {"no window", false, 0, kInvalidHandle},
  };
  for (const TCase& c : cases) {
    SCOPED_TRACE(c.Name);
    const auto attempt = [&] { EXPECT_RAISES(EOSError, DeallocateHWnd(c.Handle), OSErrorText(c.Code)); };
    c.OtherThread ? OnOtherThread(attempt) : attempt();
  }
  ASSERT_TRUE(PostMessage(window.Handle(), kPing, 7, 0)) << "a refused destruction leaves the window";
  EXPECT_EQ(ProcessMessages(), 1u);
}

TEST(RtlMessagesTest, AThreadThatEndsTakesItsWindowsWithIt) {
  TWindowHandle left = 0;
  OnOtherThread([&left] { left = AllocateHWnd([](TMessage&) { ADD_FAILURE() << "a dead thread's window ran"; }); });
  ASSERT_NE(left, 0u);
  EXPECT_FALSE(PostMessage(left, kPing, 0, 0));
}

TEST(RtlMessagesTest, DefaultAnswerToAnUnhandledMessage) {
  TRecordingWindow window;
  EXPECT_EQ(DefWindowProc(TMessage{window.Handle(), kPing, 1, 2, 42}), 0);
}

TEST(RtlMessagesTest, RegisteredMessageNumbers) {
  const uint32_t first = RegisterWindowMessage(u"QxRtlTest.Messages.First");
  const uint32_t second = RegisterWindowMessage(u"QxRtlTest.Messages.Second");
  EXPECT_GE(first, 0xC000u);
  EXPECT_LE(first, 0xFFFFu);
  EXPECT_NE(first, second);
  EXPECT_EQ(RegisterWindowMessage(u"QxRtlTest.Messages.First"), first);
  uint32_t fromThread = 0;
  OnOtherThread([&fromThread] { fromThread = RegisterWindowMessage(u"QxRtlTest.Messages.Second"); });
  EXPECT_EQ(fromThread, second);
  EXPECT_EQ(RegisterWindowMessage(UnicodeString(255, u'n')), RegisterWindowMessage(UnicodeString(255, u'n')));
}

TEST(RtlMessagesTest, RefusedArguments) {
  struct TCase {
    const char* Name;
    std::function<void()> Call;
    const char16_t* Message;
  };
  const TCase cases[] = {
      {"empty name", [] { RegisterWindowMessage(u""); }, u"A window message needs a name"},
      {"name with NUL", [] { RegisterWindowMessage(UnicodeStringView(u"a\0b", 3)); },
       u"A window message name must not hold a NUL character"},
      {"name too long", [] { RegisterWindowMessage(UnicodeString(256, u'n')); },
       u"A window message name must not be longer than 255 characters"},
      {"no window method", [] { AllocateHWnd(nullptr); }, u"AllocateHWnd needs a window method"},
  };
  for (const TCase& c : cases) {
    SCOPED_TRACE(c.Name);
    EXPECT_RAISES(EArgumentException, c.Call(), c.Message);
  }
}

}  // namespace
}  // namespace Quorvex::Rtl::Messages
