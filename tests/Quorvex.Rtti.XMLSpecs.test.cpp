#include <gtest/gtest.h>

#include "Quorvex.Rtl.Classes.hpp"
#include "Quorvex.Rtti.XMLSpecs.hpp"
#include "Quorvex.TestSupport.hpp"
#include "Quorvex.Types.Registry.hpp"

namespace Quorvex::Rtti::XMLSpecs {
namespace {

using Rtl::Classes::TCollection;
using Rtl::Classes::TCollectionItem;
using Rtl::Classes::TPersistent;
using Rtl::Classes::TStringList;
using Rtl::Collections::IList;
using Rtl::Collections::NewList;
using Rtl::Objects::IntfPtr;
using Rtl::Objects::TObject;
using Rtl::Strings::UnicodeString;
using Rtl::Strings::UnicodeStringView;
using XMLSerializer::IXmlSerializer;
using XMLSerializer::NewXmlSerializer;
using XMLSerializer::TXmlSpecRegistry;

class TPage : public TCollectionItem {
  QX_CLASS(TPage, TCollectionItem, "Quorvex.Tests.Specs")
 public:
  UnicodeString Title;
  int Lines = 0;
  QX_PROPERTY(published, Title, Title, Title);
  QX_PROPERTY(published, Lines, Lines, Lines);
};

// Registered under "Specs.Tag"; TLabel is not registered at all.
class TTag : public TPersistent {
  QX_CLASS(TTag, TPersistent, "Quorvex.Tests.Specs")
 public:
  UnicodeString Text;
  QX_PROPERTY(published, Text, Text, Text);
};

class TLabel : public TTag {
  QX_CLASS(TLabel, TTag, "Quorvex.Tests.Specs")
};

class TBook : public TPersistent {
  QX_CLASS(TBook, TPersistent, "Quorvex.Tests.Specs")
  TStringList FNames;
  TCollection FPages{TPage::StaticClass()};

 public:
  IntfPtr<IList<int>> Numbers = NewList<int>();
  IntfPtr<IList<TTag*>> Tags = NewList<TTag*>();

  ~TBook() override { ClearTags(); }
  void ClearTags() {
    for (TTag* tag : *Tags) delete tag;
    Tags->Clear();
  }
  TStringList* GetNames() { return &FNames; }
  TCollection* GetPages() { return &FPages; }
  TPage* Page(int index) { return static_cast<TPage*>(FPages.Items(index)); }

  QX_READONLY_PROPERTY(published, Names, GetNames);
  QX_READONLY_PROPERTY(published, Pages, GetPages);
  QX_READONLY_PROPERTY(published, Numbers, Numbers);
  QX_READONLY_PROPERTY(published, Tags, Tags);
};

class XmlSpecsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    static const bool registered = [] {
      Types::Registry::TTypeRegistry::RegisterClass<TTag>(u"Specs.Tag");
      return true;
    }();
    (void)registered;
  }

  IntfPtr<IXmlSerializer<TObject>> Serializer = NewXmlSerializer();

  UnicodeString Write(TBook& book) {
    Serializer->Serialize(&book);
    return Serializer->GetDocument().SaveToText();
  }
  void Read(UnicodeStringView text, TBook& book) {
    Serializer->GetDocument().LoadFromText(text);
    Serializer->Deserialize(&book);
  }
};

TEST_F(XmlSpecsTest, StringListsAreCommaText) {
  TBook book;
  book.GetNames()->Add(u"a");
  book.GetNames()->Add(u"b c");
  book.GetNames()->Add(u"");
  book.GetNames()->Add(u"say \"hi\"");
  const UnicodeString text = Write(book);
  EXPECT_NE(text.find(u"<Names>a,\"b c\",\"\",\"say \"\"hi\"\"\"</Names>"), UnicodeString::npos)
      << Rtl::Strings::Utf16ToUtf8(text);

  TBook read;
  read.GetNames()->Add(u"old");
  Read(text, read);
  EXPECT_EQ(read.GetNames()->GetCommaText(), book.GetNames()->GetCommaText());
  EXPECT_EQ(read.GetNames()->GetCount(), 4);

  // An emptied list is written without text and empties the list it is read into.
  TBook empty;
  const UnicodeString emptyText = Write(empty);
  EXPECT_NE(emptyText.find(u"<Names />"), UnicodeString::npos);
  Read(emptyText, read);
  EXPECT_EQ(read.GetNames()->GetCount(), 0);
}

TEST_F(XmlSpecsTest, CollectionsWriteItemsAndReadThemOnce) {
  TBook book;
  for (int i = 1; i <= 2; ++i) {
    auto* page = static_cast<TPage*>(book.GetPages()->Add());
    page->Title = u"p" + Rtl::Strings::IntToStr(i);
    page->Lines = i * 10;
  }
  const UnicodeString text = Write(book);
  EXPECT_NE(text.find(u"  <Pages>\n    <Item>\n      <Title>p1</Title>\n      <Lines>10</Lines>\n    </Item>\n"
                      u"    <Item>\n      <Title>p2</Title>\n      <Lines>20</Lines>\n    </Item>\n  </Pages>\n"),
            UnicodeString::npos)
      << Rtl::Strings::Utf16ToUtf8(text);

  TBook read;
  Read(text, read);
  Read(text, read);
  ASSERT_EQ(read.GetPages()->Count(), 2);
  EXPECT_EQ(read.Page(1)->Title, u"p2");
  EXPECT_EQ(read.Page(1)->Lines, 20);

  // Children are items whatever their names; an empty element clears.
  Read(u"<Root><Pages><Page><Lines>1</Lines></Page><x/></Pages></Root>", read);
  ASSERT_EQ(read.GetPages()->Count(), 2);
  EXPECT_EQ(read.Page(0)->Lines, 1);
  Read(u"<Root><Pages/></Root>", read);
  EXPECT_EQ(read.GetPages()->Count(), 0);
}

TEST_F(XmlSpecsTest, ListsKeepTheElementsThatCanBeMadeAgain) {
  TBook book;
  for (int n : {3, 1, 2}) book.Numbers->Add(n);
  auto* tag = new TTag;
  tag->Text = u"kept";
  book.Tags->Add(tag);
  book.Tags->Add(new TLabel);
  const UnicodeString text = Write(book);
  EXPECT_NE(text.find(u"<Numbers>\n    <Item>3</Item>\n    <Item>1</Item>\n    <Item>2</Item>\n  </Numbers>"),
            UnicodeString::npos);
  EXPECT_NE(text.find(u"<Item type=\"Specs.Tag\">"), UnicodeString::npos);

  TBook read;
  read.Numbers->Add(99);
  Read(text, read);
  EXPECT_EQ(std::vector<int>(read.Numbers->begin(), read.Numbers->end()), (std::vector<int>{3, 1, 2}));
  // The unregistered label has no "type" and is skipped.
  ASSERT_EQ(read.Tags->Count(), 1);
  EXPECT_EQ(read.Tags->Item(0)->Text, u"kept");

  read.ClearTags();  // the list holds the objects, the book owns them
  Read(u"<Root><Numbers/><Tags><Item type=\"Nobody\"/></Tags></Root>", read);
  EXPECT_EQ(read.Numbers->Count(), 0);
  EXPECT_EQ(read.Tags->Count(), 0);
}

TEST_F(XmlSpecsTest, BuiltInSpecsAreRegisteredInOrder) {
  TStringList strings;
  TCollection pages(TPage::StaticClass());
  IntfPtr<IList<int>> numbers = NewList<int>();
  TTag tag;
  const auto specClass = [](const TValue& value) {
    const IntfPtr<IXmlSerializerSpec> spec = TXmlSpecRegistry::TryGetSpec(value);
    return spec ? Rtl::Objects::ObjectOf(spec.Get())->ClassName() : u"none";
  };
  EXPECT_EQ(specClass(TValue::FromObject(&strings)), u"TStringsXmlSpec");
  EXPECT_EQ(specClass(TValue::FromObject(&pages)), u"TCollectionXmlSpec");
  EXPECT_EQ(specClass(TValue::From(numbers)), u"TSpringCollectionXmlSpec");
  EXPECT_EQ(specClass(TValue::FromObject(static_cast<Rtl::Collections::TList<int>*>(
                Rtl::Objects::ObjectOf(numbers.As<Rtl::Collections::IUntypedList>().Get())))),
            u"TSpringCollectionXmlSpec");
  EXPECT_EQ(specClass(TValue::From(1)), u"none");
  EXPECT_EQ(specClass(TValue::FromObject(&tag)), u"none");
}

}  // namespace
}  // namespace Quorvex::Rtti::XMLSpecs
