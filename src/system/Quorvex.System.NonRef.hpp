// An interface-implementing object whose lifetime its owner controls.
#pragma once

#include <cstdint>

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Objects.hpp"

namespace Quorvex::System::NonRef {

using Rtl::Objects::IInterface;
using Rtl::Objects::TGUID;
using Rtl::Objects::TObject;

// Implements IInterface without counting: interface references never keep
// the object alive nor free it, so the owner frees it (delete or
// FreeObject) and no interface reference may outlive it. Derived classes
// list their interfaces with QX_INTERFACES.
class QXRTL_API TNonRefCountedObject : public TObject, public virtual IInterface {
  QX_CLASS(TNonRefCountedObject, TObject, "Quorvex.System.NonRef")
 public:
  // HResult::Ok with *obj set when the object's interface table has `iid`,
  // otherwise HResult::NoInterface with *obj null. Never raises.
  int32_t QueryInterface(const TGUID& iid, void** obj) override;
  // Both do nothing and return -1.
  int32_t _AddRef() override;
  int32_t _Release() override;
  void* FindInterface(const TGUID& iid) override;
};

}  // namespace Quorvex::System::NonRef
