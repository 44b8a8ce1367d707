#include "Quorvex.Rtti.XMLSpecs.hpp"

#include "Quorvex.Rtl.Classes.hpp"

namespace Quorvex::Rtti::XMLSpecs {

using Rtl::Classes::TCollection;
using Rtl::Classes::TCollectionItem;
using Rtl::Classes::TStrings;
using Rtl::Collections::IUntypedCollection;
using Rtl::Collections::IUntypedList;
using Rtl::Objects::CreateObject;
using Rtl::Objects::IntfPtr;
using Rtl::Objects::ObjectCast;
using Rtl::Objects::TObject;
using Rtl::Strings::UnicodeString;
using Rtl::Strings::UnicodeStringView;
using Rtl::TypInfo::TTypeKind;
using XMLSerializer::TXmlSpecRegistry;

namespace {

constexpr UnicodeStringView kItemElement = u"Item";

void RegisterBuiltInSpecs() {
  TXmlSpecRegistry::RegisterSpec(CreateObject<TStringsXmlSpec>());
  TXmlSpecRegistry::RegisterSpec(CreateObject<TCollectionXmlSpec>());
  TXmlSpecRegistry::RegisterSpec(CreateObject<TSpringCollectionXmlSpec>());
}

bool HoldsObjectOf(const TValue& value, Rtl::Objects::TClass cls) {
  return value.Kind() == TTypeKind::tkClass && value.AsObject() != nullptr && value.AsObject()->InheritsFrom(cls);
}

// The collection interface of the object a list value stands for.
template <typename I>
IntfPtr<I> CollectionOf(const TValue& value) {
  IntfPtr<I> result;
  Rtl::Objects::Supports<I>(value.AsObject(), result);
  return result;
}

}  // namespace

QX_UNIT(XmlSpecsUnit, u"Quorvex.Rtti.XMLSpecs", &RegisterBuiltInSpecs, nullptr);

// ---------------------------------------------------------------------------
// String lists

bool TStringsXmlSpec::IsMatch(const TValue& AValue) { return HoldsObjectOf(AValue, TStrings::StaticClass()); }

void TStringsXmlSpec::Serialize(const TValue& AValue, TXmlNode ANode, IXmlSerializerProcessor&) {
  // An empty list leaves the element without text.
  const UnicodeString text = ObjectCast<TStrings>(AValue.AsObject())->GetCommaText();
  if (!text.empty()) ANode.SetValue(text);
}

void TStringsXmlSpec::Deserialize(const TValue& AValue, TXmlNode ANode, IXmlSerializerProcessor&) {
  auto* strings = ObjectCast<TStrings>(AValue.AsObject());
  if (const std::optional<UnicodeString> text = ANode.Value())
    strings->SetCommaText(*text);
  else
    strings->Clear();
}

// ---------------------------------------------------------------------------
// Item collections

bool TCollectionXmlSpec::IsMatch(const TValue& AValue) { return HoldsObjectOf(AValue, TCollection::StaticClass()); }

void TCollectionXmlSpec::Serialize(const TValue& AValue, TXmlNode ANode, IXmlSerializerProcessor& ASerializer) {
  auto* collection = ObjectCast<TCollection>(AValue.AsObject());
  for (int i = 0; i < collection->Count(); ++i)
    ASerializer.WriteValue(TValue::FromObject(collection->Items(i)), ANode.AppendChild(kItemElement));
}

void TCollectionXmlSpec::Deserialize(const TValue& AValue, TXmlNode ANode, IXmlSerializerProcessor& ASerializer) {
  auto* collection = ObjectCast<TCollection>(AValue.AsObject());
  collection->Clear();
  for (const TXmlNode& child : ANode.Children()) {
    TValue item = TValue::FromObject(collection->Add());
    ASerializer.ReadValue(child, item);
  }
}

// ---------------------------------------------------------------------------
// Lists

bool TSpringCollectionXmlSpec::IsMatch(const TValue& AValue) {
  if (AValue.Kind() == TTypeKind::tkInterface) return Rtl::Objects::Supports<IUntypedCollection>(AValue.AsObject());
  if (AValue.Kind() == TTypeKind::tkClass) return Rtl::Objects::Supports<IUntypedList>(AValue.AsObject());
  return false;
}

void TSpringCollectionXmlSpec::Serialize(const TValue& AValue, TXmlNode ANode, IXmlSerializerProcessor& ASerializer) {
  const IntfPtr<IUntypedCollection> collection = CollectionOf<IUntypedCollection>(AValue);
  for (auto values = collection->GetValues(); values->MoveNext();)
    ASerializer.WriteValue(values->Current(), ANode.AppendChild(kItemElement));
}

void TSpringCollectionXmlSpec::Deserialize(const TValue& AValue, TXmlNode ANode, IXmlSerializerProcessor& ASerializer) {
  const IntfPtr<IUntypedList> list = CollectionOf<IUntypedList>(AValue);
  list->Clear();
  for (const TXmlNode& child : ANode.Children()) {
    TValue element;
    if (!ASerializer.TryMakeValue(list->ElementType(), child, element)) continue;
    ASerializer.ReadValue(child, element);
    list->AddValue(element);
  }
}

}  // namespace Quorvex::Rtti::XMLSpecs
