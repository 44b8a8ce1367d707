// Captured descriptions of exceptions, safe to keep after the exception is
// gone and to hand to another thread.
#pragma once

#include <exception>

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Objects.hpp"

namespace Quorvex::System::ExceptionInfo {

using Rtl::Objects::IInterface;
using Rtl::Objects::IntfPtr;
using Rtl::Objects::TClass;
using Rtl::Objects::TGUID;
using Rtl::Objects::TInterfacedObject;
using Rtl::Strings::UnicodeString;

// An immutable description of an exception and the chain nested in it.
class IExceptionInfo : public virtual IInterface {
 public:
  static constexpr TGUID IID = TGUID::Parse("{E594D710-078C-43EB-8275-E2E6B5851AF0}");

  // The run-time class of the exception.
  virtual TClass GetExceptClass() = 0;
  virtual UnicodeString GetMessage() = 0;
  // The exception nested in this one, or null at the end of the chain.
  virtual IntfPtr<IExceptionInfo> GetInnerInfo() = 0;
  // The stack-trace text of the exception; empty without a provider.
  virtual UnicodeString GetStackTrace() = 0;
};

// Copies class, message, stack trace and the inner chain out of an
// exception, holding no reference to the exception itself. Library
// exceptions give their own class and their InnerException; any exception
// thrown with std::throw_with_nested gives its nested one. Exceptions of
// other types get a class named after their C++ type ("std::runtime_error"
// is class "runtime_error" of unit "std") and the text of what(), or an
// empty message when they are not std::exception.
class QXRTL_API TExceptionInfo : public TInterfacedObject, public IExceptionInfo {
  QX_CLASS(TExceptionInfo, TInterfacedObject, "Quorvex.System.ExceptionInfo")
  QX_INTERFACES(IExceptionInfo)
 public:
  // Captures the exception `error` holds (typically std::current_exception()
  // in a catch block). Raises EArgumentException "No exception to capture"
  // for a null pointer.
  explicit TExceptionInfo(const std::exception_ptr& error);
  // Captures a live exception.
  explicit TExceptionInfo(const std::exception& error);

  TClass GetExceptClass() override { return FClass; }
  UnicodeString GetMessage() override { return FMessage; }
  IntfPtr<IExceptionInfo> GetInnerInfo() override { return FInnerInfo; }
  UnicodeString GetStackTrace() override { return FStackTrace; }

 private:
  // Class, message, stack trace, then the inner chain, in that order.
  void CaptureFrom(const std::exception& error);

  TClass FClass = nullptr;
  UnicodeString FMessage;
  IntfPtr<IExceptionInfo> FInnerInfo;
  UnicodeString FStackTrace;
};

}  // namespace Quorvex::System::ExceptionInfo
