// The built-in specs of the XML serializer: string lists as comma text,
// the runtime's item collections and any IList<T> as "Item" children. The
// unit registers them at start-up in that order; the first spec that
// matches a value handles it.
#pragma once

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Units.hpp"
#include "Quorvex.Rtti.XMLSerializer.hpp"

namespace Quorvex::Rtti::XMLSpecs {

using XMLSerializer::IXmlSerializerProcessor;
using XMLSerializer::IXmlSerializerSpec;
using XMLSerializer::TValue;
using XMLSerializer::TXmlNode;

// The unit that registers the three specs below.
extern QXRTL_API Rtl::Units::TUnit XmlSpecsUnit;

// String lists (TStrings and descendants): the element's text is the
// list's comma text; an element without text clears the list.
class QXRTL_API TStringsXmlSpec : public Rtl::Objects::TInterfacedObject, public IXmlSerializerSpec {
  QX_CLASS(TStringsXmlSpec, TInterfacedObject, "Quorvex.Rtti.XMLSpecs")
  QX_INTERFACES(IXmlSerializerSpec)
 public:
  bool IsMatch(const TValue& AValue) override;
  void Serialize(const TValue& AValue, TXmlNode ANode, IXmlSerializerProcessor& ASerializer) override;
  void Deserialize(const TValue& AValue, TXmlNode ANode, IXmlSerializerProcessor& ASerializer) override;
};

// Item collections (TCollection and descendants): one "Item" child per
// item. Reading clears the collection and adds an item for every child,
// whatever its name.
class QXRTL_API TCollectionXmlSpec : public Rtl::Objects::TInterfacedObject, public IXmlSerializerSpec {
  QX_CLASS(TCollectionXmlSpec, TInterfacedObject, "Quorvex.Rtti.XMLSpecs")
  QX_INTERFACES(IXmlSerializerSpec)
 public:
  bool IsMatch(const TValue& AValue) override;
  void Serialize(const TValue& AValue, TXmlNode ANode, IXmlSerializerProcessor& ASerializer) override;
  // Raises EInvalidCast when the value is not an item collection.
  void Deserialize(const TValue& AValue, TXmlNode ANode, IXmlSerializerProcessor& ASerializer) override;
};

// Lists: an object offering IUntypedList, or an interface value whose
// object offers IUntypedCollection. One "Item" child per element; reading
// clears the list and adds the elements that can be made for the children
// (objects need a registered "type"; the others are skipped silently).
class QXRTL_API TSpringCollectionXmlSpec : public Rtl::Objects::TInterfacedObject, public IXmlSerializerSpec {
  QX_CLASS(TSpringCollectionXmlSpec, TInterfacedObject, "Quorvex.Rtti.XMLSpecs")
  QX_INTERFACES(IXmlSerializerSpec)
 public:
  bool IsMatch(const TValue& AValue) override;
  void Serialize(const TValue& AValue, TXmlNode ANode, IXmlSerializerProcessor& ASerializer) override;
  void Deserialize(const TValue& AValue, TXmlNode ANode, IXmlSerializerProcessor& ASerializer) override;
};

}  // namespace Quorvex::Rtti::XMLSpecs
