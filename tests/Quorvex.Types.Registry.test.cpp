#include <gtest/gtest.h>

#include "Quorvex.Rtl.Classes.hpp"
#include "Quorvex.TestSupport.hpp"
#include "Quorvex.Types.Registry.hpp"

namespace Quorvex::Types::Registry {
namespace {

// The registry is process-wide and keeps every registration, so each test
// uses names of its own.
TTypeConstructor Returning(int tag) {
  return [tag] { return TValue::From(tag); };
}

// A class of the tests' own: registering a library class such as
// TStringList would change how every later test writes it.
class TRegLines : public Rtl::Classes::TStringList {
  QX_CLASS(TRegLines, TStringList, "Quorvex.Tests")
};

int MadeBy(UnicodeStringView name) {
  IntfPtr<ITypeMapping> mapping;
  if (!TTypeRegistry::TryGetType(name, mapping)) return 0;
  return mapping->Make().AsType<int>();
}

TEST(TypeRegistryTest, FirstMatchingNameOrAliasWins) {
  TTypeRegistry::RegisterType(u"Reg.A", Returning(1), u"Reg.X");
  TTypeRegistry::RegisterType(u"Reg.X", Returning(2));
  TTypeRegistry::RegisterType(u"Reg.B", Returning(3));
  TTypeRegistry::RegisterType(u"Reg.B", Returning(4), u"Reg.Y");
  TTypeRegistry::RegisterType(u"", Returning(5));
  struct TCase {
    UnicodeStringView Name;
    int Made;
  };
  const TCase cases[] = {
      {u"Reg.A", 1}, {u"Reg.X", 1}, {u"Reg.B", 3}, {u"Reg.Y", 4}, {u"reg.a", 0}, {u" Reg.A", 0}, {u"", 0},
  };
  for (const TCase& c : cases) {
    SCOPED_TRACE(Rtl::Strings::Utf16ToUtf8(c.Name));
    EXPECT_EQ(MadeBy(c.Name), c.Made);
  }
  IntfPtr<ITypeMapping> mapping;
  ASSERT_TRUE(TTypeRegistry::TryGetType(u"Reg.A", mapping));
  EXPECT_FALSE(TTypeRegistry::TryGetType(u"Reg.None", mapping));
  EXPECT_FALSE(mapping);
}

TEST(TypeRegistryTest, MappingsKnowTheirNamesAndMakeAnewEachTime) {
  TTypeRegistry::RegisterType(TRegLines::StaticClass(),
                              TObjectFactory([] { return static_cast<TObject*>(new TRegLines); }), u"Reg.Lines");
  IntfPtr<ITypeMapping> mapping;
  ASSERT_TRUE(TTypeRegistry::TryGetType(u"Quorvex.Tests.TRegLines", mapping));
  EXPECT_EQ(mapping->GetName(), u"Quorvex.Tests.TRegLines");
  EXPECT_EQ(mapping->GetAlias(), u"Reg.Lines");
  EXPECT_EQ(mapping->GetNameOrAlias(), u"Reg.Lines");
  std::unique_ptr<TObject> first(mapping->Make().AsObject());
  std::unique_ptr<TObject> second(mapping->Make().AsObject());
  EXPECT_NE(first, second);
  EXPECT_EQ(first->ClassName(), u"TRegLines");

  TTypeRegistry::RegisterType(u"Reg.Empty", TTypeConstructor());
  ASSERT_TRUE(TTypeRegistry::TryGetType(u"Reg.Empty", mapping));
  EXPECT_EQ(mapping->GetNameOrAlias(), u"Reg.Empty");
  EXPECT_RAISES(Rtl::Exceptions::EInvalidOperation, mapping->Make(), u"No constructor registered for Reg.Empty");
}

}  // namespace
}  // namespace Quorvex::Types::Registry
