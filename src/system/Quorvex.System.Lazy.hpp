// Values made on first use.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>

#include "Quorvex.Rtl.Objects.hpp"

namespace Quorvex::System::Lazy {

using Rtl::Objects::IInterface;
using Rtl::Objects::IntfPtr;
using Rtl::Objects::TGUID;
using Rtl::Objects::TInterfacedObject;

// A lazily made value seen without its type.
class ILazy : public virtual IInterface {
 public:
  static constexpr TGUID IID = TGUID::Parse("{E9AA95A6-0A77-4EC0-AADF-6AF5EA2D1D9E}");

  // True once the value has been made.
  virtual bool IsValueCreated() = 0;
  // The address of the value, making it first if needed; whatever the
  // factory raises passes on and the next call tries again.
  virtual const void* ValuePointer() = 0;
};

// The shared state behind Lazy<T>: the factory and, once made, the value.
template <typename T>
class TLazy : public TInterfacedObject, public ILazy {
  QX_CLASS(TLazy, TInterfacedObject, "Quorvex.System.Lazy")
  QX_INTERFACES(ILazy)
 public:
  explicit TLazy(std::function<T()> factory) : FFactory(std::move(factory)) {}

  bool IsValueCreated() override { return FCreated.load(std::memory_order_acquire); }
  const void* ValuePointer() override { return &Value(); }

  // The value, made by the factory on the first call. Concurrent first
  // calls wait for one run of the factory; if it raises, nothing is stored
  // and the exception passes on.
  const T& Value() {
    if (!FCreated.load(std::memory_order_acquire)) {
      std::lock_guard<std::mutex> guard(FLock);
      if (!FCreated.load(std::memory_order_relaxed)) {
        FValue.emplace(FFactory());
        FFactory = nullptr;  // drop what the closure captured
        FCreated.store(true, std::memory_order_release);
      }
    }
    return *FValue;
  }

 private:
  std::function<T()> FFactory;
  std::mutex FLock;
  std::atomic<bool> FCreated{false};
  std::optional<T> FValue;
};

// A value made from its factory on first use, exactly once even when
// several threads ask at the same time. Copies share the one value.
template <typename T>
class Lazy {
 public:
  // A default-constructed T, made on first use.
  Lazy() : Lazy([] { return T(); }) {}
  explicit Lazy(std::function<T()> factory) : FLazy(Rtl::Objects::CreateObject<TLazy<T>>(std::move(factory))) {}

  bool IsValueCreated() const { return FLazy->IsValueCreated(); }
  // Makes the value if needed; see TLazy::Value for failures.
  const T& Value() const { return FLazy->Value(); }
  const T& operator*() const { return Value(); }
  const T* operator->() const { return &Value(); }
  // The same value seen through ILazy.
  IntfPtr<ILazy> AsInterface() const { return IntfPtr<ILazy>(FLazy.Get()); }

 private:
  IntfPtr<TLazy<T>> FLazy;
};

}  // namespace Quorvex::System::Lazy
