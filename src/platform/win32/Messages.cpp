// Windows only: message windows are windows of a private class under
// HWND_MESSAGE; the thread's own message queue carries their messages.
#include <exception>
#include <memory>
#include <mutex>
#include <unordered_set>
#include <utility>

#include "Quorvex.Platform.Messages.hpp"
#include "Quorvex.Platform.Win32.hpp"

namespace Quorvex::Platform {

namespace {

constexpr wchar_t kClassName[] = L"QxRtlMessageWindow";

using HandlerPtr = std::shared_ptr<const MessageHandler>;

// What a window of this module holds in GWLP_USERDATA. It is set after
// CreateWindowExW returns and cleared before DestroyWindow, so the
// handler never sees creation or destruction messages.
struct WindowEntry {
  HandlerPtr Handler;
};

HWND AsHwnd(MessageWindow window) { return reinterpret_cast<HWND>(window); }

WindowEntry* EntryOf(HWND hwnd) { return reinterpret_cast<WindowEntry*>(::GetWindowLongPtrW(hwnd, GWLP_USERDATA)); }

// Clears a window's entry and hands it back to be freed.
WindowEntry* Unbind(HWND hwnd) { return reinterpret_cast<WindowEntry*>(::SetWindowLongPtrW(hwnd, GWLP_USERDATA, 0)); }

// The calling thread's windows, whose entries are freed when it ends (the
// system destroys the windows themselves then), and the exception a
// handler raised while DispatchThreadMessages runs on this thread.
class ThreadState {
 public:
  ~ThreadState() {
    for (HWND hwnd : std::exchange(FWindows, {})) delete Unbind(hwnd);
  }

  void Attach(HWND hwnd, WindowEntry* entry) {
    FWindows.insert(hwnd);
    ::SetWindowLongPtrW(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(entry));
  }

  WindowEntry* Detach(HWND hwnd) {
    FWindows.erase(hwnd);
    return Unbind(hwnd);
  }

  int Dispatching = 0;
  std::exception_ptr Raised;

 private:
  std::unordered_set<HWND> FWindows;
};

thread_local ThreadState tThread;

// Exceptions cannot cross the system's frames: one raised by a handler is
// kept and raised again by DispatchThreadMessages once DispatchMessageW
// returns. A loop of the application's own never sees it.
void CallHandler(HWND hwnd, const HandlerPtr& handler, WindowMessage& message) {
  try {
    (*handler)(reinterpret_cast<MessageWindow>(hwnd), message);
  } catch (...) {
    if (tThread.Dispatching > 0 && !tThread.Raised) tThread.Raised = std::current_exception();
  }
}

LRESULT CALLBACK WindowProc(HWND hwnd, UINT msg, WPARAM wParam, LPARAM lParam) {
  const WindowEntry* entry = EntryOf(hwnd);
  if (entry == nullptr) return ::DefWindowProcW(hwnd, msg, wParam, lParam);
  // Held for the call, so a handler may destroy its own window.
  const HandlerPtr handler = entry->Handler;
  // Destroyed by other means than DestroyMessageWindow: the entry goes too.
  if (msg == WM_NCDESTROY) delete tThread.Detach(hwnd);
  WindowMessage message{msg, wParam, lParam, 0};
  CallHandler(hwnd, handler, message);
  return message.Result;
}

// The module this code is linked into (the DLL in a shared build): the
// module that holds the class name's text.
HINSTANCE ThisModule() {
  HMODULE module = nullptr;
  ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       kClassName, &module);
  return module;
}

// The window class, registered once per process; 0 when that failed.
ATOM WindowClass() {
  static const ATOM atom = [] {
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = &WindowProc;
    windowClass.hInstance = ThisModule();
    windowClass.lpszClassName = kClassName;
    return ::RegisterClassW(&windowClass);
  }();
  return atom;
}

bool IsOwnWindow(HWND hwnd) {
  return ::IsWindow(hwnd) && static_cast<ATOM>(::GetClassLongPtrW(hwnd, GCW_ATOM)) == WindowClass();
}

}  // namespace

MessageWindow CreateMessageWindow(MessageHandler handler) {
  if (WindowClass() == 0) return 0;
  HWND hwnd = ::CreateWindowExW(0, kClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, ThisModule(), nullptr);
  if (hwnd == nullptr) return 0;
  tThread.Attach(hwnd, new WindowEntry{std::make_shared<const MessageHandler>(std::move(handler))});
  return reinterpret_cast<MessageWindow>(hwnd);
}

bool DestroyMessageWindow(MessageWindow window) {
  HWND hwnd = AsHwnd(window);
  if (!IsOwnWindow(hwnd)) {
    ::SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return false;
  }
  if (::GetWindowThreadProcessId(hwnd, nullptr) != ::GetCurrentThreadId()) {
    ::SetLastError(ERROR_ACCESS_DENIED);
    return false;
  }
  std::unique_ptr<WindowEntry> entry(tThread.Detach(hwnd));
  return ::DestroyWindow(hwnd) != FALSE;
}

bool PostWindowMessage(MessageWindow window, uint32_t msg, uintptr_t wParam, intptr_t lParam) {
  // PostMessageW would take no window for the calling thread's own queue.
  if (window == 0) {
    ::SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return false;
  }
  return ::PostMessageW(AsHwnd(window), msg, wParam, lParam) != FALSE;
}

intptr_t DefaultWindowProc(MessageWindow window, const WindowMessage& message) {
  return ::DefWindowProcW(AsHwnd(window), message.Msg, message.WParam, message.LParam);
}

uint32_t RegisterMessageName(PathView name) {
  const Win32::WidePath wide(name);
  return wide ? ::RegisterWindowMessageW(wide.c_str()) : 0;
}

size_t DispatchThreadMessages() {
  size_t count = 0;
  MSG msg;
  ++tThread.Dispatching;
  while (::PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
    if (msg.message == WM_QUIT) {
      ::PostQuitMessage(static_cast<int>(msg.wParam));
      break;
    }
    ::TranslateMessage(&msg);
    ::DispatchMessageW(&msg);
    ++count;
    if (tThread.Raised) break;
  }
  --tThread.Dispatching;
  if (std::exception_ptr raised = std::exchange(tThread.Raised, nullptr)) std::rethrow_exception(raised);
  return count;
}

bool WaitThreadMessage(uint32_t timeoutMs) {
  const DWORD result = ::MsgWaitForMultipleObjectsEx(0, nullptr, timeoutMs, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
  if (result == WAIT_TIMEOUT) ::SetLastError(0);
  return result == WAIT_OBJECT_0;
}

int ThreadMessageDescriptor() {
  ::SetLastError(0);
  return -1;
}

}  // namespace Quorvex::Platform
