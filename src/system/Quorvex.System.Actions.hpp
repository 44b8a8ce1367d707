// Units of work handed between threads: actions with and without an
// argument, and the closure-backed implementation.
#pragma once

#include <functional>
#include <type_traits>
#include <utility>

#include "Quorvex.Rtl.Objects.hpp"
#include "Quorvex.System.Async.hpp"

namespace Quorvex::System::Actions {

using Rtl::Objects::IInterface;
using Rtl::Objects::IntfPtr;
using Rtl::Objects::TGUID;
using Rtl::Objects::TInterfacedObject;

// The stop request handed to the pool's unit of work, IAction<ICancellable>.
using Async::ICancellable;

// The interface identifier of IAction<T>. Each argument type used in
// interface queries specialises it with its own GUID.
template <typename T>
struct TActionIID;

template <>
struct TActionIID<ICancellable> {
  static constexpr TGUID Value = TGUID::Parse("{DB0444FF-F6BB-44CE-8D3D-95E1B2391664}");
};

// How an action receives its argument: interfaces as a counted reference,
// other types by const reference.
template <typename T>
using TActionArg = std::conditional_t<std::is_base_of_v<IInterface, T>, const IntfPtr<T>&, const T&>;

// A unit of work run with an argument of type T; IAction<> (T = void) runs
// without one.
template <typename T = void>
class IAction : public virtual IInterface {
 public:
  static constexpr TGUID IID = TActionIID<T>::Value;

  virtual void Run(TActionArg<T> arg) = 0;
};

template <>
class IAction<void> : public virtual IInterface {
 public:
  static constexpr TGUID IID = TGUID::Parse("{74E5E80A-3E01-4140-B174-4378031DA82E}");

  virtual void Run() = 0;
};

// An action over a closure, kept for the object's life. Run calls it once
// per call; whatever it raises reaches Run's caller unchanged.
template <typename T = void>
class TAnonAction : public TInterfacedObject, public IAction<T> {
  QX_CLASS(TAnonAction, TInterfacedObject, "Quorvex.System.Actions")
  QX_INTERFACES(IAction<T>)
 public:
  using TProc = std::function<void(TActionArg<T>)>;

  explicit TAnonAction(TProc proc) : FProc(std::move(proc)) {}
  void Run(TActionArg<T> arg) override { FProc(arg); }

 private:
  TProc FProc;
};

template <>
class TAnonAction<void> : public TInterfacedObject, public IAction<> {
  QX_CLASS(TAnonAction, TInterfacedObject, "Quorvex.System.Actions")
  QX_INTERFACES(IAction<>)
 public:
  using TProc = std::function<void()>;

  explicit TAnonAction(TProc proc) : FProc(std::move(proc)) {}
  void Run() override { FProc(); }

 private:
  TProc FProc;
};

}  // namespace Quorvex::System::Actions
