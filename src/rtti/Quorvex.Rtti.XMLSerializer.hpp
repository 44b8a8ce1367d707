// Turns objects into XML elements and fills objects from them, driven by
// type information and steered by the markers of Quorvex.Rtti.Attributes.
// Containers whose content is not reachable through properties (string
// lists, collections) are written by specs kept in TXmlSpecRegistry;
// objects declared as a base class or an interface are made again through
// the type registry from their "type" attribute.
//
// Reading never raises for unknown or missing elements, unregistered types
// or unknown enumeration names; text that cannot be converted raises the
// runtime's variant conversion error, leaving the object partly filled.
#pragma once

#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "Quorvex.Rtl.Collections.hpp"
#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.TypInfo.hpp"
#include "Quorvex.Rtl.Xml.hpp"

namespace Quorvex::Rtti::XMLSerializer {

using Rtl::Objects::IInterface;
using Rtl::Objects::IntfPtr;
using Rtl::Objects::TClass;
using Rtl::Objects::TObject;
using Rtl::Strings::UnicodeString;
using Rtl::TypInfo::PTypeInfo;
using Rtl::TypInfo::TRttiProperty;
using Rtl::TypInfo::TValue;
using Rtl::Xml::TXmlDocument;
using Rtl::Xml::TXmlNode;

// What a spec may ask of the serializer that called it.
class IXmlSerializerProcessor : public virtual IInterface {
 public:
  static constexpr Rtl::Objects::TGUID IID =
      Rtl::Objects::TGUID::Parse("{7D3B5F20-6A1C-4E8B-B2D4-90C1E5F7A3B6}");

  // Writes `AValue` into `ANode`: scalars as its text, objects (and the
  // objects behind interfaces) as their "type" attribute, spec and properties.
  virtual void WriteValue(const TValue& AValue, TXmlNode ANode) = 0;
  // Reads `ANode` into `AValue` by the kind of AValue; objects are filled
  // in place.
  virtual void ReadValue(TXmlNode ANode, TValue& AValue) = 0;
  // Makes a fresh value of type `AType` for `ANode`: the zero for scalar
  // types; for classes and interfaces, what the registry makes from the
  // element's "type" attribute. False when no usable object can be made.
  virtual bool TryMakeValue(PTypeInfo AType, TXmlNode ANode, TValue& AValue) = 0;
};

// A handler for values that properties cannot describe.
class IXmlSerializerSpec : public virtual IInterface {
 public:
  static constexpr Rtl::Objects::TGUID IID =
      Rtl::Objects::TGUID::Parse("{2F6A8C1E-3D5B-47A9-8E0F-B1C2D3E4F5A6}");

  // True when this spec handles `AValue`.
  virtual bool IsMatch(const TValue& AValue) = 0;
  virtual void Serialize(const TValue& AValue, TXmlNode ANode, IXmlSerializerProcessor& ASerializer) = 0;
  virtual void Deserialize(const TValue& AValue, TXmlNode ANode, IXmlSerializerProcessor& ASerializer) = 0;
};

// The process-wide list of specs; class-level state only. Specs are
// registered at start-up and only looked up afterwards (no lock).
class QXRTL_API TXmlSpecRegistry {
 public:
  TXmlSpecRegistry() = delete;

  static void EnsureCreated();
  // Appends `spec`; duplicates are not checked.
  static void RegisterSpec(IntfPtr<IXmlSerializerSpec> spec);
  // The first spec, in registration order, that matches `value`; null when none does.
  static IntfPtr<IXmlSerializerSpec> TryGetSpec(const TValue& value);

 private:
  friend void ReleaseSpecs();
  static IntfPtr<Rtl::Collections::IList<IntfPtr<IXmlSerializerSpec>>> FSpecs;
};

// The public face of a serializer for objects of class T.
template <typename T>
class IXmlSerializer : public virtual IInterface {
 public:
  // The element objects are written into and read from; the document
  // element until another is set, and again after each load of the document.
  virtual TXmlNode GetRoot() = 0;
  virtual void SetRoot(TXmlNode ARoot) = 0;
  // The document, shared with the serializer, to load and save.
  virtual TXmlDocument& GetDocument() = 0;
  // Replaces the root's children (its attributes stay) with `AObject`.
  virtual void Serialize(T* AObject) = 0;
  // Fills the existing `AObject` from the root.
  virtual void Deserialize(T* AObject) = 0;
  // Makes a new object from the root's "type" attribute and fills it;
  // null when no object can be made. Raises EInvalidCast when the made
  // object is not a T, freeing it.
  virtual T* Deserialize() = 0;
};

// The serializer's work, shared by every TXMLSerializer<T>.
class QXRTL_API TXmlSerializerBase : public Rtl::Objects::TInterfacedObject, public IXmlSerializerProcessor {
  QX_CLASS(TXmlSerializerBase, TInterfacedObject, "Quorvex.Rtti.XMLSerializer")
  QX_INTERFACES(IXmlSerializerProcessor)
 public:
  // A new document with version "1.0", encoding "UTF-8", indentation and
  // a "Root" document element.
  TXmlSerializerBase();

  void WriteValue(const TValue& AValue, TXmlNode ANode) override;
  void ReadValue(TXmlNode ANode, TValue& AValue) override;
  bool TryMakeValue(PTypeInfo AType, TXmlNode ANode, TValue& AValue) override;

 protected:
  TXmlNode Root();
  void SetRootNode(TXmlNode root);
  TXmlDocument& Document() { return *FDocument; }
  void SerializeObject(TObject* obj);
  void DeserializeObject(TObject* obj);
  TObject* DeserializeNew();

 private:
  // One property of a class as the serializer sees it.
  struct TPropertyPlan {
    const TRttiProperty* Property;
    UnicodeString ElementName;
  };
  using TClassPlan = std::vector<TPropertyPlan>;

  const TClassPlan& PlanOf(TClass cls);
  void WriteObject(TObject* obj, TXmlNode node);
  void ReadObject(TObject* obj, TXmlNode node);
  void ReadProperty(TObject* obj, const TRttiProperty& property, TXmlNode child);

  std::shared_ptr<TXmlDocument> FDocument;
  std::optional<TXmlNode> FRoot;
  uint64_t FRootGeneration = 0;
  std::unordered_map<TClass, TClassPlan> FPlans;
};

// A serializer for objects of class T (T = TObject serves any object).
// Create it with CreateObject<TXMLSerializer<T>>() and hold it through
// IXmlSerializer<T>; one thread at a time.
template <typename T>
class TXMLSerializer : public TXmlSerializerBase, public IXmlSerializer<T> {
  QX_CLASS(TXMLSerializer, TXmlSerializerBase, "Quorvex.Rtti.XMLSerializer")
 public:
  TXmlNode GetRoot() override { return Root(); }
  void SetRoot(TXmlNode ARoot) override { SetRootNode(std::move(ARoot)); }
  TXmlDocument& GetDocument() override { return Document(); }
  void Serialize(T* AObject) override { SerializeObject(AObject); }
  void Deserialize(T* AObject) override { DeserializeObject(AObject); }
  // The object made is freed when it is not a T, before EInvalidCast leaves.
  T* Deserialize() override {
    std::unique_ptr<TObject, TFreeObject> made(DeserializeNew());
    T* result = Rtl::Objects::ObjectCast<T>(made.get());
    made.release();
    return result;
  }

 private:
  struct TFreeObject {
    void operator()(TObject* obj) const { Rtl::Objects::FreeObject(obj); }
  };
};

// A new serializer for objects of class T.
template <typename T = TObject>
IntfPtr<IXmlSerializer<T>> NewXmlSerializer() {
  return Rtl::Objects::CreateObject<TXMLSerializer<T>>();
}

}  // namespace Quorvex::Rtti::XMLSerializer
