#include <gtest/gtest.h>

#include <memory>

#include "Quorvex.Rtl.Classes.hpp"
#include "Quorvex.Rtti.Attributes.hpp"
#include "Quorvex.Rtti.XMLSerializer.hpp"
#include "Quorvex.TestSupport.hpp"
#include "Quorvex.Types.Registry.hpp"
#include "Quorvex.Utils.Xml.hpp"

namespace Quorvex::Rtti::XMLSerializer {

QX_ENUM(TTestColor, uint8_t, tcRed, tcGreen, tcBlue);

struct TTestPoint {
  int X = 0;
  int Y = 0;
};
QX_RECORD(TTestPoint);

namespace {

using Attributes::NameAttribute;
using Attributes::SerializationOptionAttribute;
using Attributes::SerializeAttribute;
using Rtl::Classes::TPersistent;
using Rtl::Classes::TStringList;
using Rtl::DateTime::TDateTime;
using Rtl::Exceptions::EInvalidCast;
using Rtl::Exceptions::EVariantTypeCastError;
using Rtl::Strings::UnicodeStringView;
using Rtl::TypInfo::TSet;
using Types::Registry::TTypeRegistry;

class TShape : public TPersistent {
  QX_CLASS(TShape, TPersistent, "Quorvex.Tests.Shapes")
 public:
  UnicodeString Name;
  QX_PROPERTY(published, Name, Name, Name);
};

class TCircle : public TShape {
  QX_CLASS(TCircle, TShape, "Quorvex.Tests.Shapes")
 public:
  double Radius = 1;
  QX_PROPERTY(published, Radius, Radius, Radius);
};

// Registered under an alias only.
class TSquare : public TShape {
  QX_CLASS(TSquare, TShape, "Quorvex.Tests.Shapes")
 public:
  int Side = 1;
  QX_PROPERTY(published, Side, Side, Side);
};

// Never registered.
class TTriangle : public TShape {
  QX_CLASS(TTriangle, TShape, "Quorvex.Tests.Shapes")
};

void RegisterShapes() {
  static const bool registered = [] {
    TTypeRegistry::RegisterClass<TCircle>();
    TTypeRegistry::RegisterClass<TSquare>(u"square");
    return true;
  }();
  (void)registered;
}

class TSample : public TPersistent {
  QX_CLASS(TSample, TPersistent, "Quorvex.Tests")
  std::unique_ptr<TShape> FShape;
  TTestPoint FFixed{5, 6};
  UnicodeString FSecret = u"s";

 public:
  UnicodeString Caption = u"abc";
  int Count = 3;
  bool Enabled = true;
  TTestColor Color = tcBlue;
  TDateTime Stamp = 45000.25;
  double Ratio = 2.5;
  char16_t Letter = u'q';
  TSet<TTestColor> Colors{tcRed, tcBlue};
  TTestPoint Point{1, 2};
  int64_t Big = -(int64_t{1} << 40);
  Rtl::Variants::TVariant Any = u"any";
  UnicodeString Hidden = u"h";
  UnicodeString Renamed = u"r";

  TShape* GetShape() const { return FShape.get(); }
  void SetShape(TShape* shape) {
    if (shape != FShape.get()) FShape.reset(shape);
  }
  const TTestPoint& GetFixed() const { return FFixed; }

  QX_PROPERTY(published, Caption, Caption, Caption);
  QX_PROPERTY(published, Count, Count, Count);
  QX_PROPERTY(published, Enabled, Enabled, Enabled);
  QX_PROPERTY(published, Color, Color, Color);
  QX_PROPERTY(published, Stamp, Stamp, Stamp);
  QX_PROPERTY(published, Ratio, Ratio, Ratio);
  QX_PROPERTY(published, Letter, Letter, Letter);
  QX_PROPERTY(published, Colors, Colors, Colors);
  QX_PROPERTY(published, Point, Point, Point);
  QX_READONLY_PROPERTY(published, Fixed, GetFixed);
  QX_PROPERTY(published, Big, Big, Big);
  QX_PROPERTY(published, Any, Any, Any);
  QX_PROPERTY(published, Shape, GetShape, SetShape);
  QX_PROPERTY(published, Hidden, Hidden, Hidden, SerializeAttribute(false));
  QX_PROPERTY(public, Secret, FSecret, FSecret, SerializeAttribute(true));
  QX_PROPERTY(published, Renamed, Renamed, Renamed, NameAttribute(u"Other"));
};

// Runs a test with '.' as the decimal separator, whatever the locale.
class XmlSerializerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    RegisterShapes();
    std::swap(Rtl::Strings::FormatSettings().DecimalSeparator, FSeparator);
  }
  void TearDown() override { std::swap(Rtl::Strings::FormatSettings().DecimalSeparator, FSeparator); }

  static UnicodeString Written(TObject& obj) {
    IntfPtr<IXmlSerializer<TObject>> serializer = NewXmlSerializer();
    serializer->Serialize(&obj);
    return serializer->GetDocument().SaveToText();
  }

  // Fills `obj` from a document given as text.
  static void Read(UnicodeStringView text, TObject& obj) {
    IntfPtr<IXmlSerializer<TObject>> serializer = NewXmlSerializer();
    serializer->GetDocument().LoadFromText(text);
    serializer->Deserialize(&obj);
  }

 private:
  char16_t FSeparator = u'.';
};

TEST_F(XmlSerializerTest, WritesTheExactDocument) {
  TSample sample;
  auto* circle = new TCircle;
  circle->Name = u"c<1>";
  sample.SetShape(circle);
  const UnicodeString stamp = Utils::Xml::gXml::DateTimeToXMLTime(45000.25, true);
  EXPECT_EQ(Written(sample), u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                             u"<Root>\n"
                             u"  <Caption>abc</Caption>\n"
                             u"  <Count>3</Count>\n"
                             u"  <Enabled>True</Enabled>\n"
                             u"  <Color>tcBlue</Color>\n"
                             u"  <Stamp>" + stamp + u"</Stamp>\n"
                             u"  <Ratio>2.5</Ratio>\n"
                             u"  <Letter>q</Letter>\n"
                             u"  <Colors>[tcRed,tcBlue]</Colors>\n"
                             u"  <Point />\n"
                             u"  <Fixed />\n"
                             u"  <Big>-1099511627776</Big>\n"
                             u"  <Any>any</Any>\n"
                             u"  <Shape type=\"Quorvex.Tests.Shapes.TCircle\">\n"
                             u"    <Radius>1</Radius>\n"
                             u"    <Name>c&lt;1&gt;</Name>\n"
                             u"  </Shape>\n"
                             u"  <Secret>s</Secret>\n"
                             u"  <Other>r</Other>\n"
                             u"</Root>\n");
}

TEST_F(XmlSerializerTest, ReadsBackEveryKindThatIsRead) {
  TSample written;
  written.Caption = u"x y";
  written.Count = -7;
  written.Enabled = false;
  written.Color = tcGreen;
  written.Stamp = 40000.5;
  written.Ratio = 0.125;
  written.Big = int64_t{1} << 50;
  written.Any = u"7";
  written.Renamed = u"renamed";
  const UnicodeString text = Written(written);

  TSample read;
  read.Caption = u"";
  read.Point = {9, 9};
  Read(text, read);
  EXPECT_EQ(read.Caption, u"x y");
  EXPECT_EQ(read.Count, -7);
  EXPECT_FALSE(read.Enabled);
  EXPECT_EQ(read.Color, tcGreen);
  EXPECT_DOUBLE_EQ(read.Stamp, 40000.5);
  EXPECT_EQ(read.Ratio, 0.125);
  EXPECT_EQ(read.Big, int64_t{1} << 50);
  EXPECT_EQ(read.Any, Rtl::Variants::TVariant(u"7"));
  EXPECT_EQ(read.Renamed, u"renamed");
  // Characters, sets and records are written but come back as zero; a
  // read-only record is left alone.
  EXPECT_EQ(read.Letter, u'\0');
  EXPECT_EQ(read.Colors, TSet<TTestColor>());
  EXPECT_EQ(read.Point.X + read.Point.Y, 0);
  EXPECT_EQ(read.GetFixed().X, 5);
  // A class that is not registered gets no "type": the shape element was
  // empty and the property keeps its (missing) object.
  EXPECT_EQ(read.GetShape(), nullptr);
}

TEST_F(XmlSerializerTest, MakesRegisteredObjectsByNameOrAliasAndFillsOthersInPlace) {
  TSample sample;
  auto* square = new TSquare;
  square->Side = 4;
  sample.SetShape(square);
  const UnicodeString text = Written(sample);
  EXPECT_NE(text.find(u"<Shape type=\"square\">"), UnicodeString::npos);

  TSample read;
  read.SetShape(new TCircle);
  Read(text, read);
  auto* made = dynamic_cast<TSquare*>(read.GetShape());
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(made->Side, 4);

  // Without a usable "type" the existing object is filled in place.
  for (UnicodeStringView attribute : {u"", u" type=\"Quorvex.Tests.Shapes.TTriangle\""}) {
    SCOPED_TRACE(Rtl::Strings::Utf16ToUtf8(attribute));
    TSample inPlace;
    auto* kept = new TCircle;
    inPlace.SetShape(kept);
    Read(u"<Root><Shape" + UnicodeString(attribute) + u"><Radius>3.5</Radius><Name>n</Name></Shape></Root>", inPlace);
    EXPECT_EQ(inPlace.GetShape(), kept);
    EXPECT_EQ(kept->Radius, 3.5);
    EXPECT_EQ(kept->Name, u"n");
  }
}

TEST_F(XmlSerializerTest, MakesTheRootObjectFromItsTypeAttribute) {
  IntfPtr<IXmlSerializer<TShape>> serializer = NewXmlSerializer<TShape>();
  serializer->GetDocument().LoadFromText(u"<Root type=\"square\"><Side>9</Side><Name>sq</Name></Root>");
  std::unique_ptr<TShape> made(serializer->Deserialize());
  ASSERT_NE(dynamic_cast<TSquare*>(made.get()), nullptr);
  EXPECT_EQ(static_cast<TSquare*>(made.get())->Side, 9);
  EXPECT_EQ(made->Name, u"sq");

  for (UnicodeStringView text : {u"<Root/>", u"<Root type=\"\"/>", u"<Root type=\"Square\"/>"}) {
    serializer->GetDocument().LoadFromText(text);
    EXPECT_EQ(serializer->Deserialize(), nullptr);
  }
  TTypeRegistry::RegisterType(u"Quorvex.Tests.NotAShape", [] { return TValue::FromObject(new TStringList); });
  serializer->GetDocument().LoadFromText(u"<Root type=\"Quorvex.Tests.NotAShape\"/>");
  EXPECT_RAISES(EInvalidCast, serializer->Deserialize(), u"Invalid class typecast");
}

TEST_F(XmlSerializerTest, SkipsWhatItDoesNotKnowAndRaisesOnTextItCannotConvert) {
  TSample sample;
  Read(u"<Root><Unknown>1</Unknown><Color>tcPurple</Color><Count>12</Count><Hidden>x</Hidden></Root>", sample);
  EXPECT_EQ(static_cast<int>(sample.Color), 255);  // ordinal -1 in an 8-bit enumeration
  EXPECT_EQ(sample.Count, 12);
  EXPECT_EQ(sample.Hidden, u"h");

  TSample partly;
  EXPECT_RAISES(EVariantTypeCastError, Read(u"<Root><Caption>new</Caption><Count>12a</Count></Root>", partly),
                u"Could not convert variant \"12a\" of type (UnicodeString) into type (Integer)");
  EXPECT_EQ(partly.Caption, u"new");
  EXPECT_RAISES(EVariantTypeCastError, Read(u"<Root><Count/></Root>", partly),
                u"Could not convert variant of type (Null) into type (Integer)");
  EXPECT_RAISES(Rtl::Exceptions::ERangeError, Read(u"<Root><Enabled>True</Enabled><Count>3000000000</Count></Root>", partly),
                u"Range check error");
}

class IGreeting : public virtual IInterface {
 public:
  static constexpr Rtl::Objects::TGUID IID = Rtl::Objects::TGUID::Parse("{6B1F0A3C-2D4E-4F56-8A7B-9C0D1E2F3A4B}");
  virtual UnicodeString Text() = 0;
};

class TGreeting : public Rtl::Objects::TInterfacedObject, public IGreeting {
  QX_CLASS(TGreeting, TInterfacedObject, "Quorvex.Tests")
  QX_INTERFACES(IGreeting)
 public:
  UnicodeString Words = u"hello";
  UnicodeString Text() override { return Words; }
  QX_PROPERTY(published, Words, Words, Words);
};

// Registered, but without the interface.
class TNoGreeting : public TPersistent {
  QX_CLASS(TNoGreeting, TPersistent, "Quorvex.Tests")
};

class TGreeter : public TPersistent {
  QX_CLASS(TGreeter, TPersistent, "Quorvex.Tests")
 public:
  IntfPtr<IGreeting> Greeting;
  QX_PROPERTY(published, Greeting, Greeting, Greeting);
};

TEST_F(XmlSerializerTest, InterfacesTravelAsTheObjectsBehindThem) {
  static const bool registered = [] {
    TTypeRegistry::RegisterClass<TGreeting>(u"Ser.Greeting");
    TTypeRegistry::RegisterClass<TNoGreeting>(u"Ser.NoGreeting");
    return true;
  }();
  (void)registered;
  TGreeter greeter;
  greeter.Greeting = Rtl::Objects::CreateObject<TGreeting>();
  static_cast<TGreeting*>(greeter.Greeting.Get())->Words = u"hi";
  const UnicodeString text = Written(greeter);
  EXPECT_NE(text.find(u"<Greeting type=\"Ser.Greeting\">\n    <Words>hi</Words>"), UnicodeString::npos);

  TGreeter read;
  Read(text, read);
  ASSERT_TRUE(read.Greeting);
  EXPECT_EQ(read.Greeting->Text(), u"hi");
  // An object without the interface is not stored (and not kept).
  TGreeter refused;
  Read(u"<Root><Greeting type=\"Ser.NoGreeting\"/></Root>", refused);
  EXPECT_FALSE(refused.Greeting);
}

class TExplicit : public TPersistent {
  QX_CLASS(TExplicit, TPersistent, "Quorvex.Tests")
  QX_CLASS_ATTRIBUTES(SerializationOptionAttribute(SerializationOptionAttribute::soExplicit))
 public:
  int A = 1;
  int B = 2;
  QX_PROPERTY(published, A, A, A);
  QX_PROPERTY(public, B, B, B, SerializeAttribute(true));
};

class TExplicitChild : public TExplicit {
  QX_CLASS(TExplicitChild, TExplicit, "Quorvex.Tests")
};

class TPublishedOption : public TExplicit {
  QX_CLASS(TPublishedOption, TExplicit, "Quorvex.Tests")
  QX_CLASS_ATTRIBUTES(SerializationOptionAttribute(SerializationOptionAttribute::soPublished))
};

TEST_F(XmlSerializerTest, ClassOptionsAndPropertyMarkersChooseTheProperties) {
  TExplicit explicitOnly;
  TExplicitChild child;
  TPublishedOption published;
  // The option is looked up on the object's own class only.
  EXPECT_EQ(Written(explicitOnly), u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Root>\n  <B>2</B>\n</Root>\n");
  EXPECT_EQ(Written(child), u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Root>\n  <A>1</A>\n  <B>2</B>\n</Root>\n");
  EXPECT_EQ(Written(published), Written(child));
  Read(u"<Root><A>5</A><B>6</B></Root>", explicitOnly);
  EXPECT_EQ(explicitOnly.A, 1);
  EXPECT_EQ(explicitOnly.B, 6);
}

TEST_F(XmlSerializerTest, KeepsTheRootsTypeAndFollowsReloads) {
  IntfPtr<IXmlSerializer<TObject>> serializer = NewXmlSerializer();
  TCircle circle;
  serializer->Serialize(&circle);
  TExplicit unregistered;
  serializer->Serialize(&unregistered);
  // The attribute of the registered class stays on the root.
  EXPECT_EQ(serializer->GetRoot().Attribute(u"type"), u"Quorvex.Tests.Shapes.TCircle");
  EXPECT_EQ(serializer->GetRoot().ChildCount(), 1);

  serializer->GetDocument().LoadFromText(u"<Root><Radius>7</Radius></Root>");
  serializer->Deserialize(&circle);
  EXPECT_EQ(circle.Radius, 7);
  EXPECT_EQ(serializer->GetRoot().Attribute(u"type"), u"");
}

}  // namespace
}  // namespace Quorvex::Rtti::XMLSerializer
