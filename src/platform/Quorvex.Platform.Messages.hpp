// Hidden message windows and the per-thread message queue that feeds them.
// A window belongs to the thread that creates it: its handler runs only on
// that thread, and only while that thread pumps (DispatchThreadMessages).
// Any thread may post to a window. On Windows these are real windows of a
// private class under HWND_MESSAGE; elsewhere the same model is kept here:
// each thread that owns windows has a queue, posting enqueues and wakes it.
// Nothing here raises; failures come back as false / 0 with LastError().
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "Quorvex.Platform.hpp"

namespace Quorvex::Platform {

// A window's handle (an HWND on Windows); 0 is no window. Handles of
// destroyed windows are not handed out again off Windows.
using MessageWindow = uintptr_t;

// One message as the handler sees it; the handler may set Result.
struct WindowMessage {
  uint32_t Msg = 0;
  uintptr_t WParam = 0;
  intptr_t LParam = 0;
  intptr_t Result = 0;
};

using MessageHandler = std::function<void(MessageWindow window, WindowMessage& message)>;

// Creates a hidden window owned by the calling thread whose messages go to
// `handler`; 0 on failure. The handler never sees the messages of the
// window's own creation and destruction.
MessageWindow CreateMessageWindow(MessageHandler handler);

// Destroys a window of this module and drops the messages waiting for it.
// Only its owner thread may: another thread gets false with
// ERROR_ACCESS_DENIED (EPERM elsewhere) and the window stays; an unknown
// window gives ERROR_INVALID_WINDOW_HANDLE (EBADF). A thread that ends
// destroys the windows it still owns.
bool DestroyMessageWindow(MessageWindow window);

// Queues a message for `window` from any thread and wakes its owner; false
// when the window does not exist (ERROR_INVALID_WINDOW_HANDLE, EBADF).
bool PostWindowMessage(MessageWindow window, uint32_t msg, uintptr_t wParam, intptr_t lParam);

// The system's default answer to a message (DefWindowProcW); 0 off Windows.
intptr_t DefaultWindowProc(MessageWindow window, const WindowMessage& message);

// The message number registered for `name` (RegisterWindowMessageW):
// the same name gives the same number, 0xC000 to 0xFFFF. Windows shares
// the numbers machine-wide and ignores case; elsewhere they hold for the
// process and names compare exactly. 0 on failure.
uint32_t RegisterMessageName(PathView name);

// Dispatches every message waiting for the calling thread, also those
// posted while it runs, and returns how many were dispatched. An exception
// from a handler ends the dispatching and reaches the caller; the messages
// after it stay waiting. A quit request met on Windows is posted again for
// the application's own loop and ends the dispatching.
size_t DispatchThreadMessages();

// Waits until a message waits for the calling thread or `timeoutMs` pass
// (0xFFFFFFFF: no limit); true when one waits. False with LastError 0 on
// time-out, with the reason when the wait failed.
bool WaitThreadMessage(uint32_t timeoutMs);

// A descriptor that is readable whenever messages wait for the calling
// thread, for poll loops; it lives as long as the thread. It may stay
// readable for a moment after the messages were taken: the next dispatch
// then finds none and clears it. -1 with LastError 0 on Windows, which has
// no such descriptor; -1 with the reason when it cannot be made.
int ThreadMessageDescriptor();

}  // namespace Quorvex::Platform
