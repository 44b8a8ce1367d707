#include "Quorvex.Rtl.Messages.hpp"

#include "Quorvex.Platform.Messages.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"

namespace Quorvex::Rtl::Messages {

namespace {

using Exceptions::EArgumentException;

// The longest name the system's atom table takes.
constexpr size_t kMaxMessageNameLength = 255;

// For the calls whose "none" answer is a failure only when it comes with a
// reason: a time-out, or no descriptor on Windows, leaves the code 0.
void RaiseOnFailure(bool succeeded) {
  if (!succeeded && Platform::LastError() != 0) Exceptions::RaiseLastOSError();
}

}  // namespace

TWindowHandle AllocateHWnd(TWndMethod method) {
  if (!method) throw EArgumentException(u"AllocateHWnd needs a window method");
  const Platform::MessageWindow wnd = Platform::CreateMessageWindow(
      [method = std::move(method)](Platform::MessageWindow wnd, Platform::WindowMessage& in) {
        TMessage message{wnd, in.Msg, in.WParam, in.LParam, in.Result};
        method(message);
        in.Result = message.Result;
      });
  if (wnd == 0) Exceptions::RaiseLastOSError();
  return wnd;
}

void DeallocateHWnd(TWindowHandle wnd) {
  if (!Platform::DestroyMessageWindow(wnd)) Exceptions::RaiseLastOSError();
}

bool PostMessage(TWindowHandle wnd, uint32_t msg, uintptr_t wParam, intptr_t lParam) {
  return Platform::PostWindowMessage(wnd, msg, wParam, lParam);
}

intptr_t DefWindowProc(const TMessage& message) {
  return Platform::DefaultWindowProc(message.Wnd, {message.Msg, message.WParam, message.LParam, message.Result});
}

uint32_t RegisterWindowMessage(UnicodeStringView name) {
  if (name.empty()) throw EArgumentException(u"A window message needs a name");
  if (name.find(u'\0') != UnicodeStringView::npos)
    throw EArgumentException(u"A window message name must not hold a NUL character");
  if (name.size() > kMaxMessageNameLength)
    throw EArgumentException(u"A window message name must not be longer than 255 characters");
  const uint32_t msg = Platform::RegisterMessageName(name);
  if (msg == 0) Exceptions::RaiseLastOSError();
  return msg;
}

size_t ProcessMessages() { return Platform::DispatchThreadMessages(); }

bool WaitMessage(uint32_t timeoutMs) {
  const bool waiting = Platform::WaitThreadMessage(timeoutMs);
  RaiseOnFailure(waiting);
  return waiting;
}

int MessageFd() {
  const int descriptor = Platform::ThreadMessageDescriptor();
  RaiseOnFailure(descriptor >= 0);
  return descriptor;
}

}  // namespace Quorvex::Rtl::Messages
