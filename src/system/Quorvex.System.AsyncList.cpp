#include "Quorvex.System.AsyncList.hpp"

#include <algorithm>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Units.hpp"

namespace Quorvex::System::AsyncList {

// The unit keeps no state; it is registered so that it takes part in the
// library's start-up and shut-down like every other unit.
QX_UNIT(AsyncListUnit, u"Quorvex.System.AsyncList", nullptr, nullptr);

TAsyncList::~TAsyncList() {
  // Releasing an operation may run its destructor, which must not find the
  // list half torn down.
  TAsyncArray released;
  {
    const std::lock_guard lock(FLock);
    released.swap(FList);
  }
}

TAsyncArray& TAsyncList::LockList() {
  FLock.lock();
  return FList;
}

void TAsyncList::UnlockList() { FLock.unlock(); }

void TAsyncList::Add(const IntfPtr<IAsync>& AAsync) {
  if (!AAsync) throw Rtl::Exceptions::EArgumentException(u"Cannot add a nil operation");
  const std::lock_guard lock(FLock);
  const auto same = [&AAsync](const IntfPtr<IAsync>& listed) { return listed.Get() == AAsync.Get(); };
  if (std::none_of(FList.begin(), FList.end(), same)) FList.push_back(AAsync);
}

void TAsyncList::Clear() {
  TAsyncArray released;
  const std::lock_guard lock(FLock);
  released.swap(FList);
}

TAsyncArray TAsyncList::ToArray() {
  const std::lock_guard lock(FLock);
  return FList;
}

void TAsyncList::WaitAll() {
  for (const IntfPtr<IAsync>& async : ToArray()) async->Wait();
}

void TAsyncList::CancelAll() {
  for (const IntfPtr<IAsync>& async : ToArray()) async->Cancel();
}

}  // namespace Quorvex::System::AsyncList
