// Type information: what a program can ask at run time about the types of
// its values and the properties of its classes. The compiler works out each
// property's type from its C++ type; a type this facility cannot describe is
// a compile error rather than a silently skipped property.
//
//   class TPoint3 : public TPersistent {
//     QX_CLASS(TPoint3, TPersistent, "MyApp.Shapes")
//     QX_CLASS_ATTRIBUTES(SerializationOptionAttribute(SerializationOptionAttribute::soExplicit))
//     int FX = 0;
//    public:
//     int GetX() const { return FX; }
//     void SetX(int x) { FX = x; }
//     QX_PROPERTY(published, X, GetX, SetX, NameAttribute(u"x"));
//     QX_PROPERTY(public, Y, FY, FY);       // a field read and written directly
//     QX_READONLY_PROPERTY(public, Z, GetZ);  // no setter: read-only
//   };
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "Quorvex.Rtl.DateTime.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Objects.hpp"
#include "Quorvex.Rtl.Strings.hpp"
#include "Quorvex.Rtl.Variants.hpp"

namespace Quorvex::Rtl::TypInfo {

using DateTime::TDateTime;
using Objects::IInterface;
using Objects::IntfPtr;
using Objects::TClass;
using Objects::TObject;
using Strings::UnicodeString;
using Strings::UnicodeStringView;
using Variants::TVariant;

// The kinds of types, with the ordinals documents and tools rely on.
enum class TTypeKind : uint8_t {
  tkUnknown = 0,
  tkInteger = 1,
  tkChar = 2,
  tkEnumeration = 3,
  tkFloat = 4,
  tkString = 5,
  tkSet = 6,
  tkClass = 7,
  tkMethod = 8,
  tkWChar = 9,
  tkLString = 10,
  tkWString = 11,
  tkVariant = 12,
  tkArray = 13,
  tkRecord = 14,
  tkInterface = 15,
  tkInt64 = 16,
  tkDynArray = 17,
  tkUString = 18,
  tkClassRef = 19,
  tkPointer = 20,
  tkProcedure = 21,
};

// Reading or writing a property the way its declaration does not allow.
QX_DECLARE_EXCEPTION(EPropertyError, Exceptions::Exception, "Quorvex.Rtl.TypInfo");

// The names of an enumeration's values, in ordinal order.
class QXRTL_API TEnumNames {
 public:
  // `list` holds the enumerators as written in source: "soExplicit, soPublished".
  explicit TEnumNames(UnicodeStringView list);
  TEnumNames(std::initializer_list<UnicodeStringView> names);

  int Count() const { return static_cast<int>(FNames.size()); }
  // The name of `ordinal`; its decimal text when no value has that ordinal.
  UnicodeString NameOf(int64_t ordinal) const;
  // The ordinal of `name`, ignoring the case of ASCII letters as
  // identifiers do; -1 when no value has that name.
  int64_t OrdinalOf(UnicodeStringView name) const;

 private:
  std::vector<UnicodeString> FNames;
};

// The description of one type; a type handle is a pointer to it.
struct TTypeInfo {
  TTypeKind Kind = TTypeKind::tkUnknown;
  UnicodeString Name;
  int64_t MinValue = 0;                   // integers, characters, enumerations
  int64_t MaxValue = 0;
  int FloatDigits = 0;                    // floats: significant digits of the text form
  const TEnumNames* EnumNames = nullptr;  // enumerations
  const TTypeInfo* ElementType = nullptr; // sets: the enumeration of the members
  TClass ClassType = nullptr;             // classes
  // Interfaces: this interface of `obj` as an IInterface, or null when the
  // object lacks it. Takes no reference.
  IInterface* (*FindInterface)(TObject* obj) = nullptr;
};
using PTypeInfo = const TTypeInfo*;

// A set of enumeration values with ordinals 0 to 63.
template <typename E>
class TSet {
 public:
  constexpr TSet() = default;
  constexpr TSet(std::initializer_list<E> members) {
    for (E member : members) Include(member);
  }
  static constexpr TSet FromBits(uint64_t bits) {
    TSet result;
    result.FBits = bits;
    return result;
  }
  constexpr uint64_t Bits() const { return FBits; }
  constexpr bool Contains(E member) const { return (FBits & Bit(member)) != 0; }
  constexpr void Include(E member) { FBits |= Bit(member); }
  constexpr void Exclude(E member) { FBits &= ~Bit(member); }
  friend constexpr bool operator==(TSet, TSet) = default;

 private:
  static constexpr uint64_t Bit(E member) {
    const auto ordinal = static_cast<int64_t>(member);
    if (ordinal < 0 || ordinal > 63) Exceptions::RaiseRangeError();
    return uint64_t{1} << ordinal;
  }
  uint64_t FBits = 0;
};

// A value together with its type, or empty. Objects are held by pointer,
// interfaces by a counted reference.
class QXRTL_API TValue {
 public:
  // The empty value: no type, no data.
  TValue() = default;

  // The zero of `type`: 0, "", no object, the empty set... A null type
  // gives the empty value.
  static TValue Default(PTypeInfo type);
  static TValue FromOrdinal(PTypeInfo type, int64_t ordinal);
  static TValue FromFloat(PTypeInfo type, long double value);
  static TValue FromString(PTypeInfo type, UnicodeString value);
  static TValue FromVariant(TVariant value);
  static TValue FromClass(TClass value);
  // An object with `type` as its type, or its own class's when null.
  static TValue FromObject(TObject* obj, PTypeInfo type = nullptr);
  static TValue FromInterface(PTypeInfo type, IntfPtr<IInterface> intf);
  // The value of a C++ variable of a described type.
  template <typename T>
  static TValue From(const T& value);

  bool IsEmpty() const { return FType == nullptr; }
  PTypeInfo TypeInfo() const { return FType; }
  TTypeKind Kind() const { return FType ? FType->Kind : TTypeKind::tkUnknown; }
  UnicodeString TypeName() const { return FType ? FType->Name : UnicodeString(); }

  // The data read as the kind asked for. The empty value reads as zero;
  // data of another kind raises EInvalidCast.
  int64_t AsOrdinal() const;  // integers, characters, enumerations, sets
  long double AsExtended() const;
  UnicodeString AsString() const;
  TVariant AsVariant() const;
  TClass AsClass() const;
  // The object; for an interface value, the object implementing it.
  TObject* AsObject() const;
  IntfPtr<IInterface> AsInterface() const;
  // The value as a C++ variable of type T (ranges checked: ERangeError).
  template <typename T>
  T AsType() const;

  // The text form: integers in decimal, floats in the locale's format,
  // enumerations by name, sets as "[a,b]", strings unchanged, variants as
  // their text ("Null" for null); "" for the empty value.
  UnicodeString ToString() const;

 private:
  using TData = std::variant<std::monostate, int64_t, long double, UnicodeString, TObject*, IntfPtr<IInterface>,
                             TVariant, TClass>;
  TValue(PTypeInfo type, TData data) : FType(type), FData(std::move(data)) {}
  template <typename T>
  T Get() const;
  UnicodeString SetToString() const;

  PTypeInfo FType = nullptr;
  TData FData;
};

// The root of all markers (attributes) attached to classes and properties.
class QXRTL_API TCustomAttribute : public TObject {
  QX_CLASS(TCustomAttribute, TObject, "Quorvex.Rtl.TypInfo")
};

// How visible a property is; published is the most visible.
enum class TMemberVisibility : uint8_t { mvPrivate, mvProtected, mvPublic, mvPublished };

// One property of a class: name, visibility, type, markers and access to
// its value on an object of that class.
class QXRTL_API TRttiProperty {
 public:
  virtual ~TRttiProperty();
  TRttiProperty(const TRttiProperty&) = delete;
  TRttiProperty& operator=(const TRttiProperty&) = delete;

  const UnicodeString& Name() const { return FName; }
  TMemberVisibility Visibility() const { return FVisibility; }
  PTypeInfo PropertyType() const { return FType; }
  bool IsWritable() const { return FWritable; }
  // The markers declared on the property, in declaration order.
  const std::vector<TCustomAttribute*>& Attributes() const { return FAttributes; }

  // The property's value on `instance`, which must be an object of the
  // class that declares the property (or of a descendant).
  virtual TValue GetValue(TObject* instance) const = 0;
  // Stores `value` converted to the property's type; the empty value stores
  // the type's zero. Raises EPropertyError "Property %s is read-only" when
  // there is no setter, EInvalidCast or ERangeError when the value does not fit.
  virtual void SetValue(TObject* instance, const TValue& value) const = 0;

 protected:
  TRttiProperty(UnicodeStringView name, TMemberVisibility visibility, PTypeInfo type, bool writable,
                std::vector<std::unique_ptr<TCustomAttribute>> attributes);
  [[noreturn]] void RaiseReadOnly() const;

 private:
  UnicodeString FName;
  TMemberVisibility FVisibility;
  PTypeInfo FType;
  bool FWritable;
  std::vector<TCustomAttribute*> FAttributes;  // owned
};

// The type information of T. Enumerations need QX_ENUM, records QX_RECORD;
// any other type without a description does not compile.
template <typename T>
PTypeInfo TypeInfo();

namespace Detail {

template <typename T>
inline constexpr bool kAlwaysFalse = false;

// An ordinal stored in a T; raises ERangeError when it does not fit.
template <typename T>
T NarrowOrdinal(int64_t ordinal) {
  if (!std::in_range<T>(ordinal)) Exceptions::RaiseRangeError();
  return static_cast<T>(ordinal);
}

QXRTL_API TTypeInfo MakeOrdinalType(TTypeKind kind, UnicodeStringView name, int64_t minValue, int64_t maxValue);
QXRTL_API TTypeInfo MakeNamedType(TTypeKind kind, UnicodeStringView name);
QXRTL_API TTypeInfo MakeEnumType(UnicodeStringView name, const TEnumNames& names);

// The one description of a type that is always the same: made on first use.
template <typename T, typename Make>
PTypeInfo DescribeOnce(Make make) {
  static const TTypeInfo info = make();
  return &info;
}

// Types that take no part in text: their values travel as their type alone
// and read back as the type's zero.
template <typename T>
struct TOpaqueTraits {
  static TValue ToValue(const T&) { return TValue::Default(TypeInfo<T>()); }
  static T FromValue(const TValue&) { return T{}; }
};

template <typename T>
concept TInteger = std::is_integral_v<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, char> &&
                   !std::is_same_v<T, char16_t> && !std::is_same_v<T, char8_t> && !std::is_same_v<T, char32_t> &&
                   !std::is_same_v<T, wchar_t> && (sizeof(T) <= 4 || std::is_signed_v<T>);

template <typename T>
constexpr const char16_t* IntegerName() {
  if constexpr (sizeof(T) == 8) return u"Int64";
  else if constexpr (sizeof(T) == 4) return std::is_signed_v<T> ? u"Integer" : u"Cardinal";
  else if constexpr (sizeof(T) == 2) return std::is_signed_v<T> ? u"SmallInt" : u"Word";
  else return std::is_signed_v<T> ? u"ShortInt" : u"Byte";
}

template <typename T>
concept TDescribedEnum = std::is_enum_v<T> && requires(T* tag) { QxEnumNames(tag); };
template <typename T>
concept TDescribedRecord = std::is_class_v<T> && requires(T* tag) { QxRecordName(tag); };
template <typename T>
concept TObjectClass = std::is_base_of_v<TObject, T>;
template <typename I>
concept TIdentifiedInterface = requires { I::IID; };

// Interface I of `obj`, or nullptr; takes no reference. Interfaces without
// an identifier (generic ones) are found through the C++ type system.
template <typename I>
I* InterfaceOf(TObject* obj) {
  if (obj == nullptr) return nullptr;
  if constexpr (TIdentifiedInterface<I>)
    return static_cast<I*>(obj->FindInterface(I::IID));
  else
    return dynamic_cast<I*>(obj);
}

template <typename I>
IInterface* FindInterfaceOf(TObject* obj) {
  return InterfaceOf<I>(obj);
}

template <typename I>
UnicodeString InterfaceName() {
  if constexpr (requires { I::InterfaceName; })
    return UnicodeString(I::InterfaceName);
  else
    return u"IInterface";
}

}  // namespace Detail

// How a C++ type maps to type information and to TValue.
template <typename T, typename Enable = void>
struct TTypeTraits {
  static_assert(Detail::kAlwaysFalse<T>,
                "no type information for this type: declare enumerations with QX_ENUM and records with QX_RECORD");
};

template <Detail::TInteger T>
struct TTypeTraits<T> {
  static PTypeInfo Info() {
    return Detail::DescribeOnce<T>([] {
      return Detail::MakeOrdinalType(sizeof(T) == 8 ? TTypeKind::tkInt64 : TTypeKind::tkInteger,
                                     Detail::IntegerName<T>(), std::numeric_limits<T>::min(),
                                     std::numeric_limits<T>::max());
    });
  }
  static TValue ToValue(T value) { return TValue::FromOrdinal(Info(), value); }
  static T FromValue(const TValue& value) { return Detail::NarrowOrdinal<T>(value.AsOrdinal()); }
};

template <typename T>
requires(std::is_same_v<T, char> || std::is_same_v<T, char16_t>) struct TTypeTraits<T> {
  static PTypeInfo Info() {
    return Detail::DescribeOnce<T>([] {
      return std::is_same_v<T, char> ? Detail::MakeOrdinalType(TTypeKind::tkChar, u"AnsiChar", 0, 255)
                                     : Detail::MakeOrdinalType(TTypeKind::tkWChar, u"WideChar", 0, 65535);
    });
  }
  static TValue ToValue(T value) {
    return TValue::FromOrdinal(Info(), static_cast<std::make_unsigned_t<T>>(value));
  }
  static T FromValue(const TValue& value) {
    return static_cast<T>(Detail::NarrowOrdinal<std::make_unsigned_t<T>>(value.AsOrdinal()));
  }
};

template <>
struct QXRTL_API TTypeTraits<bool> {
  static PTypeInfo Info();
  static TValue ToValue(bool value) { return TValue::FromOrdinal(Info(), value ? 1 : 0); }
  // Any ordinal but 0 reads as true, as a Boolean byte holding it would.
  static bool FromValue(const TValue& value) { return value.AsOrdinal() != 0; }
};

template <Detail::TDescribedEnum E>
struct TTypeTraits<E> {
  static PTypeInfo Info() {
    return Detail::DescribeOnce<E>([] {
      const auto& [name, names] = QxEnumNames(static_cast<E*>(nullptr));
      return Detail::MakeEnumType(name, names);
    });
  }
  static TValue ToValue(E value) { return TValue::FromOrdinal(Info(), static_cast<int64_t>(value)); }
  // Ordinals are stored without a range check, as in a variable of the
  // underlying type: -1, the ordinal of a name that was not found, becomes
  // 255 in an 8-bit enumeration.
  static E FromValue(const TValue& value) {
    return static_cast<E>(static_cast<std::underlying_type_t<E>>(value.AsOrdinal()));
  }
};

template <typename E>
struct TTypeTraits<TSet<E>> {
  static PTypeInfo Info() {
    return Detail::DescribeOnce<TSet<E>>([] {
      TTypeInfo info = Detail::MakeNamedType(TTypeKind::tkSet, u"set of " + TypeInfo<E>()->Name);
      info.ElementType = TypeInfo<E>();
      return info;
    });
  }
  static TValue ToValue(TSet<E> value) { return TValue::FromOrdinal(Info(), static_cast<int64_t>(value.Bits())); }
  static TSet<E> FromValue(const TValue& value) {
    return TSet<E>::FromBits(static_cast<uint64_t>(value.AsOrdinal()));
  }
};

template <typename T>
requires std::is_floating_point_v<T> struct TTypeTraits<T> {
  static PTypeInfo Info() {
    return Detail::DescribeOnce<T>([] {
      TTypeInfo info = Detail::MakeNamedType(
          TTypeKind::tkFloat,
          sizeof(T) == sizeof(float) ? u"Single" : sizeof(T) == sizeof(double) ? u"Double" : u"Extended");
      info.FloatDigits = sizeof(T) == sizeof(float) ? 7 : sizeof(T) == sizeof(double) ? 15 : 18;
      return info;
    });
  }
  static TValue ToValue(T value) { return TValue::FromFloat(Info(), value); }
  static T FromValue(const TValue& value) { return static_cast<T>(value.AsExtended()); }
};

template <>
struct QXRTL_API TTypeTraits<TDateTime> {
  static PTypeInfo Info();
  static TValue ToValue(TDateTime value) { return TValue::FromFloat(Info(), value.Value); }
  static TDateTime FromValue(const TValue& value) { return static_cast<double>(value.AsExtended()); }
};

template <>
struct QXRTL_API TTypeTraits<UnicodeString> {
  static PTypeInfo Info();
  static TValue ToValue(const UnicodeString& value) { return TValue::FromString(Info(), value); }
  static UnicodeString FromValue(const TValue& value) { return value.AsString(); }
};

// Narrow strings hold UTF-8.
template <>
struct QXRTL_API TTypeTraits<std::string> {
  static PTypeInfo Info();
  static TValue ToValue(const std::string& value) { return TValue::FromString(Info(), Strings::Utf8ToUtf16(value)); }
  static std::string FromValue(const TValue& value) { return Strings::Utf16ToUtf8(value.AsString()); }
};

template <>
struct QXRTL_API TTypeTraits<TVariant> {
  static PTypeInfo Info();
  static TValue ToValue(const TVariant& value) { return TValue::FromVariant(value); }
  static TVariant FromValue(const TValue& value) { return value.AsVariant(); }
};

template <>
struct QXRTL_API TTypeTraits<TClass> {
  static PTypeInfo Info();
  static TValue ToValue(TClass value) { return TValue::FromClass(value); }
  static TClass FromValue(const TValue& value) { return value.AsClass(); }
};

template <Detail::TObjectClass T>
struct TTypeTraits<T*> {
  static PTypeInfo Info() {
    return Detail::DescribeOnce<T*>([] {
      TTypeInfo info = Detail::MakeNamedType(TTypeKind::tkClass, T::StaticClass()->ClassName());
      info.ClassType = T::StaticClass();
      return info;
    });
  }
  static TValue ToValue(T* value) { return TValue::FromObject(value, Info()); }
  static T* FromValue(const TValue& value) { return Objects::ObjectCast<T>(value.AsObject()); }
};

template <typename I>
struct TTypeTraits<IntfPtr<I>> {
  static PTypeInfo Info() {
    return Detail::DescribeOnce<IntfPtr<I>>([] {
      TTypeInfo info = Detail::MakeNamedType(TTypeKind::tkInterface, Detail::InterfaceName<I>());
      info.FindInterface = &Detail::FindInterfaceOf<I>;
      return info;
    });
  }
  static TValue ToValue(const IntfPtr<I>& value) { return TValue::FromInterface(Info(), IntfPtr<IInterface>(value)); }
  // Raises EInvalidCast when the value's object lacks interface I.
  static IntfPtr<I> FromValue(const TValue& value) {
    const IntfPtr<IInterface> intf = value.AsInterface();
    if (!intf) return nullptr;
    if (I* found = Detail::InterfaceOf<I>(Objects::ObjectOf(intf.Get()))) return found;
    Exceptions::RaiseInvalidCast();
  }
};

template <Detail::TDescribedRecord T>
struct TTypeTraits<T> : Detail::TOpaqueTraits<T> {
  static PTypeInfo Info() {
    return Detail::DescribeOnce<T>([] { return Detail::MakeNamedType(TTypeKind::tkRecord, QxRecordName(static_cast<T*>(nullptr))); });
  }
};

template <typename T, size_t N>
struct TTypeTraits<std::array<T, N>> : Detail::TOpaqueTraits<std::array<T, N>> {
  static PTypeInfo Info() {
    return Detail::DescribeOnce<std::array<T, N>>([] { return Detail::MakeNamedType(TTypeKind::tkArray, u"array"); });
  }
};

template <typename T>
struct TTypeTraits<std::vector<T>> : Detail::TOpaqueTraits<std::vector<T>> {
  static PTypeInfo Info() {
    return Detail::DescribeOnce<std::vector<T>>([] { return Detail::MakeNamedType(TTypeKind::tkDynArray, u"TArray"); });
  }
};

template <typename Signature>
struct TTypeTraits<std::function<Signature>> : Detail::TOpaqueTraits<std::function<Signature>> {
  static PTypeInfo Info() {
    return Detail::DescribeOnce<std::function<Signature>>(
        [] { return Detail::MakeNamedType(TTypeKind::tkMethod, u"TMethod"); });
  }
};

template <typename R, typename... Args>
struct TTypeTraits<R (*)(Args...)> : Detail::TOpaqueTraits<R (*)(Args...)> {
  static PTypeInfo Info() {
    return Detail::DescribeOnce<R (*)(Args...)>([] { return Detail::MakeNamedType(TTypeKind::tkProcedure, u"TProcedure"); });
  }
};

template <typename T>
requires(!Detail::TObjectClass<T> && !std::is_function_v<T>) struct TTypeTraits<T*> : Detail::TOpaqueTraits<T*> {
  static PTypeInfo Info() {
    return Detail::DescribeOnce<T*>([] { return Detail::MakeNamedType(TTypeKind::tkPointer, u"Pointer"); });
  }
};

template <typename T>
PTypeInfo TypeInfo() {
  return TTypeTraits<std::remove_cv_t<T>>::Info();
}

template <typename T>
TValue TValue::From(const T& value) {
  return TTypeTraits<T>::ToValue(value);
}

template <typename T>
T TValue::AsType() const {
  return TTypeTraits<T>::FromValue(*this);
}

namespace Detail {

// Reads a property through a field or a getter.
template <typename C, typename M>
decltype(auto) ReadMember(C& obj, M member) {
  if constexpr (std::is_member_function_pointer_v<M>)
    return (obj.*member)();
  else
    return (obj.*member);
}

// Writes a property through a field or a setter.
template <typename C, typename M, typename T>
void WriteMember(C& obj, M member, T&& value) {
  if constexpr (std::is_member_function_pointer_v<M>)
    (obj.*member)(std::forward<T>(value));
  else
    obj.*member = std::forward<T>(value);
}

template <typename C, typename T, typename Getter, typename Setter>
class TRttiPropertyOf final : public TRttiProperty {
 public:
  TRttiPropertyOf(UnicodeStringView name, TMemberVisibility visibility, Getter getter, Setter setter,
                  std::vector<std::unique_ptr<TCustomAttribute>> attributes)
      : TRttiProperty(name, visibility, TypeInfo<T>(), !std::is_null_pointer_v<Setter>, std::move(attributes)),
        FGetter(getter),
        FSetter(setter) {}

  TValue GetValue(TObject* instance) const override {
    return TValue::From<T>(ReadMember(*static_cast<C*>(instance), FGetter));
  }

  void SetValue(TObject* instance, const TValue& value) const override {
    if constexpr (std::is_null_pointer_v<Setter>)
      RaiseReadOnly();
    else
      WriteMember(*static_cast<C*>(instance), FSetter, value.AsType<T>());
  }

 private:
  Getter FGetter;
  Setter FSetter;
};

template <typename... A>
std::vector<std::unique_ptr<TCustomAttribute>> MakeAttributes(A&&... attributes) {
  std::vector<std::unique_ptr<TCustomAttribute>> result;
  (result.push_back(std::make_unique<std::decay_t<A>>(std::forward<A>(attributes))), ...);
  return result;
}

inline constexpr TMemberVisibility kVisibility_private = TMemberVisibility::mvPrivate;
inline constexpr TMemberVisibility kVisibility_protected = TMemberVisibility::mvProtected;
inline constexpr TMemberVisibility kVisibility_public = TMemberVisibility::mvPublic;
inline constexpr TMemberVisibility kVisibility_published = TMemberVisibility::mvPublished;

}  // namespace Detail

// Returns the first marker in `attributes` of class T or a descendant of
// it, or nullptr.
template <typename T>
T* FindAttribute(const std::vector<TCustomAttribute*>& attributes) {
  for (TCustomAttribute* attribute : attributes)
    if (auto* found = dynamic_cast<T*>(attribute)) return found;
  return nullptr;
}

}  // namespace Quorvex::Rtl::TypInfo

namespace Quorvex::Rtl::Objects {

// What QX_PROPERTY and QX_CLASS_ATTRIBUTES hand to a class's information.
class TClassMembers {
 public:
  template <typename C, typename Getter, typename Setter, typename... A>
  void AddProperty(UnicodeStringView name, TypInfo::TMemberVisibility visibility, Getter getter, Setter setter,
                   A&&... attributes) {
    using T = std::remove_cvref_t<decltype(TypInfo::Detail::ReadMember(std::declval<C&>(), getter))>;
    Properties.push_back(std::make_unique<TypInfo::Detail::TRttiPropertyOf<C, T, Getter, Setter>>(
        name, visibility, getter, setter, TypInfo::Detail::MakeAttributes(std::forward<A>(attributes)...)));
  }

  template <typename... A>
  void AddClassAttributes(A&&... attributes) {
    Attributes = TypInfo::Detail::MakeAttributes(std::forward<A>(attributes)...);
  }

  std::vector<std::unique_ptr<TypInfo::TRttiProperty>> Properties;
  std::vector<std::unique_ptr<TypInfo::TCustomAttribute>> Attributes;
};

namespace Detail {

struct TMemberAccess {
  template <typename C>
  static constexpr int PropertyCount() {
    return decltype(C::QxNextProperty(TRank<kMaxProperties>{}))::Value;
  }
  template <typename C, int... I>
  static void Describe(TClassMembers& members, std::integer_sequence<int, I...>) {
    C::QxClassAttributes(TRank<1>{}, members);
    (C::QxDescribeProperty(TIndex<I>{}, members), ...);
  }
};

template <typename C>
void DescribeMembers(TClassMembers& members) {
  TMemberAccess::Describe<C>(members, std::make_integer_sequence<int, TMemberAccess::PropertyCount<C>()>{});
}

}  // namespace Detail
}  // namespace Quorvex::Rtl::Objects

// Declares a property in a class body, after QX_CLASS. Visibility is one of
// private, protected, public, published; Reader and Writer name a field or
// a getter and a setter of the class; markers may follow.
#define QX_PROPERTY(Visibility, Name, Reader, Writer, ...) \
  QX_DETAIL_PROPERTY(Visibility, Name, &QxSelf::Reader, &QxSelf::Writer __VA_OPT__(, ) __VA_ARGS__)

// Declares a property that has no setter.
#define QX_READONLY_PROPERTY(Visibility, Name, Reader, ...) \
  QX_DETAIL_PROPERTY(Visibility, Name, &QxSelf::Reader, nullptr __VA_OPT__(, ) __VA_ARGS__)

#define QX_DETAIL_PROPERTY(Visibility, Name, Reader, Writer, ...)                                                   \
  static constexpr int QxPropertyIndex_##Name = decltype(QxNextProperty(                                            \
      ::Quorvex::Rtl::Objects::Detail::TRank<::Quorvex::Rtl::Objects::Detail::kMaxProperties>{}))::Value;           \
  static ::Quorvex::Rtl::Objects::Detail::TIndex<QxPropertyIndex_##Name + 1> QxNextProperty(                        \
      ::Quorvex::Rtl::Objects::Detail::TRank<QxPropertyIndex_##Name + 1>);                                          \
  static void QxDescribeProperty(::Quorvex::Rtl::Objects::Detail::TIndex<QxPropertyIndex_##Name>,                   \
                                 ::Quorvex::Rtl::Objects::TClassMembers& members) {                                 \
    members.AddProperty<QxSelf>(u"" #Name, ::Quorvex::Rtl::TypInfo::Detail::kVisibility_##Visibility, Reader,       \
                                Writer __VA_OPT__(, ) __VA_ARGS__);                                                 \
  }

// Attaches markers to the class, after QX_CLASS: QX_CLASS_ATTRIBUTES(MyMarker(1), OtherMarker()).
#define QX_CLASS_ATTRIBUTES(...)                                                                      \
  static void QxClassAttributes(::Quorvex::Rtl::Objects::Detail::TRank<1>,                            \
                                ::Quorvex::Rtl::Objects::TClassMembers& members) {                    \
    members.AddClassAttributes(__VA_ARGS__);                                                          \
  }

// Declares an enumeration with a fixed underlying type and the names of
// its values for type information; at namespace scope:
//   QX_ENUM(TColor, uint8_t, clRed, clGreen, clBlue);
#define QX_ENUM(Name, Underlying, ...)  \
  enum Name : Underlying { __VA_ARGS__ }; \
  [[maybe_unused]] inline const auto& QxEnumNames(Name*) { QX_DETAIL_ENUM_NAMES(Name, __VA_ARGS__) }

// The same inside a class body.
#define QX_NESTED_ENUM(Name, Underlying, ...) \
  enum Name : Underlying { __VA_ARGS__ };     \
  friend const auto& QxEnumNames(Name*) { QX_DETAIL_ENUM_NAMES(Name, __VA_ARGS__) }

#define QX_DETAIL_ENUM_NAMES(Name, ...)                                                                   \
  static const std::pair<::Quorvex::Rtl::Strings::UnicodeStringView, ::Quorvex::Rtl::TypInfo::TEnumNames> \
      names{u"" #Name, ::Quorvex::Rtl::TypInfo::TEnumNames(u"" #__VA_ARGS__)};                            \
  return names;

// Gives a record type (a struct without text form) its type information;
// at namespace scope after the struct: QX_RECORD(TPoint);
#define QX_RECORD(Name) \
  [[maybe_unused]] inline ::Quorvex::Rtl::Strings::UnicodeStringView QxRecordName(Name*) { return u"" #Name; }
