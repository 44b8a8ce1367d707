// Hidden message windows, posting to them from any thread, and pumping the
// calling thread's messages. A window belongs to the thread that allocates
// it: its method runs on that thread only, while the thread pumps, and only
// that thread may deallocate it. On Windows any message loop pumps; on
// Linux ProcessMessages does, and MessageFd lets a loop of the
// application's own (poll, GLib, Qt, libuv) know when to call it.
//
// <windows.h> defines PostMessage, DefWindowProc and RegisterWindowMessage
// as macros: a program that includes it #undefs them before calling these.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Strings.hpp"
#include "Quorvex.Rtl.Threads.hpp"

#pragma push_macro("PostMessage")
#pragma push_macro("DefWindowProc")
#pragma push_macro("RegisterWindowMessage")
#undef PostMessage
#undef DefWindowProc
#undef RegisterWindowMessage

namespace Quorvex::Rtl::Messages {

using Strings::UnicodeStringView;

// A window's handle (an HWND on Windows); 0 is no window.
using TWindowHandle = uintptr_t;

// The first message number free for a window class's own use.
inline constexpr uint32_t WmUser = 0x0400;

// The time-out of WaitMessage that never ends.
using Threads::kInfinite;

// A message as a window method receives it, with the window it went to;
// the method may set Result.
struct TMessage {
  TWindowHandle Wnd = 0;
  uint32_t Msg = 0;
  uintptr_t WParam = 0;
  intptr_t LParam = 0;
  intptr_t Result = 0;
};

using TWndMethod = std::function<void(TMessage& message)>;

// Creates a hidden window owned by the calling thread that hands each
// message to `method`. Raises EArgumentException "AllocateHWnd needs a
// window method" for an empty one, EOSError when the system refuses.
QXRTL_API TWindowHandle AllocateHWnd(TWndMethod method);

// Destroys a window made by AllocateHWnd; messages still waiting for it
// are dropped. Raises EOSError for a window of another thread (which stays)
// or one that does not exist.
QXRTL_API void DeallocateHWnd(TWindowHandle wnd);

// Queues a message for `wnd` and returns at once; any thread may post.
// False when the window no longer exists: the message is dropped.
QXRTL_API bool PostMessage(TWindowHandle wnd, uint32_t msg, uintptr_t wParam, intptr_t lParam);

// The system's default answer to `message` (0 on Linux), for window
// methods to pass on what they do not handle themselves.
QXRTL_API intptr_t DefWindowProc(const TMessage& message);

// The message number of `name`, the same for every caller of the same name
// (process-wide on Linux, machine-wide on Windows, which ignores case).
// Raises EArgumentException for an empty name, one holding a NUL or one
// longer than 255 characters, EOSError when the system refuses.
QXRTL_API uint32_t RegisterWindowMessage(UnicodeStringView name);

// Dispatches every message waiting for the calling thread, those posted
// meanwhile included, and returns how many. An exception from a window
// method ends it and passes on; the messages after it stay waiting.
QXRTL_API size_t ProcessMessages();

// Waits until a message waits for the calling thread, at most `timeoutMs`
// milliseconds (kInfinite: no limit); true when one waits, false when the
// time ran out. Raises EOSError when the wait fails.
QXRTL_API bool WaitMessage(uint32_t timeoutMs);

// A descriptor that is readable whenever messages wait for the calling
// thread, for an event loop to watch: call ProcessMessages when it is. It
// stays the same for the thread's life, and may be readable once with no
// message left, which ProcessMessages clears. -1 on Windows, whose loops
// wait for messages themselves. Raises EOSError when it cannot be made.
QXRTL_API int MessageFd();

}  // namespace Quorvex::Rtl::Messages

#pragma pop_macro("RegisterWindowMessage")
#pragma pop_macro("DefWindowProc")
#pragma pop_macro("PostMessage")
