// The runtime's exception hierarchy. Every error the library reports is an
// Exception carrying a UTF-16 message; what() gives the same text in UTF-8.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::Rtl::Exceptions {

using Strings::UnicodeString;
using Strings::UnicodeStringView;

// Root of all library exceptions.
class Exception : public std::exception {
 public:
  explicit Exception(UnicodeString message);
  ~Exception() override;

  const UnicodeString& Message() const noexcept { return FMessage; }
  const char* what() const noexcept override { return FUtf8.c_str(); }

 private:
  UnicodeString FMessage;
  std::string FUtf8;
};

// Declares an exception class that only carries its formatted message.
#define QX_DECLARE_EXCEPTION(Name, Base)                                                        \
  class Name : public Base {                                                                    \
   public:                                                                                      \
    explicit Name(::Quorvex::Rtl::Strings::UnicodeString message) : Base(std::move(message)) {} \
  }

QX_DECLARE_EXCEPTION(EConvertError, Exception);
QX_DECLARE_EXCEPTION(EInvalidCast, Exception);
QX_DECLARE_EXCEPTION(EAbstractError, Exception);
QX_DECLARE_EXCEPTION(EListError, Exception);
QX_DECLARE_EXCEPTION(EStringListError, EListError);
QX_DECLARE_EXCEPTION(EStreamError, Exception);
QX_DECLARE_EXCEPTION(EFOpenError, EStreamError);
QX_DECLARE_EXCEPTION(EFCreateError, EStreamError);
QX_DECLARE_EXCEPTION(EReadError, EStreamError);
QX_DECLARE_EXCEPTION(EWriteError, EStreamError);
QX_DECLARE_EXCEPTION(EResNotFound, Exception);
QX_DECLARE_EXCEPTION(EArgumentException, Exception);
QX_DECLARE_EXCEPTION(EArgumentOutOfRangeException, EArgumentException);
QX_DECLARE_EXCEPTION(EInvalidOperation, Exception);

// Integer arithmetic errors.
QX_DECLARE_EXCEPTION(EIntError, Exception);
QX_DECLARE_EXCEPTION(ERangeError, EIntError);
QX_DECLARE_EXCEPTION(EIntOverflow, EIntError);

// A failed assertion: "<message> (<file>, line <n>)".
class EAssertionFailed : public Exception {
 public:
  EAssertionFailed(UnicodeStringView message, UnicodeStringView fileName, int line);
};

// A failed operating-system call, with the system's error code and text.
class EOSError : public Exception {
 public:
  EOSError(UnicodeString message, uint32_t errorCode);
  uint32_t ErrorCode() const noexcept { return FErrorCode; }

 private:
  uint32_t FErrorCode;
};

// Raises ERangeError "Range check error".
[[noreturn]] void RaiseRangeError();

// Raises EIntOverflow "Integer overflow".
[[noreturn]] void RaiseIntOverflow();

// Raises EInvalidCast "Invalid class typecast".
[[noreturn]] void RaiseInvalidCast();

// Raises EAbstractError "Abstract Error".
[[noreturn]] void RaiseAbstractError();

// Raises EListError "List index out of bounds (%d)".
[[noreturn]] void RaiseListIndexError(int64_t index);

// Raises EAssertionFailed unless `condition` holds.
void Assert(bool condition, UnicodeStringView message, UnicodeStringView fileName, int line);

// The system's message text for an error code ("" when it has none).
UnicodeString SysErrorMessage(uint32_t errorCode);

// The calling thread's last operating-system error code.
uint32_t GetLastError();

// Raises E with `format` filled by `args` followed by the thread's last
// error code, read before anything else can change it (messages such as
// "Cannot rename file %s to %s; error: %d").
template <typename E, typename... Args>
[[noreturn]] void RaiseWithLastError(UnicodeStringView format, const Args&... args) {
  const uint32_t code = GetLastError();
  throw E(Strings::Format(format, args..., code));
}

// Raises EOSError for the thread's last error:
// "System Error.  Code: %d.\r\n%s", or "A call to an OS function failed"
// when the code is 0.
[[noreturn]] void RaiseLastOSError();
[[noreturn]] void RaiseLastOSError(uint32_t errorCode);

}  // namespace Quorvex::Rtl::Exceptions
