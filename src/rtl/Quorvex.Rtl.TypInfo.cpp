#include "Quorvex.Rtl.TypInfo.hpp"

namespace Quorvex::Rtl::TypInfo {

// ---------------------------------------------------------------------------
// Enumeration names

TEnumNames::TEnumNames(UnicodeStringView list) {
  size_t start = 0;
  while (start <= list.size()) {
    const size_t comma = std::min(list.find(u',', start), list.size());
    const UnicodeString name = Strings::Trim(list.substr(start, comma - start));
    if (!name.empty()) FNames.push_back(name);
    start = comma + 1;
  }
}

TEnumNames::TEnumNames(std::initializer_list<UnicodeStringView> names) : FNames(names.begin(), names.end()) {}

UnicodeString TEnumNames::NameOf(int64_t ordinal) const {
  if (ordinal < 0 || ordinal >= Count()) return Strings::IntToStr(ordinal);
  return FNames[static_cast<size_t>(ordinal)];
}

int64_t TEnumNames::OrdinalOf(UnicodeStringView name) const {
  for (size_t i = 0; i < FNames.size(); ++i)
    if (Strings::SameText(FNames[i], name)) return static_cast<int64_t>(i);
  return -1;
}

// ---------------------------------------------------------------------------
// Type descriptions

namespace Detail {

TTypeInfo MakeNamedType(TTypeKind kind, UnicodeStringView name) {
  TTypeInfo info;
  info.Kind = kind;
  info.Name = UnicodeString(name);
  return info;
}

TTypeInfo MakeOrdinalType(TTypeKind kind, UnicodeStringView name, int64_t minValue, int64_t maxValue) {
  TTypeInfo info = MakeNamedType(kind, name);
  info.MinValue = minValue;
  info.MaxValue = maxValue;
  return info;
}

TTypeInfo MakeEnumType(UnicodeStringView name, const TEnumNames& names) {
  TTypeInfo info = MakeOrdinalType(TTypeKind::tkEnumeration, name, 0, names.Count() - 1);
  info.EnumNames = &names;
  return info;
}

}  // namespace Detail

PTypeInfo TTypeTraits<bool>::Info() {
  static const TEnumNames names{u"False", u"True"};
  static const TTypeInfo info = Detail::MakeEnumType(u"Boolean", names);
  return &info;
}

PTypeInfo TTypeTraits<TDateTime>::Info() {
  static const TTypeInfo info = [] {
    TTypeInfo result = Detail::MakeNamedType(TTypeKind::tkFloat, u"TDateTime");
    result.FloatDigits = 15;
    return result;
  }();
  return &info;
}

PTypeInfo TTypeTraits<UnicodeString>::Info() {
  static const TTypeInfo info = Detail::MakeNamedType(TTypeKind::tkUString, u"string");
  return &info;
}

PTypeInfo TTypeTraits<std::string>::Info() {
  static const TTypeInfo info = Detail::MakeNamedType(TTypeKind::tkLString, u"AnsiString");
  return &info;
}

PTypeInfo TTypeTraits<TVariant>::Info() {
  static const TTypeInfo info = Detail::MakeNamedType(TTypeKind::tkVariant, u"Variant");
  return &info;
}

PTypeInfo TTypeTraits<TClass>::Info() {
  static const TTypeInfo info = Detail::MakeNamedType(TTypeKind::tkClassRef, u"TClass");
  return &info;
}

// ---------------------------------------------------------------------------
// TValue

TValue TValue::Default(PTypeInfo type) {
  if (type == nullptr) return TValue();
  switch (type->Kind) {
    case TTypeKind::tkInteger:
    case TTypeKind::tkChar:
    case TTypeKind::tkEnumeration:
    case TTypeKind::tkSet:
    case TTypeKind::tkWChar:
    case TTypeKind::tkInt64: return TValue(type, int64_t{0});
    case TTypeKind::tkFloat: return TValue(type, 0.0L);
    case TTypeKind::tkString:
    case TTypeKind::tkLString:
    case TTypeKind::tkWString:
    case TTypeKind::tkUString: return TValue(type, UnicodeString());
    case TTypeKind::tkClass: return TValue(type, static_cast<TObject*>(nullptr));
    case TTypeKind::tkInterface: return TValue(type, IntfPtr<IInterface>());
    case TTypeKind::tkVariant: return TValue(type, TVariant());
    case TTypeKind::tkClassRef: return TValue(type, static_cast<TClass>(nullptr));
    default: return TValue(type, std::monostate());
  }
}

TValue TValue::FromOrdinal(PTypeInfo type, int64_t ordinal) { return TValue(type, ordinal); }
TValue TValue::FromFloat(PTypeInfo type, long double value) { return TValue(type, value); }
TValue TValue::FromString(PTypeInfo type, UnicodeString value) { return TValue(type, std::move(value)); }
TValue TValue::FromVariant(TVariant value) { return TValue(TTypeTraits<TVariant>::Info(), std::move(value)); }
TValue TValue::FromClass(TClass value) { return TValue(TTypeTraits<TClass>::Info(), value); }

TValue TValue::FromObject(TObject* obj, PTypeInfo type) {
  if (type == nullptr) {
    static const TTypeInfo* const objectType = TTypeTraits<TObject*>::Info();
    type = objectType;
  }
  return TValue(type, obj);
}

TValue TValue::FromInterface(PTypeInfo type, IntfPtr<IInterface> intf) { return TValue(type, std::move(intf)); }

template <typename T>
T TValue::Get() const {
  if (IsEmpty()) return T{};
  if (const T* data = std::get_if<T>(&FData)) return *data;
  Exceptions::RaiseInvalidCast();
}

int64_t TValue::AsOrdinal() const { return Get<int64_t>(); }
long double TValue::AsExtended() const { return Get<long double>(); }
UnicodeString TValue::AsString() const { return Get<UnicodeString>(); }
TVariant TValue::AsVariant() const { return Get<TVariant>(); }
TClass TValue::AsClass() const { return Get<TClass>(); }
IntfPtr<IInterface> TValue::AsInterface() const { return Get<IntfPtr<IInterface>>(); }

TObject* TValue::AsObject() const {
  if (Kind() == TTypeKind::tkInterface) return Objects::ObjectOf(AsInterface().Get());
  return Get<TObject*>();
}

UnicodeString TValue::SetToString() const {
  const auto bits = static_cast<uint64_t>(AsOrdinal());
  UnicodeString text = u"[";
  for (int ordinal = 0; ordinal < 64; ++ordinal) {
    if ((bits & (uint64_t{1} << ordinal)) == 0) continue;
    if (text.size() > 1) text += u',';
    text += FType->ElementType->EnumNames->NameOf(ordinal);
  }
  return text + u"]";
}

UnicodeString TValue::ToString() const {
  switch (Kind()) {
    case TTypeKind::tkUnknown: return u"";
    case TTypeKind::tkInteger:
    case TTypeKind::tkInt64: return Strings::IntToStr(AsOrdinal());
    case TTypeKind::tkChar:
    case TTypeKind::tkWChar: return UnicodeString(1, static_cast<char16_t>(AsOrdinal()));
    case TTypeKind::tkEnumeration: return FType->EnumNames->NameOf(AsOrdinal());
    case TTypeKind::tkSet: return SetToString();
    case TTypeKind::tkFloat: return Strings::FloatToStr(AsExtended(), FType->FloatDigits);
    case TTypeKind::tkString:
    case TTypeKind::tkLString:
    case TTypeKind::tkWString:
    case TTypeKind::tkUString: return AsString();
    case TTypeKind::tkVariant: return AsVariant().IsNull() ? u"Null" : AsVariant().AsString();
    case TTypeKind::tkClass: return AsObject() ? AsObject()->ToString() : u"(nil)";
    case TTypeKind::tkClassRef: return AsClass() ? AsClass()->ClassName() : u"(nil)";
    default: return u"(" + FType->Name + u")";
  }
}

// ---------------------------------------------------------------------------
// Properties

TRttiProperty::TRttiProperty(UnicodeStringView name, TMemberVisibility visibility, PTypeInfo type, bool writable,
                             std::vector<std::unique_ptr<TCustomAttribute>> attributes)
    : FName(name), FVisibility(visibility), FType(type), FWritable(writable) {
  for (auto& attribute : attributes) FAttributes.push_back(attribute.release());
}

TRttiProperty::~TRttiProperty() {
  for (TCustomAttribute* attribute : FAttributes) delete attribute;
}

void TRttiProperty::RaiseReadOnly() const { throw EPropertyError(u"Property " + FName + u" is read-only"); }

}  // namespace Quorvex::Rtl::TypInfo
