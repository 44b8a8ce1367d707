#include "Quorvex.System.Collections.hpp"

namespace Quorvex::System::Collections {

TInterfacedStringList::TInterfacedStringList(bool ownsObjects) : FStrings(std::make_unique<TStringList>(ownsObjects)) {}

TInterfacedStringList::~TInterfacedStringList() = default;

IntfPtr<IStrings> TInterfacedStringList::Create(bool ownsObjects) {
  return IntfPtr<IStrings>(Rtl::Objects::CreateObject<TInterfacedStringList>(ownsObjects));
}

UnicodeString TInterfacedStringList::GetCommaText() { return FStrings->GetCommaText(); }

UnicodeString TInterfacedStringList::GetDelimitedText() { return FStrings->GetDelimitedText(); }

UnicodeString TInterfacedStringList::GetName(int index) { return FStrings->GetName(index); }

UnicodeString TInterfacedStringList::GetValue(const UnicodeString& name) { return FStrings->GetValue(name); }

void TInterfacedStringList::SetCommaText(const UnicodeString& text) { FStrings->SetCommaText(text); }

void TInterfacedStringList::SetDelimitedText(const UnicodeString& text) { FStrings->SetDelimitedText(text); }

void TInterfacedStringList::SetStringsAdapter(const IntfPtr<IStringsAdapter>& adapter) {
  FStrings->SetStringsAdapter(adapter);
}

IntfPtr<IStringsAdapter> TInterfacedStringList::GetStringsAdapter() { return FStrings->GetStringsAdapter(); }

void TInterfacedStringList::SetValue(const UnicodeString& name, const UnicodeString& value) {
  FStrings->SetValue(name, value);
}

Char TInterfacedStringList::GetDelimiter() { return FStrings->GetDelimiter(); }

void TInterfacedStringList::SetDelimiter(Char delimiter) { FStrings->SetDelimiter(delimiter); }

UnicodeString TInterfacedStringList::GetLineBreak() { return FStrings->GetLineBreak(); }

void TInterfacedStringList::SetLineBreak(const UnicodeString& lineBreak) { FStrings->SetLineBreak(lineBreak); }

Char TInterfacedStringList::GetQuoteChar() { return FStrings->GetQuoteChar(); }

void TInterfacedStringList::SetQuoteChar(Char quoteChar) { FStrings->SetQuoteChar(quoteChar); }

Char TInterfacedStringList::GetNameValueSeparator() { return FStrings->GetNameValueSeparator(); }

void TInterfacedStringList::SetNameValueSeparator(Char separator) { FStrings->SetNameValueSeparator(separator); }

bool TInterfacedStringList::GetStrictDelimiter() { return FStrings->GetStrictDelimiter(); }

void TInterfacedStringList::SetStrictDelimiter(bool strict) { FStrings->SetStrictDelimiter(strict); }

UnicodeString TInterfacedStringList::GetValueFromIndex(int index) { return FStrings->GetValueFromIndex(index); }

void TInterfacedStringList::SetValueFromIndex(int index, const UnicodeString& value) {
  FStrings->SetValueFromIndex(index, value);
}

void TInterfacedStringList::SetDefaultEncoding(TEncoding* encoding) { FStrings->SetDefaultEncoding(encoding); }

TEncoding* TInterfacedStringList::GetDefaultEncoding() { return FStrings->GetDefaultEncoding(); }

TEncoding* TInterfacedStringList::GetEncoding() { return FStrings->GetEncoding(); }

bool TInterfacedStringList::GetWriteBOM() { return FStrings->GetWriteBOM(); }

void TInterfacedStringList::SetWriteBOM(bool writeBOM) { FStrings->SetWriteBOM(writeBOM); }

void TInterfacedStringList::Put(int index, const UnicodeString& s) { FStrings->Put(index, s); }

void TInterfacedStringList::PutObject(int index, TObject* object) { FStrings->PutObject(index, object); }

UnicodeString TInterfacedStringList::Get(int index) { return FStrings->Get(index); }

int TInterfacedStringList::GetCapacity() { return FStrings->GetCapacity(); }

int TInterfacedStringList::GetCount() { return FStrings->GetCount(); }

TObject* TInterfacedStringList::GetObject(int index) { return FStrings->GetObject(index); }

UnicodeString TInterfacedStringList::GetTextStr() { return FStrings->GetTextStr(); }

void TInterfacedStringList::SetCapacity(int capacity) { FStrings->SetCapacity(capacity); }

void TInterfacedStringList::SetTextStr(const UnicodeString& text) { FStrings->SetTextStr(text); }

TStringList* TInterfacedStringList::AsObject() { return FStrings.get(); }

int TInterfacedStringList::Add(const UnicodeString& s) { return FStrings->Add(s); }

int TInterfacedStringList::AddObject(const UnicodeString& s, TObject* object) { return FStrings->AddObject(s, object); }

void TInterfacedStringList::Append(const UnicodeString& s) { FStrings->Append(s); }

void TInterfacedStringList::AddStrings(const TStrings& strings) { FStrings->AddStrings(strings); }

void TInterfacedStringList::AddStrings(const IntfPtr<IStrings>& strings) {
  // A counted copy keeps the source alive while its lines are read, even if
  // the caller's reference goes away meanwhile (adding a list to itself).
  const IntfPtr<IStrings> source = strings;
  if (source) FStrings->AddStrings(*source->AsObject());
}

void TInterfacedStringList::AddStrings(const TStringDynArray& strings) { FStrings->AddStrings(strings); }

void TInterfacedStringList::AddStrings(const TStringDynArray& strings, const TObjectDynArray& objects) {
  FStrings->AddStrings(strings, objects);
}

void TInterfacedStringList::Assign(TPersistent* source) { FStrings->Assign(source); }

void TInterfacedStringList::BeginUpdate() { FStrings->BeginUpdate(); }

void TInterfacedStringList::Clear() { FStrings->Clear(); }

void TInterfacedStringList::Delete(int index) { FStrings->Delete(index); }

void TInterfacedStringList::EndUpdate() { FStrings->EndUpdate(); }

bool TInterfacedStringList::Equals(const TStrings& strings) { return FStrings->Equals(strings); }

void TInterfacedStringList::Exchange(int index1, int index2) { FStrings->Exchange(index1, index2); }

TStringsEnumerator* TInterfacedStringList::GetEnumerator() { return FStrings->GetEnumerator(); }

Char* TInterfacedStringList::GetText() { return FStrings->GetText(); }

int TInterfacedStringList::IndexOf(const UnicodeString& s) { return FStrings->IndexOf(s); }

int TInterfacedStringList::IndexOfName(const UnicodeString& name) { return FStrings->IndexOfName(name); }

int TInterfacedStringList::IndexOfObject(TObject* object) { return FStrings->IndexOfObject(object); }

void TInterfacedStringList::Insert(int index, const UnicodeString& s) { FStrings->Insert(index, s); }

void TInterfacedStringList::InsertObject(int index, const UnicodeString& s, TObject* object) {
  FStrings->InsertObject(index, s, object);
}

void TInterfacedStringList::LoadFromFile(const UnicodeString& fileName) { FStrings->LoadFromFile(fileName); }

void TInterfacedStringList::LoadFromFile(const UnicodeString& fileName, TEncoding* encoding) {
  FStrings->LoadFromFile(fileName, encoding);
}

void TInterfacedStringList::LoadFromStream(TStream& stream) { FStrings->LoadFromStream(stream); }

void TInterfacedStringList::LoadFromStream(TStream& stream, TEncoding* encoding) {
  FStrings->LoadFromStream(stream, encoding);
}

void TInterfacedStringList::Move(int curIndex, int newIndex) { FStrings->Move(curIndex, newIndex); }

void TInterfacedStringList::SaveToFile(const UnicodeString& fileName) { FStrings->SaveToFile(fileName); }

void TInterfacedStringList::SaveToFile(const UnicodeString& fileName, TEncoding* encoding) {
  FStrings->SaveToFile(fileName, encoding);
}

void TInterfacedStringList::SaveToStream(TStream& stream) { FStrings->SaveToStream(stream); }

void TInterfacedStringList::SaveToStream(TStream& stream, TEncoding* encoding) {
  FStrings->SaveToStream(stream, encoding);
}

void TInterfacedStringList::SetText(const Char* text) { FStrings->SetText(text); }

TStringDynArray TInterfacedStringList::ToStringArray() { return FStrings->ToStringArray(); }

TObjectDynArray TInterfacedStringList::ToObjectArray() { return FStrings->ToObjectArray(); }

}  // namespace Quorvex::System::Collections
