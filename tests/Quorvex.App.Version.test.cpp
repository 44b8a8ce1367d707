#include <gtest/gtest.h>

#include <vector>

#include "Quorvex.App.Version.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.TestSupport.hpp"

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace Quorvex::App::Version {
namespace {

using Rtl::Exceptions::EResNotFound;

// The test binary is stamped with 1.2.3.4 by its build.
TEST(AppVersionTest, ReadsTheStampedVersion) { EXPECT_EQ(gVersion::GetAppVersion().AsString(), u"1.2.3.4"); }

#if defined(_WIN32)

// A copy of this test program, in the current folder, whose only resource
// is a version resource holding `block` (none when null), loaded as data.
struct ModuleCopy {
  explicit ModuleCopy(const std::vector<uint8_t>* block) {
    wchar_t self[MAX_PATH];
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    CopyFileW(self, Path, FALSE);
    HANDLE update = BeginUpdateResourceW(Path, TRUE);
    if (block != nullptr)
      UpdateResourceW(update, MAKEINTRESOURCEW(16), MAKEINTRESOURCEW(1), 0, const_cast<uint8_t*>(block->data()),
                      static_cast<DWORD>(block->size()));
    EndUpdateResourceW(update, FALSE);
    Module = LoadLibraryExW(Path, nullptr, LOAD_LIBRARY_AS_DATAFILE);
  }
  ~ModuleCopy() {
    FreeLibrary(Module);
    DeleteFileW(Path);
  }
  TModuleHandle Handle() const { return reinterpret_cast<TModuleHandle>(Module); }

  const wchar_t* Path = L"Quorvex.App.Version.test.dll";
  HMODULE Module = nullptr;
};

TEST(AppVersionTest, ShortAndMissingResourcesRaise) {
  const std::vector<uint8_t> block(55);
  EXPECT_RAISES(Rtl::Exceptions::EReadError, gVersion::GetModuleVersion(ModuleCopy(&block).Handle()),
                u"Stream read error");
  EXPECT_RAISES(EResNotFound, gVersion::GetModuleVersion(ModuleCopy(nullptr).Handle()), u"Resource #1 not found");
}

#else

TEST(AppVersionTest, ModuleWithoutVersionRaises) {
  void* module = dlopen("libm.so.6", RTLD_NOW);
  ASSERT_NE(module, nullptr);
  EXPECT_RAISES(EResNotFound, gVersion::GetModuleVersion(reinterpret_cast<TModuleHandle>(module)),
                u"Resource #1 not found");
  dlclose(module);
}

#endif

}  // namespace
}  // namespace Quorvex::App::Version
