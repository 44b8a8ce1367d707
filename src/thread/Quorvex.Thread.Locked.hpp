// A value shared between threads together with the one lock that guards it.
// Every user brackets its access with Acquire and Release; copies of a
// Locked<T> share the value and the lock.
#pragma once

#include <atomic>
#include <type_traits>
#include <utility>

#include "Quorvex.Rtl.Objects.hpp"

namespace Quorvex::Thread::Locked {

using Rtl::Objects::IInterface;
using Rtl::Objects::IntfPtr;
using Rtl::Objects::TInterfacedObject;
using Rtl::Objects::TObject;

// A guarded value and its re-entrant lock.
template <typename T>
class ILocked : public virtual IInterface {
 public:
  // The value itself, without taking the lock: hold it while you use it.
  virtual T GetValue() = 0;
  // Waits, without time-out, until the calling thread holds the lock; a
  // thread that holds it already takes it once more.
  virtual void Acquire() = 0;
  // Gives up one hold of the lock; the calling thread must hold it.
  virtual void Release() = 0;
  // Disposes of the value once (see TLocked<T>::Free).
  virtual void Free() = 0;
};

// Holds the lock of `locked` (a Locked<T>, or anything with Acquire and
// Release) for a scope, and leaves it also when an exception ends the scope.
template <typename L>
class TLockHold {
 public:
  explicit TLockHold(L& locked) : FLocked(locked) { FLocked.Acquire(); }
  ~TLockHold() { FLocked.Release(); }
  TLockHold(const TLockHold&) = delete;
  TLockHold& operator=(const TLockHold&) = delete;

 private:
  L& FLocked;
};

namespace Detail {
// True for pointers to objects: those are what Free disposes of. Any other
// value is only cleared.
template <typename T>
constexpr bool IsObjectReference =
    std::is_pointer_v<T>&& std::is_base_of_v<TObject, std::remove_cv_t<std::remove_pointer_t<T>>>;
}  // namespace Detail

// The counted object behind Locked<T>. Its lock is the monitor of an object
// of its own that nothing outside can reach, so no other code can hold it.
// Destroying it leaves the value alone: an object that was never passed
// through Free stays with its owner.
template <typename T>
requires std::is_default_constructible_v<T>
class TLocked : public TInterfacedObject, public ILocked<T> {
  QX_CLASS(TLocked, TInterfacedObject, "Quorvex.Thread.Locked")
 public:
  explicit TLocked(T value)
      : FLock(Rtl::Objects::CreateObject<TInterfacedObject>()), FValue(std::move(value)), FInitialized(true) {}

  // See ILocked<T>.
  T GetValue() override { return FValue; }
  void Acquire() override { Rtl::Objects::MonitorEnter(*FLock); }
  void Release() override { Rtl::Objects::MonitorExit(*FLock); }

  // Under the lock, frees the object the value points to (for pointers to
  // objects) and clears the value; the lock is left also when that raises,
  // and the value is then kept for another try. A second Free, or one
  // racing with another, finds nothing left and does nothing.
  void Free() override {
    if (!FInitialized.load(std::memory_order_acquire)) return;
    const TLockHold hold(*this);
    if (!FInitialized.load(std::memory_order_relaxed)) return;
    if constexpr (Detail::IsObjectReference<T>) Rtl::Objects::FreeObject(FValue);
    FValue = T{};
    FInitialized.store(false, std::memory_order_release);
  }

 private:
  IntfPtr<TInterfacedObject> FLock;
  T FValue{};
  // True while FValue holds something Free must still dispose of; read
  // before the lock is taken, hence atomic.
  std::atomic<bool> FInitialized{false};
};

// The handle users pass around: a counted reference to one TLocked<T>.
// For an object shared between threads T is a pointer to it, and Free
// frees the object; any other value is kept by copy.
template <typename T>
class Locked {
 public:
  // Makes a new guarded value around `value`.
  static Locked Create(T value) { return Locked(std::move(value)); }
  // The same as Create.
  Locked(T value)  // NOLINT(google-explicit-constructor)
      : FValue(Rtl::Objects::CreateObject<TLocked<T>>(std::move(value))) {}

  // The value, without taking the lock: the caller holds it already.
  operator T() const { return FValue->GetValue(); }  // NOLINT(google-explicit-constructor)
  // The shared interface itself.
  operator IntfPtr<ILocked<T>>() const { return FValue; }  // NOLINT(google-explicit-constructor)

  // Take and leave the shared lock, and dispose of the value, as ILocked<T>.
  void Acquire() const { FValue->Acquire(); }
  void Release() const { FValue->Release(); }
  void Free() const { FValue->Free(); }

 private:
  IntfPtr<ILocked<T>> FValue;
};

}  // namespace Quorvex::Thread::Locked
