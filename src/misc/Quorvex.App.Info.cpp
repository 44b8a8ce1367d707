#include "Quorvex.App.Info.hpp"

#include <memory>

#include "Quorvex.App.Version.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Files.hpp"
#include "Quorvex.Utils.Path.hpp"
#include "Quorvex.Utils.System.hpp"

namespace Quorvex::App::Info {

namespace {

using Rtl::Strings::Format;

// No lock: the first call belongs on the main thread during start-up.
TClass FAppClass = nullptr;
TQxApp* FApp = nullptr;

void FreeApp() {
  delete FApp;
  FApp = nullptr;
}

}  // namespace

QX_UNIT(AppInfoUnit, u"Quorvex.App.Info", nullptr, &FreeApp);

UnicodeString TQxApp::GetPurchaseURL() const { return u"https://www.quorvex.com/buy/"; }

UnicodeString TQxApp::GetProductURL() const { Rtl::Exceptions::RaiseAbstractError(); }

UnicodeString TQxApp::GetSettingsPath() const {
  return Utils::Path::gPath::Make(Utils::System::gSystem::UserAppDataPath(), GetDirectoryName(),
                                  UnicodeString(1, Rtl::Files::PathDelim()));
}

UnicodeString TQxApp::GetDirectoryName() const { return TQxApp::GetDisplayName(); }

UnicodeString TQxApp::GetApplicationName() const { Rtl::Exceptions::RaiseAbstractError(); }

TVersionValue TQxApp::GetVersion() const { return Version::gVersion::GetAppVersion(); }

UnicodeString TQxApp::GetCompanyName() const { return u"Quorvex"; }

UnicodeString TQxApp::GetDisplayName() const { return Format(u"%s %s", GetCompanyName(), GetApplicationName()); }

UnicodeString TQxApp::GetCompanyURL() const { return u"https://www.quorvex.com/"; }

UnicodeString TQxApp::GetSupportURL() const { return u"https://www.quorvex.com/support/"; }

UnicodeString TQxApp::GetSalesEmail() const { return u"sales@quorvex.com"; }

UnicodeString TQxApp::GetMailtoSales() const { return Format(u"mailto:%s", GetSalesEmail()); }

UnicodeString TQxApp::GetRegistryPath() const {
  return Format(u"Software\\%s\\%s", GetCompanyName(), GetApplicationName());
}

UnicodeString TQxApp::GetRegistryKeyName() const { return GetApplicationName(); }

void InstallAppClass(TClass appClass) { FAppClass = appClass; }

TQxApp& gApp() {
  if (FApp != nullptr) return *FApp;
  Rtl::Exceptions::Assert(FAppClass != nullptr, u"App class not installed.", u"Sources\\Misc\\Quorvex.App.Info", 70);
  // Owned until the cast succeeds, so a class of the wrong kind leaks nothing.
  std::unique_ptr<Rtl::Objects::TObject> made(FAppClass->Create());
  FApp = Rtl::Objects::ObjectCast<TQxApp>(made.get());
  made.release();
  return *FApp;
}

namespace Detail {

void ResetForTesting() {
  FreeApp();
  FAppClass = nullptr;
}

}  // namespace Detail

}  // namespace Quorvex::App::Info
