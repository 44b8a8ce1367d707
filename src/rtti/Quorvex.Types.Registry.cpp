#include "Quorvex.Types.Registry.hpp"

#include "Quorvex.Rtl.Units.hpp"

namespace Quorvex::Types::Registry {

IntfPtr<Rtl::Collections::IList<IntfPtr<ITypeMapping>>> TTypeRegistry::FTypes;

void ReleaseTypes() { TTypeRegistry::FTypes = nullptr; }

QX_UNIT(RegistryUnit, u"Quorvex.Types.Registry", nullptr, &ReleaseTypes);

TTypeMapping::TTypeMapping(UnicodeStringView name, UnicodeStringView alias, TTypeConstructor constructor)
    : FName(name), FAlias(alias), FConstructor(std::move(constructor)) {}

TValue TTypeMapping::Make() {
  if (!FConstructor) throw Rtl::Exceptions::EInvalidOperation(u"No constructor registered for " + FName);
  return FConstructor();
}

void TTypeRegistry::EnsureCreated() {
  if (!FTypes) FTypes = Rtl::Collections::NewList<IntfPtr<ITypeMapping>>();
}

void TTypeRegistry::RegisterType(UnicodeStringView name, TTypeConstructor constructor, UnicodeStringView alias) {
  EnsureCreated();
  FTypes->Add(Rtl::Objects::CreateObject<TTypeMapping>(name, alias, std::move(constructor)));
}

void TTypeRegistry::RegisterType(TClass cls, TTypeConstructor constructor, UnicodeStringView alias) {
  RegisterType(cls->QualifiedClassName(), std::move(constructor), alias);
}

void TTypeRegistry::RegisterType(TClass cls, TObjectFactory factory, UnicodeStringView alias) {
  TTypeConstructor constructor;
  if (factory) constructor = [factory = std::move(factory)] { return TValue::FromObject(factory()); };
  RegisterType(cls, std::move(constructor), alias);
}

bool TTypeRegistry::TryGetType(UnicodeStringView name, IntfPtr<ITypeMapping>& mapping) {
  mapping = nullptr;
  EnsureCreated();
  if (name.empty()) return false;
  for (const IntfPtr<ITypeMapping>& candidate : *FTypes) {
    if (candidate->GetName() == name || candidate->GetAlias() == name) {
      mapping = candidate;
      return true;
    }
  }
  return false;
}

}  // namespace Quorvex::Types::Registry
