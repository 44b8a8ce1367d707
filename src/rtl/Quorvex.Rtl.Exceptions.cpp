#include "Quorvex.Rtl.Exceptions.hpp"

#include "Quorvex.Platform.hpp"

namespace Quorvex::Rtl::Exceptions {

Exception::Exception(UnicodeString message) : FMessage(std::move(message)), FUtf8(Strings::Utf16ToUtf8(FMessage)) {}

Exception::~Exception() = default;

EAssertionFailed::EAssertionFailed(UnicodeStringView message, UnicodeStringView fileName, int line)
    : Exception(Strings::Format(u"%s (%s, line %d)", message, fileName, line)) {}

EOSError::EOSError(UnicodeString message, uint32_t errorCode) : Exception(std::move(message)), FErrorCode(errorCode) {}

void RaiseRangeError() { throw ERangeError(u"Range check error"); }

void RaiseIntOverflow() { throw EIntOverflow(u"Integer overflow"); }

void RaiseInvalidCast() { throw EInvalidCast(u"Invalid class typecast"); }

void RaiseAbstractError() { throw EAbstractError(u"Abstract Error"); }

void RaiseListIndexError(int64_t index) { throw EListError(Strings::Format(u"List index out of bounds (%d)", index)); }

void Assert(bool condition, UnicodeStringView message, UnicodeStringView fileName, int line) {
  if (!condition) throw EAssertionFailed(message.empty() ? u"Assertion failed" : message, fileName, line);
}

UnicodeString SysErrorMessage(uint32_t errorCode) { return Platform::ErrorMessage(errorCode); }

uint32_t GetLastError() { return Platform::LastError(); }

void RaiseLastOSError() { RaiseLastOSError(Platform::LastError()); }

void RaiseLastOSError(uint32_t errorCode) {
  if (errorCode == 0) throw EOSError(u"A call to an OS function failed", 0);
  throw EOSError(Strings::Format(u"System Error.  Code: %d.\r\n%s", errorCode, SysErrorMessage(errorCode)), errorCode);
}

}  // namespace Quorvex::Rtl::Exceptions
