#include <gtest/gtest.h>

#include "Quorvex.Rtl.Classes.hpp"
#include "Quorvex.Rtl.TypInfo.hpp"
#include "Quorvex.TestSupport.hpp"

namespace Quorvex::Rtl::TypInfo {

QX_ENUM(TShade, int8_t, shLight, shDark, shDeep);

struct TPoint {
  int X = 0;
  int Y = 0;
};
QX_RECORD(TPoint);

namespace {

using Exceptions::EInvalidCast;
using Exceptions::ERangeError;
using Strings::UnicodeString;

class TTag : public TCustomAttribute {
  QX_CLASS(TTag, TCustomAttribute, "Quorvex.Tests")
 public:
  explicit TTag(UnicodeString text) : Text(std::move(text)) {}
  UnicodeString Text;
};

class TSpecialTag : public TTag {
  QX_CLASS(TSpecialTag, TTag, "Quorvex.Tests")
 public:
  using TTag::TTag;
};

class IShape : public virtual IInterface {
 public:
  static constexpr Objects::TGUID IID = Objects::TGUID::Parse("{0C8C6A52-8E1F-4D47-9A8B-5C1E2F3A4B5D}");
  virtual int Corners() = 0;
};

class TSquare : public Objects::TInterfacedObject, public IShape {
  QX_CLASS(TSquare, TInterfacedObject, "Quorvex.Tests")
  QX_INTERFACES(IShape)
 public:
  int Corners() override { return 4; }
};

class TBase : public TObject {
  QX_CLASS(TBase, TObject, "Quorvex.Tests")
  QX_CLASS_ATTRIBUTES(TTag(u"base"))
  int FCount = 3;

 public:
  int GetCount() const { return FCount; }
  void SetCount(int count) { FCount = count; }
  QX_PROPERTY(published, Count, GetCount, SetCount);
};

class TSample : public TBase {
  QX_CLASS(TSample, TBase, "Quorvex.Tests")
  UnicodeString FCaption = u"abc";
  TShade FShade = shDark;
  UnicodeString GetSecret() const { return u"hidden"; }

 public:
  bool Enabled = true;
  TSet<TShade> Shades{shLight, shDeep};
  TDateTime Stamp = 45000.5;
  double Ratio = 1.5;
  char16_t Letter = u'q';
  int64_t Big = -(int64_t{1} << 40);
  uint8_t Small = 200;
  TPoint Point{1, 2};
  std::vector<int> Numbers{1, 2};
  Variants::TVariant Any = u"text";
  TObject* Child = nullptr;
  IntfPtr<IShape> Shape;

  QX_PROPERTY(published, Caption, FCaption, FCaption, TTag(u"first"), TSpecialTag(u"second"));
  QX_PROPERTY(published, Shade, FShade, FShade);
  QX_PROPERTY(public, IsEnabled, Enabled, Enabled);
  QX_PROPERTY(published, Shades, Shades, Shades);
  QX_PROPERTY(published, Stamp, Stamp, Stamp);
  QX_PROPERTY(published, Ratio, Ratio, Ratio);
  QX_PROPERTY(published, Letter, Letter, Letter);
  QX_PROPERTY(published, Big, Big, Big);
  QX_PROPERTY(published, Small, Small, Small);
  QX_PROPERTY(published, Point, Point, Point);
  QX_PROPERTY(published, Numbers, Numbers, Numbers);
  QX_PROPERTY(published, Any, Any, Any);
  QX_PROPERTY(published, Child, Child, Child);
  QX_PROPERTY(published, Shape, Shape, Shape);
  QX_READONLY_PROPERTY(private, Secret, GetSecret);
};

const TRttiProperty& PropertyOf(TClass cls, UnicodeStringView name) {
  for (const TRttiProperty* property : cls->Properties())
    if (property->Name() == name) return *property;
  throw std::logic_error("no such property");
}

TEST(TypInfoTest, PropertiesComeInDeclarationOrderThenThoseOfTheAncestors) {
  std::vector<UnicodeString> names;
  for (const TRttiProperty* property : TSample::StaticClass()->Properties()) names.push_back(property->Name());
  EXPECT_EQ(names, (std::vector<UnicodeString>{u"Caption", u"Shade", u"IsEnabled", u"Shades", u"Stamp", u"Ratio",
                                               u"Letter", u"Big", u"Small", u"Point", u"Numbers", u"Any", u"Child",
                                               u"Shape", u"Secret", u"Count"}));
  EXPECT_TRUE(TObject::StaticClass()->Properties().empty());
  EXPECT_TRUE(Classes::TStringList::StaticClass()->Properties().empty());
}

TEST(TypInfoTest, DescribesEachPropertyFromItsCxxType) {
  struct TCase {
    UnicodeStringView Property;
    TTypeKind Kind;
    UnicodeStringView TypeName;
    TMemberVisibility Visibility;
    bool Writable;
  };
  const TCase cases[] = {
      {u"Caption", TTypeKind::tkUString, u"string", TMemberVisibility::mvPublished, true},
      {u"Shade", TTypeKind::tkEnumeration, u"TShade", TMemberVisibility::mvPublished, true},
      {u"IsEnabled", TTypeKind::tkEnumeration, u"Boolean", TMemberVisibility::mvPublic, true},
      {u"Shades", TTypeKind::tkSet, u"set of TShade", TMemberVisibility::mvPublished, true},
      {u"Stamp", TTypeKind::tkFloat, u"TDateTime", TMemberVisibility::mvPublished, true},
      {u"Ratio", TTypeKind::tkFloat, u"Double", TMemberVisibility::mvPublished, true},
      {u"Letter", TTypeKind::tkWChar, u"WideChar", TMemberVisibility::mvPublished, true},
      {u"Big", TTypeKind::tkInt64, u"Int64", TMemberVisibility::mvPublished, true},
      {u"Small", TTypeKind::tkInteger, u"Byte", TMemberVisibility::mvPublished, true},
      {u"Point", TTypeKind::tkRecord, u"TPoint", TMemberVisibility::mvPublished, true},
      {u"Numbers", TTypeKind::tkDynArray, u"TArray", TMemberVisibility::mvPublished, true},
      {u"Any", TTypeKind::tkVariant, u"Variant", TMemberVisibility::mvPublished, true},
      {u"Child", TTypeKind::tkClass, u"TObject", TMemberVisibility::mvPublished, true},
      {u"Shape", TTypeKind::tkInterface, u"IInterface", TMemberVisibility::mvPublished, true},
      {u"Secret", TTypeKind::tkUString, u"string", TMemberVisibility::mvPrivate, false},
      {u"Count", TTypeKind::tkInteger, u"Integer", TMemberVisibility::mvPublished, true},
  };
  for (const TCase& c : cases) {
    SCOPED_TRACE(Strings::Utf16ToUtf8(c.Property));
    const TRttiProperty& property = PropertyOf(TSample::StaticClass(), c.Property);
    EXPECT_EQ(property.PropertyType()->Kind, c.Kind);
    EXPECT_EQ(property.PropertyType()->Name, c.TypeName);
    EXPECT_EQ(property.Visibility(), c.Visibility);
    EXPECT_EQ(property.IsWritable(), c.Writable);
  }
  EXPECT_EQ(static_cast<int>(TTypeKind::tkInterface), 15);
  EXPECT_EQ(static_cast<int>(TTypeKind::tkUString), 18);
}

TEST(TypInfoTest, ValuesHaveTheirTextForm) {
  TSample sample;
  struct TCase {
    UnicodeStringView Property;
    UnicodeStringView Text;
  };
  const TCase cases[] = {
      {u"Caption", u"abc"},  {u"Shade", u"shDark"}, {u"IsEnabled", u"True"}, {u"Shades", u"[shLight,shDeep]"},
      {u"Ratio", u"1.5"},    {u"Letter", u"q"},     {u"Big", u"-1099511627776"}, {u"Small", u"200"},
      {u"Any", u"text"},     {u"Secret", u"hidden"}, {u"Count", u"3"},
  };
  for (const TCase& c : cases) {
    SCOPED_TRACE(Strings::Utf16ToUtf8(c.Property));
    EXPECT_EQ(PropertyOf(TSample::StaticClass(), c.Property).GetValue(&sample).ToString(), c.Text);
  }
  EXPECT_EQ(TValue().ToString(), u"");
  EXPECT_TRUE(TValue().IsEmpty());
  EXPECT_EQ(TValue::From(TSet<TShade>()).ToString(), u"[]");
  EXPECT_EQ(TValue::FromOrdinal(TypeInfo<TShade>(), -1).ToString(), u"-1");
  EXPECT_EQ(TValue::From(Variants::TVariant::Null()).ToString(), u"Null");
}

TEST(TypInfoTest, SetsValuesThroughFieldsAndSetters) {
  TSample sample;
  const TClass cls = TSample::StaticClass();
  PropertyOf(cls, u"Count").SetValue(&sample, TValue::From(42));
  PropertyOf(cls, u"Caption").SetValue(&sample, TValue::From(UnicodeString(u"new")));
  PropertyOf(cls, u"Shade").SetValue(&sample, TValue::FromOrdinal(TypeInfo<TShade>(), -1));
  PropertyOf(cls, u"IsEnabled").SetValue(&sample, TValue::From(false));
  EXPECT_EQ(sample.GetCount(), 42);
  EXPECT_EQ(PropertyOf(cls, u"Caption").GetValue(&sample).AsString(), u"new");
  EXPECT_EQ(PropertyOf(cls, u"Shade").GetValue(&sample).AsOrdinal(), -1);
  EXPECT_FALSE(sample.Enabled);

  // The empty value stores each type's zero, records and arrays included.
  for (const char16_t* name : {u"Point", u"Numbers", u"Shades", u"Letter", u"Stamp"})
    PropertyOf(cls, name).SetValue(&sample, TValue());
  EXPECT_EQ(sample.Point.X + sample.Point.Y, 0);
  EXPECT_TRUE(sample.Numbers.empty());
  EXPECT_EQ(sample.Shades, TSet<TShade>());
  EXPECT_EQ(sample.Letter, u'\0');
  EXPECT_EQ(sample.Stamp, 0.0);

  EXPECT_RAISES(EPropertyError, PropertyOf(cls, u"Secret").SetValue(&sample, TValue()),
                u"Property Secret is read-only");
  EXPECT_RAISES(ERangeError, PropertyOf(cls, u"Small").SetValue(&sample, TValue::From(256)), u"Range check error");
  EXPECT_RAISES(EInvalidCast, PropertyOf(cls, u"Count").SetValue(&sample, TValue::From(UnicodeString(u"1"))),
                u"Invalid class typecast");
}

TEST(TypInfoTest, ObjectsAndInterfacesTravelWithTheirTypes) {
  TSample sample;
  const TClass cls = TSample::StaticClass();
  TBase child;
  PropertyOf(cls, u"Child").SetValue(&sample, TValue::FromObject(&child));
  EXPECT_EQ(sample.Child, &child);
  EXPECT_EQ(PropertyOf(cls, u"Child").GetValue(&sample).AsObject(), &child);

  auto* square = Objects::CreateObject<TSquare>();
  const TTypeInfo& shapeType = *PropertyOf(cls, u"Shape").PropertyType();
  ASSERT_NE(shapeType.FindInterface(square), nullptr);
  EXPECT_EQ(shapeType.FindInterface(&child), nullptr);
  PropertyOf(cls, u"Shape").SetValue(&sample, TValue::FromInterface(&shapeType, shapeType.FindInterface(square)));
  ASSERT_TRUE(sample.Shape);
  EXPECT_EQ(sample.Shape->Corners(), 4);
  EXPECT_EQ(PropertyOf(cls, u"Shape").GetValue(&sample).AsObject(), square);
  EXPECT_EQ(square->RefCount(), 1);
  // An object without the interface cannot be stored in it.
  TValue other = TValue::FromInterface(&shapeType, Objects::CreateObject<Objects::TInterfacedObject>());
  EXPECT_RAISES(EInvalidCast, PropertyOf(cls, u"Shape").SetValue(&sample, other), u"Invalid class typecast");
  EXPECT_RAISES(EInvalidCast, PropertyOf(cls, u"Child").SetValue(&sample, TValue::From(1)),
                u"Invalid class typecast");
}

TEST(TypInfoTest, MarkersAreListedPerClassAndPerProperty) {
  EXPECT_EQ(FindAttribute<TTag>(TBase::StaticClass()->Attributes())->Text, u"base");
  // A class lists its own markers only.
  EXPECT_TRUE(TSample::StaticClass()->Attributes().empty());
  const TRttiProperty& caption = PropertyOf(TSample::StaticClass(), u"Caption");
  ASSERT_EQ(caption.Attributes().size(), 2u);
  EXPECT_EQ(FindAttribute<TTag>(caption.Attributes())->Text, u"first");
  EXPECT_EQ(FindAttribute<TSpecialTag>(caption.Attributes())->Text, u"second");
  EXPECT_EQ(FindAttribute<TSpecialTag>(PropertyOf(TSample::StaticClass(), u"Shade").Attributes()), nullptr);
}

TEST(TypInfoTest, EnumerationNamesAndOrdinals) {
  const TEnumNames& names = *TypeInfo<TShade>()->EnumNames;
  EXPECT_EQ(names.Count(), 3);
  EXPECT_EQ(names.NameOf(2), u"shDeep");
  EXPECT_EQ(names.NameOf(3), u"3");
  EXPECT_EQ(names.OrdinalOf(u"shdark"), 1);
  EXPECT_EQ(names.OrdinalOf(u"shDarker"), -1);
  EXPECT_EQ(names.OrdinalOf(u""), -1);
  EXPECT_EQ(TypeInfo<bool>()->EnumNames->NameOf(1), u"True");
  EXPECT_EQ(TypeInfo<TShade>()->MaxValue, 2);
}

}  // namespace
}  // namespace Quorvex::Rtl::TypInfo
