#include "Quorvex.Rtl.Exceptions.hpp"

#include <atomic>

#include "Quorvex.Platform.hpp"

namespace Quorvex::Rtl::Exceptions {

namespace {

std::atomic<TStackTraceProvider> FStackTraceProvider{nullptr};

// A provider that fails must not turn the exception being made into another.
UnicodeString CurrentStackTrace() {
  const TStackTraceProvider provider = FStackTraceProvider.load(std::memory_order_acquire);
  if (provider == nullptr) return {};
  try {
    return provider();
  } catch (...) {
    return {};
  }
}

}  // namespace

Exception::Exception(UnicodeString message)
    : FMessage(std::move(message)), FUtf8(Strings::Utf16ToUtf8(FMessage)), FStackTrace(CurrentStackTrace()) {}

Exception::~Exception() = default;

void SetStackTraceProvider(TStackTraceProvider provider) {
  FStackTraceProvider.store(provider, std::memory_order_release);
}

TStackTraceProvider GetStackTraceProvider() { return FStackTraceProvider.load(std::memory_order_acquire); }

EAssertionFailed::EAssertionFailed(UnicodeStringView message, UnicodeStringView fileName, int line)
    : Exception(Strings::Format(u"%s (%s, line %d)", message, fileName, line)) {}

EOSError::EOSError(UnicodeString message, uint32_t errorCode) : Exception(std::move(message)), FErrorCode(errorCode) {}

void RaiseRangeError() { throw ERangeError(u"Range check error"); }

void RaiseIntOverflow() { throw EIntOverflow(u"Integer overflow"); }

void RaiseInvalidCast() { throw EInvalidCast(u"Invalid class typecast"); }

void RaiseIntfCastError() { throw EIntfCastError(u"Interface not supported"); }

void RaiseInvalidPointer() { throw EInvalidPointer(u"Invalid pointer operation"); }

void RaiseAbstractError() { throw EAbstractError(u"Abstract Error"); }

void RaiseListIndexError(int64_t index) { throw EListError(Strings::Format(u"List index out of bounds (%d)", index)); }

void Assert(bool condition, UnicodeStringView message, UnicodeStringView fileName, int line) {
  if (!condition) throw EAssertionFailed(message.empty() ? u"Assertion failed" : message, fileName, line);
}

UnicodeString SysErrorMessage(uint32_t errorCode) { return Platform::ErrorMessage(errorCode); }

uint32_t GetLastError() { return Platform::LastError(); }

void RaiseLastOSError() { RaiseLastOSError(Platform::LastError()); }

void RaiseLastOSError(uint32_t errorCode) {
  RaiseOSError(errorCode, errorCode == 0 ? UnicodeString() : SysErrorMessage(errorCode));
}

void RaiseOSError(uint32_t errorCode, UnicodeStringView systemText) {
  if (errorCode == 0) throw EOSError(u"A call to an OS function failed", 0);
  throw EOSError(Strings::Format(u"System Error.  Code: %d.\r\n%s", errorCode, systemText), errorCode);
}

}  // namespace Quorvex::Rtl::Exceptions
