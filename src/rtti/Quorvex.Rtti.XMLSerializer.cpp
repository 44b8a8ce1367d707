#include "Quorvex.Rtti.XMLSerializer.hpp"

#include "Quorvex.Rtl.Units.hpp"
#include "Quorvex.Rtti.Attributes.hpp"
#include "Quorvex.Rtti.XMLSpecs.hpp"
#include "Quorvex.Types.Registry.hpp"
#include "Quorvex.Utils.Xml.hpp"

namespace Quorvex::Rtti::XMLSerializer {

using Attributes::AttrUtils;
using Attributes::NameAttribute;
using Attributes::SerializationOptionAttribute;
using Attributes::SerializeAttribute;
using Rtl::Strings::UnicodeStringView;
using Rtl::TypInfo::TMemberVisibility;
using Rtl::TypInfo::TTypeKind;
using Rtl::Variants::TVariant;
using Types::Registry::ITypeMapping;
using Types::Registry::TTypeRegistry;
using Utils::Xml::gXml;

// ---------------------------------------------------------------------------
// Spec registry

IntfPtr<Rtl::Collections::IList<IntfPtr<IXmlSerializerSpec>>> TXmlSpecRegistry::FSpecs;

void ReleaseSpecs() { TXmlSpecRegistry::FSpecs = nullptr; }

// Depending on the specs unit links it in wherever the serializer is used,
// so the built-in specs are always registered.
QX_UNIT(XmlSerializerUnit, u"Quorvex.Rtti.XMLSerializer", nullptr, &ReleaseSpecs, &XMLSpecs::XmlSpecsUnit);

void TXmlSpecRegistry::EnsureCreated() {
  if (!FSpecs) FSpecs = Rtl::Collections::NewList<IntfPtr<IXmlSerializerSpec>>();
}

void TXmlSpecRegistry::RegisterSpec(IntfPtr<IXmlSerializerSpec> spec) {
  EnsureCreated();
  FSpecs->Add(spec);
}

IntfPtr<IXmlSerializerSpec> TXmlSpecRegistry::TryGetSpec(const TValue& value) {
  EnsureCreated();
  for (int i = 0; i < FSpecs->Count(); ++i) {
    IntfPtr<IXmlSerializerSpec> spec = FSpecs->Item(i);
    if (spec->IsMatch(value)) return spec;
  }
  return nullptr;
}

// ---------------------------------------------------------------------------
// Rules shared by writing and reading

namespace {

constexpr UnicodeStringView kTypeAttribute = u"type";
constexpr UnicodeStringView kDateTimeTypeName = u"TDateTime";

bool IsWrittenAsText(TTypeKind kind) {
  switch (kind) {
    case TTypeKind::tkInteger:
    case TTypeKind::tkChar:
    case TTypeKind::tkEnumeration:
    case TTypeKind::tkFloat:
    case TTypeKind::tkString:
    case TTypeKind::tkSet:
    case TTypeKind::tkWChar:
    case TTypeKind::tkLString:
    case TTypeKind::tkWString:
    case TTypeKind::tkVariant:
    case TTypeKind::tkInt64:
    case TTypeKind::tkUString: return true;
    default: return false;
  }
}

bool IsObjectKind(TTypeKind kind) { return kind == TTypeKind::tkClass || kind == TTypeKind::tkInterface; }

// Published properties take part unless the class asks for explicit
// choice; a SerializeAttribute on the property decides over both.
bool TakesPart(TClass cls, const TRttiProperty& property) {
  bool result = property.Visibility() == TMemberVisibility::mvPublished;
  if (const auto* option = AttrUtils::GetAttribute<SerializationOptionAttribute>(cls->Attributes());
      option != nullptr && option->Option() == SerializationOptionAttribute::soExplicit)
    result = false;
  if (const auto* serialize = AttrUtils::GetAttribute<SerializeAttribute>(property.Attributes()))
    result = serialize->Enabled();
  return result;
}

UnicodeString ElementName(const TRttiProperty& property) {
  if (const auto* name = AttrUtils::GetAttribute<NameAttribute>(property.Attributes())) return name->Name();
  return property.Name();
}

UnicodeString ScalarToText(const TValue& value) {
  if (value.TypeName() == kDateTimeTypeName) return gXml::DateTimeToXMLTime(value.AsExtended(), true);
  return value.ToString();
}

// An element's text as a variant: null when the element has no text at all.
TVariant TextVariant(std::optional<UnicodeString> text) {
  return text ? TVariant(std::move(*text)) : TVariant::Null();
}

TValue TextToScalar(const TXmlNode& node, PTypeInfo type) {
  std::optional<UnicodeString> text = node.Value();
  if (type->Name == kDateTimeTypeName)
    return TValue::FromFloat(type, gXml::XMLTimeToDateTime(text.value_or(u""), false));
  switch (type->Kind) {
    case TTypeKind::tkInteger:
    case TTypeKind::tkInt64: return TValue::FromOrdinal(type, TextVariant(std::move(text)).AsInt64(type->Name));
    case TTypeKind::tkFloat: return TValue::FromFloat(type, TextVariant(std::move(text)).AsDouble(type->Name));
    case TTypeKind::tkString:
    case TTypeKind::tkLString:
    case TTypeKind::tkWString:
    case TTypeKind::tkUString: return TValue::FromString(type, std::move(text).value_or(u""));
    case TTypeKind::tkVariant: return TValue::FromVariant(TextVariant(std::move(text)));
    default: return TValue();  // characters are not read back
  }
}

}  // namespace

// ---------------------------------------------------------------------------
// Serializer

TXmlSerializerBase::TXmlSerializerBase() : FDocument(std::make_shared<TXmlDocument>()) {
  FDocument->SetVersion(u"1.0");
  FDocument->SetEncoding(u"UTF-8");
  FDocument->CreateDocumentElement(u"Root");
  FDocument->SetIndent(true);
}

TXmlNode TXmlSerializerBase::Root() {
  // A load replaces the document's tree: the root then follows the new
  // document element instead of reading what was there before.
  if (!FRoot || FRootGeneration != FDocument->Generation()) {
    FRoot = FDocument->DocumentElement();
    FRootGeneration = FDocument->Generation();
    if (!FRoot) FRoot = FDocument->CreateDocumentElement(u"Root");
  }
  return *FRoot;
}

void TXmlSerializerBase::SetRootNode(TXmlNode root) {
  FRoot = std::move(root);
  FRootGeneration = FDocument->Generation();
}

const TXmlSerializerBase::TClassPlan& TXmlSerializerBase::PlanOf(TClass cls) {
  auto [entry, added] = FPlans.try_emplace(cls);
  if (added)
    for (const TRttiProperty* property : cls->Properties())
      if (TakesPart(cls, *property)) entry->second.push_back({property, ElementName(*property)});
  return entry->second;
}

void TXmlSerializerBase::SerializeObject(TObject* obj) {
  TXmlNode root = Root();
  root.ClearChildren();
  WriteValue(TValue::FromObject(obj), root);
}

void TXmlSerializerBase::DeserializeObject(TObject* obj) {
  TValue value = TValue::FromObject(obj);
  ReadValue(Root(), value);
}

TObject* TXmlSerializerBase::DeserializeNew() {
  const TXmlNode root = Root();
  TValue value;
  if (!TryMakeValue(Rtl::TypInfo::TypeInfo<TObject*>(), root, value)) return nullptr;
  ReadValue(root, value);
  return value.AsObject();
}

void TXmlSerializerBase::WriteValue(const TValue& AValue, TXmlNode ANode) {
  const TTypeKind kind = AValue.Kind();
  if (IsWrittenAsText(kind))
    ANode.SetValue(ScalarToText(AValue));
  else if (IsObjectKind(kind))
    WriteObject(AValue.AsObject(), ANode);
}

void TXmlSerializerBase::WriteObject(TObject* obj, TXmlNode node) {
  if (obj == nullptr) return;
  IntfPtr<ITypeMapping> mapping;
  if (TTypeRegistry::TryGetType(obj->QualifiedClassName(), mapping))
    node.SetAttribute(kTypeAttribute, mapping->GetNameOrAlias());
  const TValue value = TValue::FromObject(obj);
  if (IntfPtr<IXmlSerializerSpec> spec = TXmlSpecRegistry::TryGetSpec(value)) spec->Serialize(value, node, *this);
  for (const TPropertyPlan& plan : PlanOf(obj->ClassType()))
    WriteValue(plan.Property->GetValue(obj), node.AppendChild(plan.ElementName));
}

bool TXmlSerializerBase::TryMakeValue(PTypeInfo AType, TXmlNode ANode, TValue& AValue) {
  if (!IsObjectKind(AType->Kind)) {
    AValue = TValue::Default(AType);
    return true;
  }
  IntfPtr<ITypeMapping> mapping;
  if (!TTypeRegistry::TryGetType(ANode.Attribute(kTypeAttribute), mapping)) return false;
  AValue = mapping->Make();
  if (AType->Kind == TTypeKind::tkInterface && AValue.Kind() == TTypeKind::tkClass) {
    IInterface* intf = AType->FindInterface(AValue.AsObject());
    if (intf == nullptr) {
      // Made for this element and of no use to it: nobody else holds it.
      Rtl::Objects::FreeObject(AValue.AsObject());
      AValue = TValue();
      return false;
    }
    AValue = TValue::FromInterface(AType, intf);
  }
  return true;
}

void TXmlSerializerBase::ReadValue(TXmlNode ANode, TValue& AValue) {
  const TTypeKind kind = AValue.Kind();
  if (kind == TTypeKind::tkEnumeration) {
    const PTypeInfo type = AValue.TypeInfo();
    AValue = TValue::FromOrdinal(type, type->EnumNames->OrdinalOf(ANode.Value().value_or(u"")));
  } else if (IsObjectKind(kind)) {
    ReadObject(AValue.AsObject(), ANode);
  } else if (IsWrittenAsText(kind) && kind != TTypeKind::tkSet) {
    AValue = TextToScalar(ANode, AValue.TypeInfo());
  } else {
    AValue = TValue();  // sets, records, arrays and the like are not read
  }
}

void TXmlSerializerBase::ReadObject(TObject* obj, TXmlNode node) {
  if (obj == nullptr) return;
  const TValue value = TValue::FromObject(obj);
  // An empty element still reaches a container's spec, so that <Names/>
  // empties the list instead of leaving what the object held before.
  if (IntfPtr<IXmlSerializerSpec> spec = TXmlSpecRegistry::TryGetSpec(value)) spec->Deserialize(value, node, *this);
  if (!node.HasChildren()) return;
  for (const TPropertyPlan& plan : PlanOf(obj->ClassType()))
    if (const std::optional<TXmlNode> child = node.FirstChild(plan.ElementName))
      ReadProperty(obj, *plan.Property, *child);
}

void TXmlSerializerBase::ReadProperty(TObject* obj, const TRttiProperty& property, TXmlNode child) {
  const PTypeInfo type = property.PropertyType();
  TValue value;
  if (IsObjectKind(type->Kind)) {
    if (property.IsWritable() && TryMakeValue(type, child, value)) {
      ReadValue(child, value);
      property.SetValue(obj, value);
    } else {
      value = property.GetValue(obj);
      ReadValue(child, value);
    }
  } else if (property.IsWritable()) {
    TryMakeValue(type, child, value);
    ReadValue(child, value);
    property.SetValue(obj, value);
  }
}

}  // namespace Quorvex::Rtti::XMLSerializer
