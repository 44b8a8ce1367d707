#include <gtest/gtest.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Files.TestSupport.hpp"
#include "Quorvex.System.Collections.hpp"
#include "Quorvex.TestSupport.hpp"

namespace Quorvex::System::Collections {
namespace {

struct TCounted : TObject {
  explicit TCounted(int& freed) : FFreed(freed) {}
  ~TCounted() override { ++FFreed; }
  int& FFreed;
};

// The vtable slots of virtual member functions. Under the Itanium C++ ABI,
// which GCC follows on Linux and MinGW alike, a pointer to a virtual member
// holds 1 + the byte offset of its slot, then a this-adjustment.
struct TMemberPointer {
  uintptr_t Pointer;
  ptrdiff_t Adjust;
};

template <typename... Members>
std::vector<ptrdiff_t> SlotsOf(Members... members) {
  std::vector<ptrdiff_t> slots;
  for (const TMemberPointer& raw : {std::bit_cast<TMemberPointer>(members)...})
    slots.push_back(static_cast<ptrdiff_t>((raw.Pointer - 1) / sizeof(void*)));
  return slots;
}

using I = IStrings;
template <typename... Args>
using Proc = void (IStrings::*)(Args...);

TEST(SystemCollectionsTest, InterfaceSlotsFollowTheFixedOrder) {
  // Listed in the interface's fixed slot order; overloads picked by type.
  const std::vector<ptrdiff_t> slots = SlotsOf(
      &I::GetCommaText, &I::GetDelimitedText, &I::GetName, &I::GetValue, &I::SetCommaText, &I::SetDelimitedText,
      &I::SetStringsAdapter, &I::GetStringsAdapter, &I::SetValue, &I::GetDelimiter, &I::SetDelimiter, &I::GetLineBreak,
      &I::SetLineBreak, &I::GetQuoteChar, &I::SetQuoteChar, &I::GetNameValueSeparator, &I::SetNameValueSeparator,
      &I::GetStrictDelimiter, &I::SetStrictDelimiter, &I::GetValueFromIndex, &I::SetValueFromIndex,
      &I::SetDefaultEncoding, &I::GetDefaultEncoding, &I::GetEncoding, &I::GetWriteBOM, &I::SetWriteBOM, &I::Put,
      &I::PutObject, &I::Get, &I::GetCapacity, &I::GetCount, &I::GetObject, &I::GetTextStr, &I::SetCapacity,
      &I::SetTextStr, &I::AsObject, &I::Add, &I::AddObject, &I::Append, Proc<const TStrings&>(&I::AddStrings),
      Proc<const IntfPtr<IStrings>&>(&I::AddStrings), Proc<const TStringDynArray&>(&I::AddStrings),
      Proc<const TStringDynArray&, const TObjectDynArray&>(&I::AddStrings), &I::Assign, &I::BeginUpdate, &I::Clear,
      &I::Delete, &I::EndUpdate, &I::Equals, &I::Exchange, &I::GetEnumerator, &I::GetText, &I::IndexOf, &I::IndexOfName,
      &I::IndexOfObject, &I::Insert, &I::InsertObject, Proc<const UnicodeString&>(&I::LoadFromFile),
      Proc<const UnicodeString&, TEncoding*>(&I::LoadFromFile), Proc<TStream&>(&I::LoadFromStream),
      Proc<TStream&, TEncoding*>(&I::LoadFromStream), &I::Move, Proc<const UnicodeString&>(&I::SaveToFile),
      Proc<const UnicodeString&, TEncoding*>(&I::SaveToFile), Proc<TStream&>(&I::SaveToStream),
      Proc<TStream&, TEncoding*>(&I::SaveToStream), &I::SetText, &I::ToStringArray, &I::ToObjectArray);
  ASSERT_EQ(slots.size(), 69u);
  for (size_t i = 1; i < slots.size(); ++i) {
    SCOPED_TRACE("slot " + std::to_string(i + 1));
    EXPECT_EQ(slots[i], slots[0] + static_cast<ptrdiff_t>(i));
  }
}

TEST(SystemCollectionsTest, OperationsBehaveAsTheRuntimeList) {
  const IntfPtr<IStrings> list = TInterfacedStringList::Create();
  IntfPtr<IStrings> queried;
  EXPECT_TRUE(Rtl::Objects::Supports(IntfPtr<IInterface>(list), queried) && queried == list);
  list->Add(u"ABC");
  list->Add(u"ABC");
  EXPECT_EQ(list->GetCount(), 2);       // duplicates are accepted
  EXPECT_EQ(list->IndexOf(u"abc"), 0);  // case is ignored
  EXPECT_RAISES(Rtl::Exceptions::EStringListError, list->Get(5), u"List index out of bounds (5)");

  // Searching and sorting follow the user's collation.
  [[maybe_unused]] const TGermanCollation german;
  const IntfPtr<IStrings> names = TInterfacedStringList::Create();
  names->SetTextStr(u"Zebra=2\napple=3\n\u00C4hre=1");
  EXPECT_EQ(names->IndexOfName(u"\u00E4HRE"), 2);
  names->AsObject()->SetSorted(true);
  EXPECT_EQ(names->ToStringArray(), (TStringDynArray{u"\u00C4hre=1", u"apple=3", u"Zebra=2"}));
  EXPECT_RAISES(Rtl::Exceptions::EStringListError, names->SetValue(u"fig", u"4"),
                u"Operation not allowed on sorted list");

  // AddStrings from another IStrings: empty, a null reference, and itself.
  list->AddStrings(TInterfacedStringList::Create());
  list->AddStrings(IntfPtr<IStrings>());
  list->AddStrings(list);
  EXPECT_EQ(list->ToStringArray(), (TStringDynArray{u"ABC", u"ABC", u"ABC", u"ABC"}));

  // AsObject lets the runtime's own operations take an IStrings.
  const IntfPtr<IStrings> copy = TInterfacedStringList::Create();
  copy->Assign(list->AsObject());
  EXPECT_TRUE(copy->Equals(*list->AsObject()));

  Rtl::Files::Testing::TTempFolder folder;
  const UnicodeString missing = folder / u"missing.txt";
  EXPECT_RAISES(Rtl::Exceptions::EFOpenError, list->LoadFromFile(missing),
                u"Cannot open file \"" + missing + u"\". " + Rtl::Exceptions::SysErrorMessage(2));
}

TEST(SystemCollectionsTest, OwnedObjectsAreFreedOnlyWhenAsked) {
  for (const bool owns : {true, false}) {
    SCOPED_TRACE(owns ? "Create(true)" : "Create()");
    int freed = 0;
    std::vector<std::unique_ptr<TCounted>> keep;  // what the caller must free itself
    auto make = [&] {
      auto* object = new TCounted(freed);
      if (!owns) keep.emplace_back(object);
      return object;
    };
    {
      IntfPtr<IStrings> list = owns ? TInterfacedStringList::Create(true) : TInterfacedStringList::Create();
      for (const char16_t* s : {u"a", u"b", u"c", u"d"}) list->AddObject(s, make());
      list->Delete(0);
      EXPECT_EQ(freed, owns ? 1 : 0);
      list->PutObject(0, make());
      EXPECT_EQ(freed, owns ? 2 : 0);
      list->Clear();
      EXPECT_EQ(freed, owns ? 5 : 0);
      // The inner object lives exactly as long as the last reference.
      list->AsObject()->AddObject(u"last", make());
      const IntfPtr<IStrings> second = list;
      list.Reset();
      EXPECT_EQ(freed, owns ? 5 : 0);
    }
    EXPECT_EQ(freed, owns ? 6 : 0);
  }
}

}  // namespace
}  // namespace Quorvex::System::Collections
