#include <gtest/gtest.h>

#include <tuple>

#include "Quorvex.App.Info.hpp"
#include "Quorvex.Rtl.Files.hpp"
#include "Quorvex.TestSupport.hpp"
#include "Quorvex.Utils.System.hpp"

namespace Quorvex::App::Info {
namespace {

using Rtl::Exceptions::EAssertionFailed;
using Rtl::Strings::UnicodeStringView;

// A sample application; it counts its destructions to show the unit freeing it.
class TBackupApp : public TQxApp {
  QX_CLASS(TBackupApp, TQxApp, "Quorvex.App.Info.Test")
 public:
  ~TBackupApp() override { ++Destroyed; }
  UnicodeString GetApplicationName() const override { return u"Backup"; }
  UnicodeString GetProductURL() const override { return u"https://www.quorvex.com/backup/"; }
  static inline int Destroyed = 0;
};

class TNamelessApp : public TQxApp {
  QX_CLASS(TNamelessApp, TQxApp, "Quorvex.App.Info.Test")
 public:
  UnicodeString GetApplicationName() const override { return u""; }
};

class TOwnFolderApp : public TBackupApp {
  QX_CLASS(TOwnFolderApp, TBackupApp, "Quorvex.App.Info.Test")
 public:
  UnicodeString GetDirectoryName() const override { return u"Backup Data"; }
};

class AppInfoTest : public testing::Test {
 protected:
  void SetUp() override { Detail::ResetForTesting(); }
  void TearDown() override { Detail::ResetForTesting(); }
};

TEST_F(AppInfoTest, OneInstanceOnceInstalled) {
  constexpr UnicodeStringView kNotInstalled = u"App class not installed. (Sources\\Misc\\Quorvex.App.Info, line 70)";
  EXPECT_RAISES(EAssertionFailed, gApp(), kNotInstalled);
  EXPECT_RAISES(EAssertionFailed, gApp(), kNotInstalled);  // every time, nothing was made

  InstallAppClass(TBackupApp::StaticClass());
  TQxApp& app = gApp();
  EXPECT_EQ(&gApp(), &app);
  EXPECT_EQ(app.GetDirectoryName(), u"Quorvex Backup");
  EXPECT_EQ(app.GetRegistryKeyName(), u"Backup");
  EXPECT_EQ(app.GetProductURL(), u"https://www.quorvex.com/backup/");
  EXPECT_EQ(app.GetMailtoSales(), u"mailto:sales@quorvex.com");
  EXPECT_EQ(app.GetVersion().AsString(), u"1.2.3.4");  // stamped on the test binary

  // A later installation changes nothing visible until finalisation frees
  // the instance.
  InstallAppClass(TOwnFolderApp::StaticClass());
  EXPECT_EQ(&gApp(), &app);
  TBackupApp::Destroyed = 0;
  AppInfoUnit.Finalize();
  AppInfoUnit.Initialize();
  EXPECT_EQ(TBackupApp::Destroyed, 1);
  EXPECT_EQ(gApp().ClassType(), TOwnFolderApp::StaticClass());

  // A class that is not an application is refused without leaking it.
  Detail::ResetForTesting();
  InstallAppClass(Rtl::Objects::TObject::StaticClass());
  EXPECT_RAISES(Rtl::Exceptions::EInvalidCast, gApp(), u"Invalid class typecast");
}

TEST_F(AppInfoTest, NamesAndFolders) {
  const std::tuple<TClass, UnicodeStringView, UnicodeStringView, UnicodeStringView> cases[] = {
      {TBackupApp::StaticClass(), u"Quorvex Backup", u"Software\\Quorvex\\Backup", u"Quorvex Backup"},
      // Nothing is trimmed from the texts; only the path join drops the blank.
      {TNamelessApp::StaticClass(), u"Quorvex ", u"Software\\Quorvex\\", u"Quorvex"},
      {TOwnFolderApp::StaticClass(), u"Quorvex Backup", u"Software\\Quorvex\\Backup", u"Backup Data"},
  };
  for (const auto& [appClass, displayName, registryPath, settingsFolder] : cases) {
    SCOPED_TRACE(Rtl::Strings::Utf16ToUtf8(appClass->ClassName()));
    Detail::ResetForTesting();
    InstallAppClass(appClass);
    EXPECT_EQ(gApp().GetDisplayName(), displayName);
    EXPECT_EQ(gApp().GetRegistryPath(), registryPath);
    EXPECT_EQ(gApp().GetSettingsPath(),
              Utils::System::gSystem::UserAppDataPath() + Rtl::Files::PathDelim() + UnicodeString(settingsFolder));
  }
}

TEST_F(AppInfoTest, AbstractAnswersRaise) {
  InstallAppClass(TQxApp::StaticClass());
  const TQxApp& app = gApp();
  // Everything that needs the application's name fails with it.
  using TGetter = UnicodeString (TQxApp::*)() const;
  const TGetter getters[] = {&TQxApp::GetApplicationName, &TQxApp::GetProductURL,   &TQxApp::GetDisplayName,
                             &TQxApp::GetDirectoryName,   &TQxApp::GetSettingsPath, &TQxApp::GetRegistryPath,
                             &TQxApp::GetRegistryKeyName};
  for (const TGetter& getter : getters) {
    SCOPED_TRACE(&getter - getters);
    EXPECT_RAISES(Rtl::Exceptions::EAbstractError, (app.*getter)(), u"Abstract Error");
  }
  EXPECT_EQ(app.GetPurchaseURL(), u"https://www.quorvex.com/buy/");
}

}  // namespace
}  // namespace Quorvex::App::Info
