#include <gtest/gtest.h>

#include "Quorvex.System.NonRef.hpp"

namespace Quorvex::System::NonRef {
namespace {

namespace HResult = Rtl::Objects::HResult;

TEST(SystemNonRefTest, InterfacesNeitherCountNorFree) {
  auto* obj = new TNonRefCountedObject();
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(obj->_AddRef(), -1);
    EXPECT_EQ(obj->_Release(), -1);
  }
  { Rtl::Objects::IntfPtr<IInterface> first(obj), second = first; }
  void* found = nullptr;  // the last reference went and the object lives on
  EXPECT_EQ(obj->QueryInterface(IInterface::IID, &found), HResult::Ok);
  EXPECT_EQ(found, static_cast<IInterface*>(obj));
  EXPECT_EQ(obj->QueryInterface(TGUID(), &found), HResult::NoInterface);
  Rtl::Objects::FreeObject(obj);
}

}  // namespace
}  // namespace Quorvex::System::NonRef
