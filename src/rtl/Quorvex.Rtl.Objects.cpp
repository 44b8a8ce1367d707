#include "Quorvex.Rtl.Objects.hpp"

namespace Quorvex::Rtl::Objects {

void Detail::RaiseBadGuid() { throw Exceptions::EConvertError(u"Invalid GUID text"); }

UnicodeString TGUID::ToString() const {
  using Strings::IntToHex;
  UnicodeString text = u"{" + IntToHex(D1, 8) + u"-" + IntToHex(D2, 4) + u"-" + IntToHex(D3, 4) + u"-";
  for (size_t i = 0; i < 8; ++i) {
    if (i == 2) text += u"-";
    text += IntToHex(D4[i], 2);
  }
  return text + u"}";
}

TClassInfo::TClassInfo(UnicodeStringView className, UnicodeStringView unitName, TClass parent, TFactory factory,
                       TDescribe describe)
    : FClassName(className), FUnitName(unitName), FParent(parent), FFactory(factory) {
  if (describe == nullptr) return;
  TClassMembers members;
  describe(members);
  FOwnPropertyCount = members.Properties.size();
  for (auto& property : members.Properties) FProperties.push_back(property.release());
  for (auto& attribute : members.Attributes) FAttributes.push_back(attribute.release());
  if (parent != nullptr) FProperties.insert(FProperties.end(), parent->Properties().begin(), parent->Properties().end());
}

TClassInfo::~TClassInfo() {
  for (size_t i = 0; i < FOwnPropertyCount; ++i) delete FProperties[i];
  for (TypInfo::TCustomAttribute* attribute : FAttributes) delete attribute;
}

UnicodeString TClassInfo::QualifiedClassName() const {
  if (FUnitName.empty()) return ClassName();
  return UnicodeString(FUnitName) + u"." + UnicodeString(FClassName);
}

bool TClassInfo::InheritsFrom(TClass other) const {
  if (other == nullptr) return false;
  for (TClass cls = this; cls != nullptr; cls = cls->FParent)
    if (cls->IsSameClass(*other)) return true;
  return false;
}

// A program linked to the shared library makes its own record of a library
// class whose information is built inline, so the record an object reports
// may not be the one the program names: a class is its qualified name.
bool TClassInfo::IsSameClass(const TClassInfo& other) const {
  return this == &other || (FClassName == other.FClassName && FUnitName == other.FUnitName);
}

TObject* TClassInfo::Create() const {
  if (FFactory == nullptr) Exceptions::RaiseAbstractError();
  return FFactory();
}

TObject::~TObject() { delete FMonitor.load(std::memory_order_acquire); }

TClass TObject::StaticClass() {
  static const TClassInfo info(u"TObject", u"Quorvex.Rtl.Objects", nullptr, Detail::DefaultFactory<TObject>());
  return &info;
}

TClass TObject::ClassType() const { return StaticClass(); }

void* TObject::FindInterface(const TGUID&) { return nullptr; }

UnicodeString TObject::ToString() const { return ClassName(); }

void TObject::AfterConstruction() {}

void TObject::BeforeDestruction() {}

void TObject::BeginDestruction() {}

std::recursive_mutex& TObject::Monitor() {
  std::recursive_mutex* lock = FMonitor.load(std::memory_order_acquire);
  if (lock != nullptr) return *lock;
  // Two threads may race to create the lock: the first to install its own
  // wins and the other drops its spare.
  auto* fresh = new std::recursive_mutex();
  if (FMonitor.compare_exchange_strong(lock, fresh, std::memory_order_acq_rel, std::memory_order_acquire))
    return *fresh;
  delete fresh;
  return *lock;
}

void FreeObject(TObject* obj) {
  if (obj == nullptr) return;
  obj->BeginDestruction();
  obj->BeforeDestruction();
  delete obj;
}

void MonitorEnter(TObject& obj) { obj.Monitor().lock(); }

void MonitorExit(TObject& obj) { obj.Monitor().unlock(); }

int32_t QueryInterfaceOf(TObject* self, IInterface* asInterface, const TGUID& iid, void** obj) {
  void* found = self->FindInterface(iid);
  *obj = found;
  if (found == nullptr) return HResult::NoInterface;
  asInterface->_AddRef();
  return HResult::Ok;
}

int32_t TInterfacedObject::QueryInterface(const TGUID& iid, void** obj) {
  return QueryInterfaceOf(this, this, iid, obj);
}

int32_t TInterfacedObject::_AddRef() { return (FRefCount.fetch_add(1, std::memory_order_relaxed) + 1) & ~kDestroying; }

int32_t TInterfacedObject::_Release() {
  const int32_t count = FRefCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
  if (count == 0) FreeObject(this);
  return count & ~kDestroying;
}

void TInterfacedObject::AfterConstruction() {
  FRefCount.fetch_sub(1, std::memory_order_release);
  inherited::AfterConstruction();
}

void TInterfacedObject::BeginDestruction() {
  int32_t count = 0;
  // A free that an earlier, refused BeforeDestruction left marked may go on.
  if (!FRefCount.compare_exchange_strong(count, kDestroying, std::memory_order_acq_rel) && count != kDestroying)
    Exceptions::RaiseInvalidPointer();
  inherited::BeginDestruction();
}

void* TInterfacedObject::FindInterface(const TGUID& iid) {
  if (iid == IInterface::IID) return static_cast<IInterface*>(this);
  return inherited::FindInterface(iid);
}

TObject* ObjectOf(IInterface* intf) { return dynamic_cast<TObject*>(intf); }

}  // namespace Quorvex::Rtl::Objects
