// XML documents in memory: a declaration with version and encoding, one
// document element, and elements with ordered children, attributes and an
// optional text value. Text is UTF-16 throughout; files are read and
// written through the runtime's own file functions, so their names may
// hold any character the file system takes.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::Rtl::Xml {

using Strings::UnicodeString;
using Strings::UnicodeStringView;

// Text that is not well-formed XML, a name that cannot be an XML name, or
// an encoding a document cannot be saved in.
QX_DECLARE_EXCEPTION(EXmlError, Exceptions::Exception, "Quorvex.Rtl.Xml");

// The tree behind a document; every node handle shares it, so a handle
// stays valid after its document is destroyed or loads another tree.
struct TXmlTree;

// A light handle to an element or a text node of a document.
class QXRTL_API TXmlNode {
 public:
  // The element's name; empty for a text node.
  UnicodeString Name() const;
  // True for a text (or CDATA) node, false for an element.
  bool IsText() const;

  // Number of child nodes, text nodes included.
  int ChildCount() const;
  // The child at 0-based `index`. Raises EListError "List index out of
  // bounds (%d)" for an index outside 0..ChildCount()-1.
  TXmlNode Child(int index) const;
  // Every child node in order, text nodes included; walking them this way
  // takes linear time, where Child(i) for each i would take quadratic.
  std::vector<TXmlNode> Children() const;
  // True when the node has at least one child node (ChildCount() > 0).
  bool HasChildren() const;
  // The first child element called `name`; nullopt when there is none.
  std::optional<TXmlNode> FirstChild(UnicodeStringView name) const;
  // Appends a new, empty child element called `name` and returns it.
  // Raises EXmlError "Invalid XML name \"%s\"" for a name XML cannot hold.
  TXmlNode AppendChild(UnicodeStringView name);
  // Removes every child node; the attributes stay.
  void ClearChildren();

  // The attribute's value; empty text when the element has no such attribute.
  UnicodeString Attribute(UnicodeStringView name) const;
  bool HasAttribute(UnicodeStringView name) const;
  // Adds the attribute or replaces its value. Raises EXmlError for an
  // invalid name (as AppendChild) or "Invalid XML text" for text with a NUL.
  void SetAttribute(UnicodeStringView name, UnicodeStringView value);

  // A text node's text, or an element's first text child; nullopt for an
  // element without text: <a/> and <a></a> have none, <a>x</a> has "x".
  std::optional<UnicodeString> Value() const;
  // Replaces the element's text children by one text child holding `value`
  // (a text node takes `value` itself). Raises EXmlError "Invalid XML text"
  // for text with a NUL.
  void SetValue(UnicodeStringView value);

 private:
  friend class TXmlDocument;
  TXmlNode(std::shared_ptr<TXmlTree> tree, void* node) : FTree(std::move(tree)), FNode(node) {}

  std::shared_ptr<TXmlTree> FTree;
  void* FNode;  // the parser's node record inside FTree
};

// An XML document. Loads replace the whole tree only when the new text is
// well-formed, so a failed load leaves the document as it was.
class QXRTL_API TXmlDocument {
 public:
  // An empty document: no declaration, no document element, no indentation.
  TXmlDocument();
  ~TXmlDocument();
  TXmlDocument(const TXmlDocument&) = delete;
  TXmlDocument& operator=(const TXmlDocument&) = delete;

  // The declaration's version and encoding; empty when not declared.
  // Setting either adds the declaration if the document has none.
  UnicodeString Version() const;
  void SetVersion(UnicodeStringView version);
  UnicodeString Encoding() const;
  void SetEncoding(UnicodeStringView encoding);

  // Whether saving puts each element on its own line, indented by two
  // spaces per level; off writes the document on one line.
  bool Indent() const { return FIndent; }
  void SetIndent(bool indent) { FIndent = indent; }

  // Counts the loads: it changes whenever a load replaces the tree, so a
  // holder of node handles can tell they belong to the previous content.
  uint64_t Generation() const { return FGeneration; }

  // The document element; nullopt for an empty document.
  std::optional<TXmlNode> DocumentElement() const;
  // Makes a new, empty element called `name` the document element,
  // dropping the old one. Raises EXmlError for an invalid name.
  TXmlNode CreateDocumentElement(UnicodeStringView name);

  // Reads the file, in the encoding its byte-order mark or declaration
  // names. Raises EFOpenError "Cannot open file \"%s\". %s" when it cannot
  // be opened, EXmlError "Error loading XML file \"%s\": %s at line %d,
  // column %d" (name, reason, position) when it is not well-formed.
  void LoadFromFile(UnicodeStringView fileName);
  // Writes the document in its declared encoding (UTF-8 when none).
  // Raises EFCreateError "Cannot create file \"%s\". %s" when the file
  // cannot be created, EXmlError "Unsupported XML encoding \"%s\"" for an
  // encoding other than UTF-8, UTF-16 and ISO-8859-1.
  void SaveToFile(UnicodeStringView fileName) const;

  // Parses `text`, ignoring the encoding it declares. Raises EXmlError
  // "Error loading XML text: %s at line %d, column %d" when it is not well-formed.
  void LoadFromText(UnicodeStringView text);
  // The document as text, as SaveToFile would write it.
  UnicodeString SaveToText() const;

 private:
  std::shared_ptr<TXmlTree> FTree;
  bool FIndent = false;
  uint64_t FGeneration = 0;
};

}  // namespace Quorvex::Rtl::Xml
