// Objects that nil the variables weakly referring to them when they die.
#pragma once

#include <vector>

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Objects.hpp"

namespace Quorvex::System::WeakRef {

using Rtl::Objects::IInterface;
using Rtl::Objects::TGUID;
using Rtl::Objects::TInterfacedObject;

// An object that accepts weak references: addresses of pointer-sized
// variables holding an uncounted pointer to it.
class IWeakReferenceableObject : public virtual IInterface {
 public:
  static constexpr TGUID IID = TGUID::Parse("{F4CF4BDC-353E-4EDA-8663-1B52EA2054C3}");

  // Registers the variable at `p`; it reads null once the object is gone.
  virtual void AddWeakRef(void* p) = 0;
  // Unregisters the variable at `p`; call it before the variable dies.
  virtual void RemoveWeakRef(void* p) = 0;
};

// A reference-counted object that writes nullptr into every registered
// variable when its last reference goes. Registrations may come from any
// thread; they are serialised by the object's monitor lock.
class QXRTL_API TWeakReferencedObject : public TInterfacedObject, public IWeakReferenceableObject {
  QX_CLASS(TWeakReferencedObject, TInterfacedObject, "Quorvex.System.WeakRef")
  QX_INTERFACES(IWeakReferenceableObject)
 public:
  // Appends `p`; the same address may be registered more than once.
  // Raises EIntOverflow when the count of registrations would overflow.
  void AddWeakRef(void* p) override;
  // Removes the first registration of `p`, and always shortens the list by
  // one: removing an address that was never added drops the last
  // registration instead, which then is not nilled. Callers must only
  // remove what they added. Nothing happens on an empty list.
  void RemoveWeakRef(void* p) override;
  // Writes nullptr into every registered variable. Runs only once the
  // object is really going: a refused FreeObject leaves them alone.
  void BeforeDestruction() override;

 private:
  std::vector<void*> FWeakReferences;
};

}  // namespace Quorvex::System::WeakRef
