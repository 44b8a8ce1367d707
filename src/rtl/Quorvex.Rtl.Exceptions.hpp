// The runtime's exception hierarchy. Every error the library reports is an
// Exception carrying a UTF-16 message; what() gives the same text in UTF-8.
// Exceptions are objects with class information, may carry the exception
// they replaced (the inner exception) and a stack-trace text.
#pragma once

#include <concepts>
#include <cstdint>
#include <exception>
#include <string>

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Objects.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::Rtl::Exceptions {

using Objects::TObject;
using Strings::UnicodeString;
using Strings::UnicodeStringView;

class Exception;

// Raises `outer` with the exception being handled as its inner exception.
// Call it inside a catch block; elsewhere `outer` gets no inner exception.
template <std::derived_from<Exception> E>
[[noreturn]] void RaiseOuterException(E outer);

// Root of all library exceptions.
class QXRTL_API Exception : public std::exception, public TObject {
  QX_CLASS(Exception, TObject, "Quorvex.Rtl.Exceptions")
 public:
  // Takes the stack-trace text from the installed provider, if any.
  explicit Exception(UnicodeString message);
  ~Exception() override;

  const UnicodeString& Message() const noexcept { return FMessage; }
  const char* what() const noexcept override { return FUtf8.c_str(); }
  // The exception this one replaced (see RaiseOuterException), or null.
  const std::exception_ptr& InnerException() const noexcept { return FInnerException; }
  // The provider's text at construction; empty when none is installed.
  const UnicodeString& StackTrace() const noexcept { return FStackTrace; }

 private:
  template <std::derived_from<Exception> E>
  friend void RaiseOuterException(E outer);

  UnicodeString FMessage;
  std::string FUtf8;
  std::exception_ptr FInnerException;
  UnicodeString FStackTrace;
};

template <std::derived_from<Exception> E>
void RaiseOuterException(E outer) {
  static_cast<Exception&>(outer).FInnerException = std::current_exception();
  throw outer;
}

// The source of stack-trace texts: called when an exception is made, on
// the raising thread. An exception it raises is swallowed (empty text).
using TStackTraceProvider = UnicodeString (*)();

// Installs `provider` for exceptions made from now on; nullptr removes it.
QXRTL_API void SetStackTraceProvider(TStackTraceProvider provider);
QXRTL_API TStackTraceProvider GetStackTraceProvider();

// Declares an exception class that only carries its formatted message,
// with the unit it belongs to for its class information:
//   QX_DECLARE_EXCEPTION(EFileException, Exception, "Quorvex.Utils.Files");
#define QX_DECLARE_EXCEPTION(Name, Base, UnitName)                                              \
  class Name : public Base {                                                                    \
    QX_CLASS(Name, Base, UnitName)                                                              \
   public:                                                                                      \
    explicit Name(::Quorvex::Rtl::Strings::UnicodeString message) : Base(std::move(message)) {} \
  }

QX_DECLARE_EXCEPTION(EConvertError, Exception, "Quorvex.Rtl.Exceptions");
QX_DECLARE_EXCEPTION(EInvalidCast, Exception, "Quorvex.Rtl.Exceptions");
QX_DECLARE_EXCEPTION(EIntfCastError, Exception, "Quorvex.Rtl.Exceptions");
QX_DECLARE_EXCEPTION(EAbstractError, Exception, "Quorvex.Rtl.Exceptions");
QX_DECLARE_EXCEPTION(EListError, Exception, "Quorvex.Rtl.Exceptions");
QX_DECLARE_EXCEPTION(EStringListError, EListError, "Quorvex.Rtl.Exceptions");
QX_DECLARE_EXCEPTION(EStreamError, Exception, "Quorvex.Rtl.Exceptions");
QX_DECLARE_EXCEPTION(EFOpenError, EStreamError, "Quorvex.Rtl.Exceptions");
QX_DECLARE_EXCEPTION(EFCreateError, EStreamError, "Quorvex.Rtl.Exceptions");
QX_DECLARE_EXCEPTION(EReadError, EStreamError, "Quorvex.Rtl.Exceptions");
QX_DECLARE_EXCEPTION(EWriteError, EStreamError, "Quorvex.Rtl.Exceptions");
QX_DECLARE_EXCEPTION(EResNotFound, Exception, "Quorvex.Rtl.Exceptions");
QX_DECLARE_EXCEPTION(EArgumentException, Exception, "Quorvex.Rtl.Exceptions");
QX_DECLARE_EXCEPTION(EArgumentOutOfRangeException, EArgumentException, "Quorvex.Rtl.Exceptions");
QX_DECLARE_EXCEPTION(EInvalidOperation, Exception, "Quorvex.Rtl.Exceptions");
QX_DECLARE_EXCEPTION(EInvalidPointer, Exception, "Quorvex.Rtl.Exceptions");

// Integer arithmetic errors.
QX_DECLARE_EXCEPTION(EIntError, Exception, "Quorvex.Rtl.Exceptions");
QX_DECLARE_EXCEPTION(ERangeError, EIntError, "Quorvex.Rtl.Exceptions");
QX_DECLARE_EXCEPTION(EIntOverflow, EIntError, "Quorvex.Rtl.Exceptions");
QX_DECLARE_EXCEPTION(EVariantError, Exception, "Quorvex.Rtl.Exceptions");
// A variant that cannot become the type asked for: "Could not convert
// variant \"abc\" of type (UnicodeString) into type (Integer)"; the text is
// named for strings only.
QX_DECLARE_EXCEPTION(EVariantTypeCastError, EVariantError, "Quorvex.Rtl.Exceptions");

// A failed assertion: "<message> (<file>, line <n>)".
class QXRTL_API EAssertionFailed : public Exception {
  QX_CLASS(EAssertionFailed, Exception, "Quorvex.Rtl.Exceptions")
 public:
  EAssertionFailed(UnicodeStringView message, UnicodeStringView fileName, int line);
};

// A failed operating-system call, with the system's error code and text.
class QXRTL_API EOSError : public Exception {
  QX_CLASS(EOSError, Exception, "Quorvex.Rtl.Exceptions")
 public:
  EOSError(UnicodeString message, uint32_t errorCode);
  uint32_t ErrorCode() const noexcept { return FErrorCode; }

 private:
  uint32_t FErrorCode;
};

// Raises ERangeError "Range check error".
[[noreturn]] QXRTL_API void RaiseRangeError();

// Raises EIntOverflow "Integer overflow".
[[noreturn]] QXRTL_API void RaiseIntOverflow();

// Raises EInvalidCast "Invalid class typecast".
[[noreturn]] QXRTL_API void RaiseInvalidCast();

// Raises EIntfCastError "Interface not supported": an object asked for an
// interface it does not implement where the caller cannot do without it.
[[noreturn]] QXRTL_API void RaiseIntfCastError();

// Raises EInvalidPointer "Invalid pointer operation".
[[noreturn]] QXRTL_API void RaiseInvalidPointer();

// Raises EAbstractError "Abstract Error".
[[noreturn]] QXRTL_API void RaiseAbstractError();

// Raises EListError "List index out of bounds (%d)".
[[noreturn]] QXRTL_API void RaiseListIndexError(int64_t index);

// Raises EAssertionFailed unless `condition` holds.
QXRTL_API void Assert(bool condition, UnicodeStringView message, UnicodeStringView fileName, int line);

// The system's message text for an error code ("" when it has none).
QXRTL_API UnicodeString SysErrorMessage(uint32_t errorCode);

// The calling thread's last operating-system error code.
QXRTL_API uint32_t GetLastError();

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
[[noreturn]] QXRTL_API void RaiseLastOSError();
[[noreturn]] QXRTL_API void RaiseLastOSError(uint32_t errorCode);

// Raises EOSError "System Error.  Code: %d.\r\n%s" with `systemText` as the
// text, for failures whose description does not come from the error code
// (a dynamic loader's own message); code 0 raises as RaiseLastOSError(0).
[[noreturn]] QXRTL_API void RaiseOSError(uint32_t errorCode, UnicodeStringView systemText);

}  // namespace Quorvex::Rtl::Exceptions

// Type information builds on objects and exceptions; whoever has classes
// (QX_CLASS) has it too.
#include "Quorvex.Rtl.TypInfo.hpp"  // IWYU pragma: export
