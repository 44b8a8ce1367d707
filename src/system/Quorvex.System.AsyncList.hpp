// A thread-safe group of operations, to cancel or wait for together.
#pragma once

#include <mutex>
#include <vector>

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Objects.hpp"
#include "Quorvex.System.Async.hpp"

namespace Quorvex::System::AsyncList {

using Async::IAsync;
using Rtl::Objects::IInterface;
using Rtl::Objects::IntfPtr;
using Rtl::Objects::TGUID;
using Rtl::Objects::TInterfacedObject;

using TAsyncArray = std::vector<IntfPtr<IAsync>>;

// Operations in the order they were added, each once.
class IAsyncList : public virtual IInterface {
 public:
  static constexpr TGUID IID = TGUID::Parse("{8FE0BF06-F606-43CF-AADD-A0ABFC1883C5}");

  // Takes the list's lock and hands out the list itself; pair every call
  // with UnlockList on the same thread. The lock is re-entrant.
  virtual TAsyncArray& LockList() = 0;
  virtual void UnlockList() = 0;
  // Appends `AAsync` unless that very operation is already listed (then
  // nothing happens). Raises EArgumentException "Cannot add a nil
  // operation" for null.
  virtual void Add(const IntfPtr<IAsync>& AAsync) = 0;
  // Drops every entry. Finished operations stay listed until then.
  virtual void Clear() = 0;
  // A copy of the entries, in the order they were added.
  virtual TAsyncArray ToArray() = 0;
  // Waits for every operation listed when the call starts, one after the
  // other, without holding the lock: operations added meanwhile are not
  // waited for, and may add others without deadlock.
  virtual void WaitAll() = 0;
  // Asks each operation listed when the call starts to cancel, in order,
  // without holding the lock.
  virtual void CancelAll() = 0;
};

class QXRTL_API TAsyncList : public TInterfacedObject, public IAsyncList {
  QX_CLASS(TAsyncList, TInterfacedObject, "Quorvex.System.AsyncList")
  QX_INTERFACES(IAsyncList)
 public:
  TAsyncList() = default;
  ~TAsyncList() override;

  TAsyncArray& LockList() override;
  void UnlockList() override;
  void Add(const IntfPtr<IAsync>& AAsync) override;
  void Clear() override;
  TAsyncArray ToArray() override;
  void WaitAll() override;
  void CancelAll() override;

 private:
  std::recursive_mutex FLock;
  TAsyncArray FList;
};

}  // namespace Quorvex::System::AsyncList
