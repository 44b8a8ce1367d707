// The markers with which application classes steer the XML serializer:
// which properties are written, under which element names, and whether a
// class's properties are written only on request. Two factory markers
// exist for application code, which the serializer does not consult.
#pragma once

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.TypInfo.hpp"

namespace Quorvex::Rtti::Attributes {

using Rtl::Objects::TObject;
using Rtl::Strings::UnicodeString;
using Rtl::Strings::UnicodeStringView;
using Rtl::TypInfo::TCustomAttribute;
using Rtl::TypInfo::TValue;

// On a property: the element name to use instead of the property's name,
// exactly as given (an empty name is not checked here).
class QXRTL_API NameAttribute : public TCustomAttribute {
  QX_CLASS(NameAttribute, TCustomAttribute, "Quorvex.Rtti.Attributes")
 public:
  explicit NameAttribute(UnicodeString name) : FName(std::move(name)) {}
  const UnicodeString& Name() const { return FName; }

 private:
  UnicodeString FName;
};

// On a property: forces it into (true) or out of (false) serialization,
// whatever its visibility and its class's option say.
class QXRTL_API SerializeAttribute : public TCustomAttribute {
  QX_CLASS(SerializeAttribute, TCustomAttribute, "Quorvex.Rtti.Attributes")
 public:
  explicit SerializeAttribute(bool enabled) : FEnabled(enabled) {}
  bool Enabled() const { return FEnabled; }

 private:
  bool FEnabled;
};

// On a class: how its properties are chosen by default. soPublished takes
// the published ones; soExplicit takes none but those marked with
// SerializeAttribute(true).
class QXRTL_API SerializationOptionAttribute : public TCustomAttribute {
  QX_CLASS(SerializationOptionAttribute, TCustomAttribute, "Quorvex.Rtti.Attributes")
 public:
  QX_NESTED_ENUM(TSerializationOption, uint8_t, soExplicit, soPublished);

  explicit SerializationOptionAttribute(TSerializationOption option) : FOption(option) {}
  TSerializationOption Option() const { return FOption; }

 private:
  TSerializationOption FOption;
};

// On a class or property: makes an object by name. Subclasses override New.
class QXRTL_API FactoryAttribute : public TCustomAttribute {
  QX_CLASS(FactoryAttribute, TCustomAttribute, "Quorvex.Rtti.Attributes")
 public:
  // The object `AName` denotes, for the owner `AParent`. The base raises
  // EAbstractError "Abstract Error".
  virtual TValue New(UnicodeStringView AName, TObject* AParent);
  // The name under which `AValue` would be made again; the base gives "".
  virtual UnicodeString GetName(const TValue& AValue);
};

// On a collection property: makes a collection item by name. Subclasses
// override New.
class QXRTL_API ItemFactoryAttribute : public TCustomAttribute {
  QX_CLASS(ItemFactoryAttribute, TCustomAttribute, "Quorvex.Rtti.Attributes")
 public:
  // The item `AName` denotes, for the collection `ACollection`. The base
  // raises EAbstractError "Abstract Error".
  virtual TValue New(UnicodeStringView AName, const TValue& ACollection);
  // The name under which `AValue` would be made again; the base gives "".
  virtual UnicodeString GetName(const TValue& AValue);
};

// Finds markers in the lists that type information keeps per class and
// per property.
struct AttrUtils {
  AttrUtils() = delete;

  // The first marker of class T or of a class derived from T, in list
  // order; nullptr when there is none.
  template <typename T>
  static T* GetAttribute(const std::vector<TCustomAttribute*>& attributes) {
    return Rtl::TypInfo::FindAttribute<T>(attributes);
  }
};

}  // namespace Quorvex::Rtti::Attributes
