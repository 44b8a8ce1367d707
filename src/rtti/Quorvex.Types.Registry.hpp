// The process-wide list of named types. The XML serializer writes the name
// under which an object's class is registered into a "type" attribute and
// makes the object again from that name. Applications register, at
// start-up, every class that may stand in a property declared as a base
// class or an interface. Registration is not locked: finish it before
// other threads look types up.
#pragma once

#include <functional>

#include "Quorvex.Rtl.Collections.hpp"
#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.TypInfo.hpp"

namespace Quorvex::Types::Registry {

using Rtl::Objects::IInterface;
using Rtl::Objects::IntfPtr;
using Rtl::Objects::TClass;
using Rtl::Objects::TObject;
using Rtl::Strings::UnicodeString;
using Rtl::Strings::UnicodeStringView;
using Rtl::TypInfo::TValue;

// Makes a value anew at each call.
using TTypeConstructor = std::function<TValue()>;
// Makes an object anew at each call.
using TObjectFactory = std::function<TObject*()>;

// One registration: a name, an optional alias and the factory.
class ITypeMapping : public virtual IInterface {
 public:
  static constexpr Rtl::Objects::TGUID IID = Rtl::Objects::TGUID::Parse("{5E0C9A41-7B2D-4C8E-9F13-2A6B8D4E1C07}");
  static constexpr const char16_t* InterfaceName = u"ITypeMapping";

  virtual UnicodeString GetName() = 0;
  virtual UnicodeString GetAlias() = 0;
  // The alias when there is one, else the name.
  virtual UnicodeString GetNameOrAlias() = 0;
  // Calls the factory and returns what it made; nothing is cached.
  virtual TValue Make() = 0;
};

// The one implementation of ITypeMapping; its fields never change.
class QXRTL_API TTypeMapping : public Rtl::Objects::TInterfacedObject, public ITypeMapping {
  QX_CLASS(TTypeMapping, TInterfacedObject, "Quorvex.Types.Registry")
  QX_INTERFACES(ITypeMapping)
 public:
  TTypeMapping(UnicodeStringView name, UnicodeStringView alias, TTypeConstructor constructor);

  UnicodeString GetName() override { return FName; }
  UnicodeString GetAlias() override { return FAlias; }
  UnicodeString GetNameOrAlias() override { return FAlias.empty() ? FName : FAlias; }
  // Raises EInvalidOperation "No constructor registered for %s" when the
  // mapping was registered without one.
  TValue Make() override;

 private:
  UnicodeString FName;
  UnicodeString FAlias;
  TTypeConstructor FConstructor;
};

// The registry itself: class-level state only, never instantiated.
class QXRTL_API TTypeRegistry {
 public:
  TTypeRegistry() = delete;

  // Appends a mapping. Nothing is checked: empty names, duplicates and a
  // missing constructor are accepted, and the first registration of a
  // name or alias shadows later ones.
  static void RegisterType(UnicodeStringView name, TTypeConstructor constructor, UnicodeStringView alias = u"");
  // As above, named by the class's unit-qualified name ("Unit.TClassName").
  static void RegisterType(TClass cls, TTypeConstructor constructor, UnicodeStringView alias = u"");
  // As above, with a factory that makes an object.
  static void RegisterType(TClass cls, TObjectFactory factory, UnicodeStringView alias = u"");
  // Registers class T with its default constructor (CreateObject<T>).
  template <typename T>
  static void RegisterClass(UnicodeStringView alias = u"") {
    RegisterType(T::StaticClass(), TObjectFactory([] { return static_cast<TObject*>(Rtl::Objects::CreateObject<T>()); }),
                 alias);
  }

  // Finds the first mapping whose name, or else alias, equals `name`
  // exactly (case-sensitive). False, with `mapping` cleared, for an empty
  // name or when none matches.
  static bool TryGetType(UnicodeStringView name, IntfPtr<ITypeMapping>& mapping);

  // Creates the list on first use.
  static void EnsureCreated();

 private:
  friend void ReleaseTypes();
  static IntfPtr<Rtl::Collections::IList<IntfPtr<ITypeMapping>>> FTypes;
};

}  // namespace Quorvex::Types::Registry
