#include "Quorvex.Rtl.Xml.hpp"

#include <algorithm>
#include <iterator>
#include <pugixml.hpp>

#include "Quorvex.Rtl.Files.hpp"

namespace Quorvex::Rtl::Xml {

struct TXmlTree {
  pugi::xml_document Document;
};

namespace {

using Strings::Format;
using Strings::Utf16ToUtf8;
using Strings::Utf8ToUtf16;

// Keeps the declaration, drops whitespace-only text between elements so
// that an indented file reads back with the children it was written from.
constexpr unsigned ParseOptions = pugi::parse_default | pugi::parse_declaration;

void CheckText(UnicodeStringView text) {
  if (text.find(u'\0') != UnicodeStringView::npos) throw EXmlError(u"Invalid XML text");
}

// Rejects what would make the written document unreadable: no name, or
// characters that end a name or a tag.
std::string NameToUtf8(UnicodeStringView name) {
  if (name.empty() || name.find_first_of(UnicodeStringView(u" \t\r\n<>&'\"/=\0", 13)) != UnicodeStringView::npos)
    throw EXmlError(Format(u"Invalid XML name \"%s\"", name));
  return Utf16ToUtf8(name);
}

// True when the UTF-8 `utf8` spells `name`. Names are ASCII almost always,
// so they are compared in place; others are converted first.
bool SameName(const char* utf8, UnicodeStringView name) {
  size_t i = 0;
  for (; i < name.size(); ++i) {
    const auto c = static_cast<unsigned char>(utf8[i]);
    if (c == 0 || c >= 0x80 || name[i] >= 0x80) break;
    if (c != name[i]) return false;
  }
  if (i == name.size()) return utf8[i] == 0;
  return Utf8ToUtf16(utf8) == name;
}

std::string TextToUtf8(UnicodeStringView text) {
  CheckText(text);
  return Utf16ToUtf8(text);
}

bool IsTextNode(const pugi::xml_node& node) {
  return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

// "line %d, column %d" of a byte offset into UTF-8 text, both counted
// from 1 and the column in characters.
UnicodeString Position(std::string_view text, size_t offset) {
  const std::string_view before = text.substr(0, std::min(offset, text.size()));
  const size_t lineStart = before.rfind('\n') + 1;  // 0 when there is no line break
  const auto line = std::count(before.begin(), before.end(), '\n') + 1;
  const auto column = std::count_if(before.begin() + static_cast<ptrdiff_t>(lineStart), before.end(),
                                    [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }) +
                      1;
  return Format(u"line %d, column %d", static_cast<int64_t>(line), static_cast<int64_t>(column));
}

// A tree parsed from `bytes`; `source` ("file \"name\"" or "text") names
// what failed in the EXmlError raised for text that is not well-formed.
std::shared_ptr<TXmlTree> Parse(std::string_view bytes, pugi::xml_encoding encoding, UnicodeStringView source) {
  auto tree = std::make_shared<TXmlTree>();
  const pugi::xml_parse_result result = tree->Document.load_buffer(bytes.data(), bytes.size(), ParseOptions, encoding);
  if (!result)
    throw EXmlError(Format(u"Error loading XML %s: %s at %s", source, Utf8ToUtf16(result.description()),
                           Position(bytes, static_cast<size_t>(result.offset))));
  return tree;
}

pugi::xml_encoding SaveEncoding(UnicodeStringView declared) {
  if (declared.empty() || Strings::SameText(declared, u"UTF-8")) return pugi::encoding_utf8;
  if (Strings::SameText(declared, u"UTF-16")) return pugi::encoding_utf16_le;
  if (Strings::SameText(declared, u"ISO-8859-1")) return pugi::encoding_latin1;
  throw EXmlError(Format(u"Unsupported XML encoding \"%s\"", declared));
}

struct TStringWriter : pugi::xml_writer {
  std::string Bytes;
  void write(const void* data, size_t size) override { Bytes.append(static_cast<const char*>(data), size); }
};

// The tree's bytes. Only a declaration the document holds is written.
std::string Serialize(const pugi::xml_document& document, bool indent, pugi::xml_encoding encoding) {
  TStringWriter writer;
  const unsigned flags = (indent ? pugi::format_indent : pugi::format_raw) | pugi::format_no_declaration;
  document.save(writer, "  ", flags, encoding);
  return std::move(writer.Bytes);
}

pugi::xml_node DeclarationOf(const pugi::xml_document& document) {
  const pugi::xml_node first = document.first_child();
  return first.type() == pugi::node_declaration ? first : pugi::xml_node();
}

pugi::xml_node EnsureDeclaration(pugi::xml_document& document) {
  const pugi::xml_node existing = DeclarationOf(document);
  return existing ? existing : document.prepend_child(pugi::node_declaration);
}

void SetDeclared(pugi::xml_document& document, const char* name, UnicodeStringView value) {
  const std::string utf8 = TextToUtf8(value);  // checked before the declaration is added
  pugi::xml_node declaration = EnsureDeclaration(document);
  pugi::xml_attribute attribute = declaration.attribute(name);
  if (!attribute) attribute = declaration.append_attribute(name);
  attribute.set_value(utf8.c_str());
}

}  // namespace

// ---------------------------------------------------------------- TXmlNode

namespace {

pugi::xml_node NodeOf(void* node) { return pugi::xml_node(static_cast<pugi::xml_node_struct*>(node)); }

}  // namespace

UnicodeString TXmlNode::Name() const { return Utf8ToUtf16(NodeOf(FNode).name()); }

bool TXmlNode::IsText() const { return IsTextNode(NodeOf(FNode)); }

int TXmlNode::ChildCount() const {
  const auto children = NodeOf(FNode).children();
  return static_cast<int>(std::distance(children.begin(), children.end()));
}

TXmlNode TXmlNode::Child(int index) const {
  if (index >= 0) {
    int at = 0;
    for (const pugi::xml_node child : NodeOf(FNode).children())
      if (at++ == index) return TXmlNode(FTree, child.internal_object());
  }
  Exceptions::RaiseListIndexError(index);
}

std::vector<TXmlNode> TXmlNode::Children() const {
  std::vector<TXmlNode> children;
  for (const pugi::xml_node child : NodeOf(FNode).children()) children.push_back(TXmlNode(FTree, child.internal_object()));
  return children;
}

bool TXmlNode::HasChildren() const { return static_cast<bool>(NodeOf(FNode).first_child()); }

std::optional<TXmlNode> TXmlNode::FirstChild(UnicodeStringView name) const {
  for (const pugi::xml_node child : NodeOf(FNode).children())
    if (child.type() == pugi::node_element && SameName(child.name(), name))
      return TXmlNode(FTree, child.internal_object());
  return std::nullopt;
}

TXmlNode TXmlNode::AppendChild(UnicodeStringView name) {
  const std::string utf8 = NameToUtf8(name);
  return TXmlNode(FTree, NodeOf(FNode).append_child(utf8.c_str()).internal_object());
}

void TXmlNode::ClearChildren() {
  pugi::xml_node node = NodeOf(FNode);
  while (node.first_child()) node.remove_child(node.first_child());
}

UnicodeString TXmlNode::Attribute(UnicodeStringView name) const {
  return Utf8ToUtf16(NodeOf(FNode).attribute(NameToUtf8(name).c_str()).value());
}

bool TXmlNode::HasAttribute(UnicodeStringView name) const {
  return !NodeOf(FNode).attribute(NameToUtf8(name).c_str()).empty();
}

void TXmlNode::SetAttribute(UnicodeStringView name, UnicodeStringView value) {
  const std::string utf8Name = NameToUtf8(name);
  const std::string utf8Value = TextToUtf8(value);
  pugi::xml_node node = NodeOf(FNode);
  pugi::xml_attribute attribute = node.attribute(utf8Name.c_str());
  if (!attribute) attribute = node.append_attribute(utf8Name.c_str());
  attribute.set_value(utf8Value.c_str());
}

std::optional<UnicodeString> TXmlNode::Value() const {
  const pugi::xml_node node = NodeOf(FNode);
  if (IsTextNode(node)) return Utf8ToUtf16(node.value());
  for (const pugi::xml_node child : node.children())
    if (IsTextNode(child)) return Utf8ToUtf16(child.value());
  return std::nullopt;
}

void TXmlNode::SetValue(UnicodeStringView value) {
  const std::string utf8 = TextToUtf8(value);
  pugi::xml_node node = NodeOf(FNode);
  if (IsTextNode(node)) {
    node.set_value(utf8.c_str());
    return;
  }
  for (pugi::xml_node child = node.first_child(); child;) {
    const pugi::xml_node next = child.next_sibling();
    if (IsTextNode(child)) node.remove_child(child);
    child = next;
  }
  node.append_child(pugi::node_pcdata).set_value(utf8.c_str());
}

// ---------------------------------------------------------------- TXmlDocument

TXmlDocument::TXmlDocument() : FTree(std::make_shared<TXmlTree>()) {}

TXmlDocument::~TXmlDocument() = default;

UnicodeString TXmlDocument::Version() const {
  return Utf8ToUtf16(DeclarationOf(FTree->Document).attribute("version").value());
}

void TXmlDocument::SetVersion(UnicodeStringView version) { SetDeclared(FTree->Document, "version", version); }

UnicodeString TXmlDocument::Encoding() const {
  return Utf8ToUtf16(DeclarationOf(FTree->Document).attribute("encoding").value());
}

void TXmlDocument::SetEncoding(UnicodeStringView encoding) { SetDeclared(FTree->Document, "encoding", encoding); }

std::optional<TXmlNode> TXmlDocument::DocumentElement() const {
  const pugi::xml_node element = FTree->Document.document_element();
  if (!element) return std::nullopt;
  return TXmlNode(FTree, element.internal_object());
}

TXmlNode TXmlDocument::CreateDocumentElement(UnicodeStringView name) {
  const std::string utf8 = NameToUtf8(name);
  pugi::xml_document& document = FTree->Document;
  if (const pugi::xml_node old = document.document_element()) document.remove_child(old);
  return TXmlNode(FTree, document.append_child(utf8.c_str()).internal_object());
}

void TXmlDocument::LoadFromFile(UnicodeStringView fileName) {
  const Files::RawByteString bytes = Files::ReadFileBytes(fileName);
  FTree = Parse(bytes, pugi::encoding_auto, Format(u"file \"%s\"", fileName));
  ++FGeneration;
}

void TXmlDocument::SaveToFile(UnicodeStringView fileName) const {
  Files::ReplaceFileBytes(fileName, Serialize(FTree->Document, FIndent, SaveEncoding(Encoding())));
}

void TXmlDocument::LoadFromText(UnicodeStringView text) {
  FTree = Parse(Utf16ToUtf8(text), pugi::encoding_utf8, u"text");
  ++FGeneration;
}

UnicodeString TXmlDocument::SaveToText() const {
  return Utf8ToUtf16(Serialize(FTree->Document, FIndent, pugi::encoding_utf8));
}

}  // namespace Quorvex::Rtl::Xml
