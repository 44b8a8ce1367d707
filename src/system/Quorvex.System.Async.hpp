// Asynchronous operations: the status an operation passes through, the
// contract every operation meets, and the stop request a running piece of
// work polls.
#pragma once

#include <cstdint>

#include "Quorvex.Rtl.Objects.hpp"
#include "Quorvex.Rtl.TypInfo.hpp"
#include "Quorvex.System.ExceptionInfo.hpp"

namespace Quorvex::System::Async {

using Rtl::Objects::IInterface;
using Rtl::Objects::IntfPtr;
using Rtl::Objects::TGUID;
using Rtl::TypInfo::TValue;
using System::ExceptionInfo::IExceptionInfo;

// A stop request a long piece of work can poll: a pool worker hands itself
// to the action it runs as one, and answers true once the pool is cancelled.
class ICancellable : public virtual IInterface {
 public:
  static constexpr TGUID IID = TGUID::Parse("{8F6BBF1C-8F39-4998-B543-9FF010687EE3}");

  virtual bool IsCancelled() = 0;
};

// Where an operation stands. It starts as asStarted and ends in exactly one
// of the other three, which are final.
enum class TAsyncStatus : uint8_t { asStarted, asCompleted, asCancelled, asError };

// An operation running elsewhere. Every implementation also answers
// IAction<ICancellable>, whose Run does the operation's work on a pool
// worker.
class IAsync : public virtual IInterface {
 public:
  static constexpr TGUID IID = TGUID::Parse("{F456C433-2762-445D-9A55-2434070B7FB0}");

  virtual TAsyncStatus GetStatus() = 0;
  // The captured failure while the status is asError; null otherwise.
  virtual IntfPtr<IExceptionInfo> GetFailure() = 0;
  // The value an operation produced once it is asCompleted; empty for
  // operations without a result and before completion.
  virtual TValue GetResult() = 0;
  // Asks the operation to stop; it ends as asCancelled only if its work
  // sees the request before it finishes.
  virtual void Cancel() = 0;
  // Returns once the operation is completed, cancelled or failed.
  virtual void Wait() = 0;
};

}  // namespace Quorvex::System::Async
