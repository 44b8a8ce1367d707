// The identity of the host application: company, product, the texts shown
// to the user, web and mail addresses, registry key and settings folder.
// Each application derives its class from TQxApp, overrides the product's
// two answers, installs the class at start-up and then asks gApp().
#pragma once

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Objects.hpp"
#include "Quorvex.Rtl.Units.hpp"
#include "Quorvex.Types.Version.hpp"

namespace Quorvex::App::Info {

using Rtl::Objects::TClass;
using Rtl::Strings::UnicodeString;
using Types::Version::TVersionValue;

// The company-wide answers. An instance holds no state: every answer is
// computed when asked. GetProductURL and GetApplicationName are abstract
// in spirit but have bodies that raise EAbstractError "Abstract Error",
// because gApp() must be able to make an instance of any installed class.
class QXRTL_API TQxApp : public Rtl::Objects::TObject {
  QX_CLASS(TQxApp, Rtl::Objects::TObject, "Quorvex.App.Info")
 public:
  // The vendor's purchase page; a product may sell elsewhere.
  virtual UnicodeString GetPurchaseURL() const;
  // The product's page; raises EAbstractError unless overridden.
  virtual UnicodeString GetProductURL() const;
  // The per-user application-data folder joined with GetDirectoryName();
  // no trailing delimiter, and the folder is not created.
  virtual UnicodeString GetSettingsPath() const;
  // The settings folder's name: GetDisplayName() unless overridden.
  virtual UnicodeString GetDirectoryName() const;
  // The product's name; raises EAbstractError unless overridden.
  virtual UnicodeString GetApplicationName() const;

  // The running application's version from its version block; raises as
  // gVersion::GetAppVersion does when there is none.
  TVersionValue GetVersion() const;
  // "Quorvex".
  UnicodeString GetCompanyName() const;
  // "<company> <application>", nothing trimmed ("Quorvex Backup").
  UnicodeString GetDisplayName() const;
  // The vendor's home page, support page and sales mailbox: fixed for
  // every product.
  UnicodeString GetCompanyURL() const;
  UnicodeString GetSupportURL() const;
  UnicodeString GetSalesEmail() const;
  // "mailto:" followed by GetSalesEmail().
  UnicodeString GetMailtoSales() const;
  // "Software\<company>\<application>", relative to a registry hive.
  UnicodeString GetRegistryPath() const;
  // The same as GetApplicationName().
  UnicodeString GetRegistryKeyName() const;
};

// Names the class gApp() will make. Nothing is checked, and an instance
// that already exists is kept: install once, before anything calls gApp().
QXRTL_API void InstallAppClass(TClass appClass);

// The one application object, made on first call from the installed
// class's registered factory. Raises EAssertionFailed "App class not
// installed." every time while no class is installed, and EInvalidCast
// when the installed class is not a TQxApp.
QXRTL_API TQxApp& gApp();

// The unit's start-up record (frees the application object at shut-down).
extern QXRTL_API Rtl::Units::TUnit AppInfoUnit;

namespace Detail {
// For tests only: frees the application object and forgets the installed
// class, as if the process had just started.
void ResetForTesting();
}  // namespace Detail

}  // namespace Quorvex::App::Info
