// The reference-counted string list: IStrings, handed around and kept alive
// by interface references, and TInterfacedStringList, which implements it by
// forwarding every operation to a runtime TStringList it owns.
#pragma once

#include <memory>

#include "Quorvex.Rtl.Classes.hpp"
#include "Quorvex.Rtl.Encoding.hpp"
#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Objects.hpp"
#include "Quorvex.Rtl.Streams.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::System::Collections {

using Rtl::Classes::IStringsAdapter;
using Rtl::Classes::TObjectDynArray;
using Rtl::Classes::TPersistent;
using Rtl::Classes::TStringList;
using Rtl::Classes::TStrings;
using Rtl::Classes::TStringsEnumerator;
using Rtl::Encoding::TEncoding;
using Rtl::Objects::IInterface;
using Rtl::Objects::IntfPtr;
using Rtl::Objects::TGUID;
using Rtl::Objects::TObject;
using Rtl::Streams::TStream;
using Rtl::Strings::Char;
using Rtl::Strings::TStringDynArray;
using Rtl::Strings::UnicodeString;

// A string list reached through a counted interface. Each operation behaves
// exactly as the TStrings member of the same name, failures included (list
// index errors, stream and file errors). The declaration order is the slot
// order of the interface and must not change.
class IStrings : public virtual IInterface {
 public:
  static constexpr TGUID IID = TGUID::Parse("{1407E475-A5E9-436B-A59B-CDCDA5027376}");

  virtual UnicodeString GetCommaText() = 0;
  virtual UnicodeString GetDelimitedText() = 0;
  virtual UnicodeString GetName(int index) = 0;
  virtual UnicodeString GetValue(const UnicodeString& name) = 0;
  virtual void SetCommaText(const UnicodeString& text) = 0;
  virtual void SetDelimitedText(const UnicodeString& text) = 0;
  virtual void SetStringsAdapter(const IntfPtr<IStringsAdapter>& adapter) = 0;
  virtual IntfPtr<IStringsAdapter> GetStringsAdapter() = 0;
  virtual void SetValue(const UnicodeString& name, const UnicodeString& value) = 0;
  virtual Char GetDelimiter() = 0;
  virtual void SetDelimiter(Char delimiter) = 0;
  virtual UnicodeString GetLineBreak() = 0;
  virtual void SetLineBreak(const UnicodeString& lineBreak) = 0;
  virtual Char GetQuoteChar() = 0;
  virtual void SetQuoteChar(Char quoteChar) = 0;
  virtual Char GetNameValueSeparator() = 0;
  virtual void SetNameValueSeparator(Char separator) = 0;
  virtual bool GetStrictDelimiter() = 0;
  virtual void SetStrictDelimiter(bool strict) = 0;
  virtual UnicodeString GetValueFromIndex(int index) = 0;
  virtual void SetValueFromIndex(int index, const UnicodeString& value) = 0;
  virtual void SetDefaultEncoding(TEncoding* encoding) = 0;
  virtual TEncoding* GetDefaultEncoding() = 0;
  virtual TEncoding* GetEncoding() = 0;
  virtual bool GetWriteBOM() = 0;
  virtual void SetWriteBOM(bool writeBOM) = 0;
  virtual void Put(int index, const UnicodeString& s) = 0;
  virtual void PutObject(int index, TObject* object) = 0;
  virtual UnicodeString Get(int index) = 0;
  virtual int GetCapacity() = 0;
  virtual int GetCount() = 0;
  virtual TObject* GetObject(int index) = 0;
  virtual UnicodeString GetTextStr() = 0;
  virtual void SetCapacity(int capacity) = 0;
  virtual void SetTextStr(const UnicodeString& text) = 0;
  // The inner list itself, still owned by the implementing object: keep an
  // IStrings reference for as long as the pointer is used.
  virtual TStringList* AsObject() = 0;
  virtual int Add(const UnicodeString& s) = 0;
  virtual int AddObject(const UnicodeString& s, TObject* object) = 0;
  virtual void Append(const UnicodeString& s) = 0;
  virtual void AddStrings(const TStrings& strings) = 0;
  // Adds the lines (with their objects) of another IStrings, which is held
  // for the duration of the call; a null reference adds nothing.
  virtual void AddStrings(const IntfPtr<IStrings>& strings) = 0;
  virtual void AddStrings(const TStringDynArray& strings) = 0;
  virtual void AddStrings(const TStringDynArray& strings, const TObjectDynArray& objects) = 0;
  virtual void Assign(TPersistent* source) = 0;
  virtual void BeginUpdate() = 0;
  virtual void Clear() = 0;
  virtual void Delete(int index) = 0;
  virtual void EndUpdate() = 0;
  virtual bool Equals(const TStrings& strings) = 0;
  virtual void Exchange(int index1, int index2) = 0;
  // A new enumerator; the caller frees it.
  virtual TStringsEnumerator* GetEnumerator() = 0;
  // A new zero-terminated buffer; the caller frees it with StrDispose.
  virtual Char* GetText() = 0;
  virtual int IndexOf(const UnicodeString& s) = 0;
  virtual int IndexOfName(const UnicodeString& name) = 0;
  virtual int IndexOfObject(TObject* object) = 0;
  virtual void Insert(int index, const UnicodeString& s) = 0;
  virtual void InsertObject(int index, const UnicodeString& s, TObject* object) = 0;
  virtual void LoadFromFile(const UnicodeString& fileName) = 0;
  virtual void LoadFromFile(const UnicodeString& fileName, TEncoding* encoding) = 0;
  virtual void LoadFromStream(TStream& stream) = 0;
  virtual void LoadFromStream(TStream& stream, TEncoding* encoding) = 0;
  virtual void Move(int curIndex, int newIndex) = 0;
  virtual void SaveToFile(const UnicodeString& fileName) = 0;
  virtual void SaveToFile(const UnicodeString& fileName, TEncoding* encoding) = 0;
  virtual void SaveToStream(TStream& stream) = 0;
  virtual void SaveToStream(TStream& stream, TEncoding* encoding) = 0;
  virtual void SetText(const Char* text) = 0;
  virtual TStringDynArray ToStringArray() = 0;
  virtual TObjectDynArray ToObjectArray() = 0;

 protected:
  ~IStrings() = default;
};

// The counted string list. It owns one TStringList with the runtime's
// default settings, made by the constructor and freed (with the objects it
// owns) when the last reference goes; every IStrings operation forwards to
// it unchanged.
class QXRTL_API TInterfacedStringList : public Rtl::Objects::TInterfacedObject, public IStrings {
  QX_CLASS(TInterfacedStringList, TInterfacedObject, "Quorvex.System.Collections")
  QX_INTERFACES(IStrings)
 public:
  // The inner list frees line objects only when `ownsObjects`: on Delete,
  // on replacing a line's object, on Clear and on destruction.
  TInterfacedStringList() : TInterfacedStringList(false) {}
  explicit TInterfacedStringList(bool ownsObjects);
  ~TInterfacedStringList() override;
  TInterfacedStringList(const TInterfacedStringList&) = delete;
  TInterfacedStringList& operator=(const TInterfacedStringList&) = delete;

  // A new list held by its first reference.
  static IntfPtr<IStrings> Create(bool ownsObjects = false);

  UnicodeString GetCommaText() override;
  UnicodeString GetDelimitedText() override;
  UnicodeString GetName(int index) override;
  UnicodeString GetValue(const UnicodeString& name) override;
  void SetCommaText(const UnicodeString& text) override;
  void SetDelimitedText(const UnicodeString& text) override;
  void SetStringsAdapter(const IntfPtr<IStringsAdapter>& adapter) override;
  IntfPtr<IStringsAdapter> GetStringsAdapter() override;
  void SetValue(const UnicodeString& name, const UnicodeString& value) override;
  Char GetDelimiter() override;
  void SetDelimiter(Char delimiter) override;
  UnicodeString GetLineBreak() override;
  void SetLineBreak(const UnicodeString& lineBreak) override;
  Char GetQuoteChar() override;
  void SetQuoteChar(Char quoteChar) override;
  Char GetNameValueSeparator() override;
  void SetNameValueSeparator(Char separator) override;
  bool GetStrictDelimiter() override;
  void SetStrictDelimiter(bool strict) override;
  UnicodeString GetValueFromIndex(int index) override;
  void SetValueFromIndex(int index, const UnicodeString& value) override;
  void SetDefaultEncoding(TEncoding* encoding) override;
  TEncoding* GetDefaultEncoding() override;
  TEncoding* GetEncoding() override;
  bool GetWriteBOM() override;
  void SetWriteBOM(bool writeBOM) override;
  void Put(int index, const UnicodeString& s) override;
  void PutObject(int index, TObject* object) override;
  UnicodeString Get(int index) override;
  int GetCapacity() override;
  int GetCount() override;
  TObject* GetObject(int index) override;
  UnicodeString GetTextStr() override;
  void SetCapacity(int capacity) override;
  void SetTextStr(const UnicodeString& text) override;
  TStringList* AsObject() override;
  int Add(const UnicodeString& s) override;
  int AddObject(const UnicodeString& s, TObject* object) override;
  void Append(const UnicodeString& s) override;
  void AddStrings(const TStrings& strings) override;
  void AddStrings(const IntfPtr<IStrings>& strings) override;
  void AddStrings(const TStringDynArray& strings) override;
  void AddStrings(const TStringDynArray& strings, const TObjectDynArray& objects) override;
  void Assign(TPersistent* source) override;
  void BeginUpdate() override;
  void Clear() override;
  void Delete(int index) override;
  void EndUpdate() override;
  bool Equals(const TStrings& strings) override;
  void Exchange(int index1, int index2) override;
  TStringsEnumerator* GetEnumerator() override;
  Char* GetText() override;
  int IndexOf(const UnicodeString& s) override;
  int IndexOfName(const UnicodeString& name) override;
  int IndexOfObject(TObject* object) override;
  void Insert(int index, const UnicodeString& s) override;
  void InsertObject(int index, const UnicodeString& s, TObject* object) override;
  void LoadFromFile(const UnicodeString& fileName) override;
  void LoadFromFile(const UnicodeString& fileName, TEncoding* encoding) override;
  void LoadFromStream(TStream& stream) override;
  void LoadFromStream(TStream& stream, TEncoding* encoding) override;
  void Move(int curIndex, int newIndex) override;
  void SaveToFile(const UnicodeString& fileName) override;
  void SaveToFile(const UnicodeString& fileName, TEncoding* encoding) override;
  void SaveToStream(TStream& stream) override;
  void SaveToStream(TStream& stream, TEncoding* encoding) override;
  void SetText(const Char* text) override;
  TStringDynArray ToStringArray() override;
  TObjectDynArray ToObjectArray() override;

 private:
  std::unique_ptr<TStringList> FStrings;
};

}  // namespace Quorvex::System::Collections
