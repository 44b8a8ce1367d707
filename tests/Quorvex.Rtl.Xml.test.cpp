#include <gtest/gtest.h>

#include <functional>
#include <optional>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Files.TestSupport.hpp"
#include "Quorvex.Rtl.Files.hpp"
#include "Quorvex.Rtl.Xml.hpp"

namespace Quorvex::Rtl::Xml {
namespace {

using Exceptions::SysErrorMessage;
using Files::Testing::kNotFound;
using Files::Testing::OnWindows;
using Files::Testing::TTempFolder;
using Strings::Format;
using Strings::Utf16ToUtf8;

// Runs `action` and returns the message of the exception E it raises.
template <typename E>
std::string MessageOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const E& e) {
    return Utf16ToUtf8(e.Message());
  }
  ADD_FAILURE() << "no exception";
  return {};
}

// <Root version="2"><Item>x</Item><Empty/></Root> with a declaration.
void Fill(TXmlDocument& document) {
  document.SetVersion(u"1.0");
  document.SetEncoding(u"UTF-8");
  TXmlNode root = document.CreateDocumentElement(u"Root");
  root.SetAttribute(u"version", u"2");
  root.AppendChild(u"Item").SetValue(u"x");
  root.AppendChild(u"Empty");
}

TEST(RtlXmlTest, WritesTheDeclarationAndIndentsElements) {
  TXmlDocument document;
  Fill(document);
  document.SetIndent(true);
  TTempFolder folder;
  document.SaveToFile(folder / u"out.xml");
  EXPECT_EQ(Files::ReadFileBytes(folder / u"out.xml"),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<Root version=\"2\">\n"
            "  <Item>x</Item>\n"
            "  <Empty />\n"
            "</Root>\n");
  document.SetIndent(false);
  EXPECT_EQ(document.SaveToText(),
            u"<?xml version=\"1.0\" encoding=\"UTF-8\"?><Root version=\"2\"><Item>x</Item><Empty/></Root>");
}

TEST(RtlXmlTest, RoundTripsThroughAFileWithANonAsciiName) {
  TXmlDocument written;
  Fill(written);
  written.SetIndent(true);
  written.DocumentElement()->AppendChild(u"Text").SetValue(u"Grüße €");
  TTempFolder folder;
  const UnicodeString name = folder / u"Данные ü.xml";
  written.SaveToFile(name);

  TXmlDocument read;
  read.LoadFromFile(name);
  EXPECT_EQ(read.Version(), u"1.0");
  EXPECT_EQ(read.Encoding(), u"UTF-8");
  const TXmlNode root = *read.DocumentElement();
  EXPECT_EQ(root.Name(), u"Root");
  ASSERT_EQ(root.ChildCount(), 3);  // the indentation is not read back as text
  EXPECT_EQ(root.Child(2).Value(), u"Grüße €");
  read.SetIndent(true);  // an option of the document, not part of its text
  EXPECT_EQ(read.SaveToText(), written.SaveToText());
}

TEST(RtlXmlTest, TellsAnAbsentValueFromAnEmptyOne) {
  TXmlDocument document;
  document.LoadFromText(u"<r><a/><b></b><c>x</c><d>x<e/>y</d><f><![CDATA[<z>]]></f></r>");
  const TXmlNode root = *document.DocumentElement();
  const struct {
    int index;
    std::optional<UnicodeString> value;
  } cases[] = {{0, std::nullopt}, {1, std::nullopt}, {2, u"x"}, {3, u"x"}, {4, u"<z>"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.index);
    EXPECT_EQ(root.Child(c.index).Value(), c.value);
  }
  // Text nodes are children too, and a value set to empty text is there.
  const TXmlNode mixed = root.Child(3);
  EXPECT_EQ(mixed.ChildCount(), 3);
  EXPECT_TRUE(mixed.Child(0).IsText());
  EXPECT_EQ(mixed.Child(0).Name(), u"");
  EXPECT_EQ(mixed.Child(1).Name(), u"e");
  const std::vector<TXmlNode> children = mixed.Children();
  ASSERT_EQ(children.size(), 3u);
  EXPECT_TRUE(children[0].IsText());
  EXPECT_EQ(children[1].Name(), u"e");
  EXPECT_TRUE(mixed.HasChildren());
  EXPECT_FALSE(root.Child(1).HasChildren());
  TXmlNode empty = root.Child(0);
  empty.SetValue(u"");
  EXPECT_EQ(empty.Value(), u"");
  // Setting a value replaces every text child and keeps the elements.
  TXmlNode(mixed).SetValue(u"new");
  EXPECT_EQ(document.SaveToText(), u"<r><a></a><b/><c>x</c><d><e/>new</d><f><![CDATA[<z>]]></f></r>");
  EXPECT_EQ(MessageOf<Exceptions::EListError>([&] { mixed.Child(2); }), "List index out of bounds (2)");
  EXPECT_EQ(MessageOf<Exceptions::EListError>([&] { mixed.Child(-1); }), "List index out of bounds (-1)");
}

TEST(RtlXmlTest, ReadsAndWritesAttributesAndFindsChildrenByName) {
  TXmlDocument document;
  TXmlNode root = document.CreateDocumentElement(u"Root");
  EXPECT_EQ(root.Attribute(u"missing"), u"");
  EXPECT_FALSE(root.HasAttribute(u"missing"));
  root.SetAttribute(u"a", u"1 < 2 & \"q\"");
  root.SetAttribute(u"b", u"");
  root.SetAttribute(u"a", u"ü");
  EXPECT_EQ(root.Attribute(u"a"), u"ü");
  EXPECT_TRUE(root.HasAttribute(u"b"));

  root.AppendChild(u"x").SetValue(u"first");
  root.AppendChild(u"y");
  root.AppendChild(u"x").SetValue(u"second");
  EXPECT_EQ(root.FirstChild(u"x")->Value(), u"first");
  EXPECT_EQ(root.FirstChild(u"nothing"), std::nullopt);

  root.ClearChildren();
  EXPECT_EQ(root.ChildCount(), 0);
  EXPECT_EQ(document.SaveToText(), u"<Root a=\"ü\" b=\"\"/>");

  // A new document element replaces the old one.
  document.CreateDocumentElement(u"Other");
  EXPECT_EQ(document.SaveToText(), u"<Other/>");
}

TEST(RtlXmlTest, RejectsNamesAndTextXmlCannotHold) {
  TXmlDocument document;
  TXmlNode root = document.CreateDocumentElement(u"Root");
  for (const UnicodeString& name :
       {UnicodeString(), UnicodeString(u"a b"), UnicodeString(u"a<"), UnicodeString(u"a\0b", 3)}) {
    SCOPED_TRACE(Utf16ToUtf8(name));
    const std::string expected = "Invalid XML name \"" + Utf16ToUtf8(name) + "\"";
    EXPECT_EQ(MessageOf<EXmlError>([&] { root.AppendChild(name); }), expected);
    EXPECT_EQ(MessageOf<EXmlError>([&] { root.SetAttribute(name, u"v"); }), expected);
    EXPECT_EQ(MessageOf<EXmlError>([&] { document.CreateDocumentElement(name); }), expected);
  }
  const UnicodeString withNul(u"a\0b", 3);
  EXPECT_EQ(MessageOf<EXmlError>([&] { root.SetValue(withNul); }), "Invalid XML text");
  EXPECT_EQ(MessageOf<EXmlError>([&] { root.SetAttribute(u"a", withNul); }), "Invalid XML text");
  EXPECT_EQ(MessageOf<EXmlError>([&] { document.SetVersion(withNul); }), "Invalid XML text");
  EXPECT_EQ(document.SaveToText(), u"<Root/>");
}

TEST(RtlXmlTest, AFailedLoadLeavesTheDocumentAsItWas) {
  TXmlDocument document;
  Fill(document);
  const UnicodeString before = document.SaveToText();
  TTempFolder folder;
  const UnicodeString name = folder / u"bad.xml";
  Files::WriteFileBytes(name, "<?xml version=\"1.0\"?>\n<Root>\n  <Item>x</Itme>\n</Root>\n");

  EXPECT_EQ(MessageOf<EXmlError>([&] { document.LoadFromFile(name); }),
            "Error loading XML file \"" + Utf16ToUtf8(name) + "\": Start-end tags mismatch at line 3, column 12");
  EXPECT_EQ(MessageOf<EXmlError>([&] { document.LoadFromText(u"<é>\n<a"); }),
            "Error loading XML text: Error parsing start element tag at line 2, column 2");
  EXPECT_EQ(MessageOf<EXmlError>([&] { document.LoadFromText(u""); }),
            "Error loading XML text: No document element found at line 1, column 1");
  EXPECT_EQ(document.SaveToText(), before);
}

TEST(RtlXmlTest, ReportsFilesThatCannotBeOpenedOrCreated) {
  TXmlDocument document;
  Fill(document);
  TTempFolder folder;
  const UnicodeString missing = folder / u"missing.xml";
  EXPECT_EQ(MessageOf<Exceptions::EFOpenError>([&] { document.LoadFromFile(missing); }),
            Utf16ToUtf8(Format(u"Cannot open file \"%s\". %s", missing, SysErrorMessage(kNotFound))));
  EXPECT_EQ(document.DocumentElement()->Name(), u"Root");

  const UnicodeString inMissingFolder = folder / u"none/out.xml";
  const uint32_t pathNotFound = OnWindows() ? 3 : kNotFound;  // ERROR_PATH_NOT_FOUND, ENOENT
  EXPECT_EQ(MessageOf<Exceptions::EFCreateError>([&] { document.SaveToFile(inMissingFolder); }),
            Utf16ToUtf8(Format(u"Cannot create file \"%s\". %s", inMissingFolder, SysErrorMessage(pathNotFound))));

  document.SetEncoding(u"KOI8-R");
  const UnicodeString unsupported = folder / u"koi8.xml";
  EXPECT_EQ(MessageOf<EXmlError>([&] { document.SaveToFile(unsupported); }), "Unsupported XML encoding \"KOI8-R\"");
  EXPECT_FALSE(Files::FileExists(unsupported));
}

}  // namespace
}  // namespace Quorvex::Rtl::Xml
