#include <gtest/gtest.h>

#include "Quorvex.Rtl.Collections.hpp"
#include "Quorvex.TestSupport.hpp"

namespace Quorvex::Rtl::Collections {
namespace {

using Exceptions::EInvalidCast;
using Exceptions::EListError;
using Strings::UnicodeString;

std::vector<int> Walk(IEnumerable<int>& sequence) {
  std::vector<int> items;
  for (auto e = sequence.GetEnumerator(); e->MoveNext();) items.push_back(e->Current());
  return items;
}

TEST(CollectionsTest, ListKeepsOrderAndChecksIndexes) {
  IntfPtr<IList<int>> list = NewList<int>();
  for (int i : {10, 20, 30}) list->Add(i);
  list->Insert(0, 5);
  list->Insert(4, 40);
  list->Delete(2);
  list->SetItem(1, 11);
  EXPECT_EQ(Walk(*list), (std::vector<int>{5, 11, 30, 40}));
  EXPECT_EQ(list->IndexOf(30), 2);
  EXPECT_EQ(list->IndexOf(99), -1);
  std::vector<int> ranged;
  for (int item : *list) ranged.push_back(item);
  EXPECT_EQ(ranged, Walk(*list));

  EXPECT_RAISES(EListError, list->Item(4), u"List index out of bounds (4)");
  EXPECT_RAISES(EListError, list->Insert(5, 1), u"List index out of bounds (5)");
  EXPECT_RAISES(EListError, list->Delete(-1), u"List index out of bounds (-1)");
  list->Clear();
  EXPECT_EQ(list->Count(), 0);
}

TEST(CollectionsTest, AnEnumeratorKeepsItsListAlive) {
  IntfPtr<IEnumerator<int>> walker;
  {
    IntfPtr<IList<int>> list = NewList<int>();
    list->Add(7);
    walker = list->GetEnumerator();
  }
  ASSERT_TRUE(walker->MoveNext());
  EXPECT_EQ(walker->Current(), 7);
  EXPECT_FALSE(walker->MoveNext());
}

TEST(CollectionsTest, EveryListAnswersTheUntypedInterfaces) {
  IntfPtr<IList<UnicodeString>> list = NewList<UnicodeString>();
  list->Add(u"a");
  IntfPtr<IUntypedList> untyped = list.As<IUntypedList>();
  ASSERT_TRUE(untyped);
  EXPECT_TRUE(list.As<IUntypedCollection>());
  EXPECT_EQ(untyped->ElementType()->Kind, TypInfo::TTypeKind::tkUString);
  untyped->AddValue(TValue::From(UnicodeString(u"b")));
  EXPECT_EQ(untyped->ItemValue(1).AsString(), u"b");
  std::vector<UnicodeString> texts;
  for (auto e = untyped->GetValues(); e->MoveNext();) texts.push_back(e->Current().ToString());
  EXPECT_EQ(texts, (std::vector<UnicodeString>{u"a", u"b"}));
  EXPECT_RAISES(EInvalidCast, untyped->AddValue(TValue::From(1)), u"Invalid class typecast");
  untyped->Clear();
  EXPECT_EQ(list->Count(), 0);
}

}  // namespace
}  // namespace Quorvex::Rtl::Collections
