#include "Quorvex.System.NonRef.hpp"

namespace Quorvex::System::NonRef {

int32_t TNonRefCountedObject::QueryInterface(const TGUID& iid, void** obj) {
  return Rtl::Objects::QueryInterfaceOf(this, this, iid, obj);
}

int32_t TNonRefCountedObject::_AddRef() { return -1; }

int32_t TNonRefCountedObject::_Release() { return -1; }

void* TNonRefCountedObject::FindInterface(const TGUID& iid) {
  if (iid == IInterface::IID) return static_cast<IInterface*>(this);
  return inherited::FindInterface(iid);
}

}  // namespace Quorvex::System::NonRef
