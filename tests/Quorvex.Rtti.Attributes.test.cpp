#include <gtest/gtest.h>

#include "Quorvex.Rtti.Attributes.hpp"
#include "Quorvex.TestSupport.hpp"

namespace Quorvex::Rtti::Attributes {
namespace {

class TShapeFactory : public FactoryAttribute {
  QX_CLASS(TShapeFactory, FactoryAttribute, "Quorvex.Tests")
 public:
  TValue New(UnicodeStringView AName, TObject*) override { return TValue::From(UnicodeString(AName)); }
};

TEST(AttributesTest, MarkersKeepTheirArgumentsAndAreFoundByClass) {
  const NameAttribute name(u" odd name ");
  const SerializeAttribute off(false);
  const SerializationOptionAttribute option(SerializationOptionAttribute::soExplicit);
  TShapeFactory factory;
  ItemFactoryAttribute itemFactory;
  const std::vector<Rtl::TypInfo::TCustomAttribute*> list{
      const_cast<NameAttribute*>(&name), const_cast<SerializeAttribute*>(&off), &factory, &itemFactory};

  EXPECT_EQ(AttrUtils::GetAttribute<NameAttribute>(list)->Name(), u" odd name ");
  EXPECT_FALSE(AttrUtils::GetAttribute<SerializeAttribute>(list)->Enabled());
  EXPECT_EQ(AttrUtils::GetAttribute<FactoryAttribute>(list), &factory);
  EXPECT_EQ(AttrUtils::GetAttribute<SerializationOptionAttribute>(list), nullptr);
  EXPECT_EQ(option.Option(), SerializationOptionAttribute::soExplicit);
  EXPECT_EQ(static_cast<int>(SerializationOptionAttribute::soPublished), 1);

  EXPECT_EQ(factory.New(u"circle", nullptr).AsString(), u"circle");
  EXPECT_EQ(factory.GetName(TValue::From(1)), u"");
  EXPECT_EQ(itemFactory.GetName(TValue()), u"");
  EXPECT_RAISES(Rtl::Exceptions::EAbstractError, FactoryAttribute().New(u"x", nullptr), u"Abstract Error");
  EXPECT_RAISES(Rtl::Exceptions::EAbstractError, itemFactory.New(u"x", TValue()), u"Abstract Error");
}

}  // namespace
}  // namespace Quorvex::Rtti::Attributes
