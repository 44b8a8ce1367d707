// The base class of an application's persistent preferences. Derive from
// TAppSettings, declare the preferences as published properties, then
// Load at start-up and Save when they change:
//
//   class TMySettings : public TAppSettings {
//     QX_CLASS(TMySettings, TAppSettings, "MyApp.Settings")
//    public:
//     UnicodeString Caption = u"Untitled";
//     int Count = 3;
//     QX_PROPERTY(published, Caption, Caption, Caption);
//     QX_PROPERTY(published, Count, Count, Count);
//   };
//
// The file is "Preferences.xml" in gApp().GetSettingsPath(): a "Root"
// element with one child per published property.
#pragma once

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.TypInfo.hpp"
#include "Quorvex.Rtti.XMLSerializer.hpp"

namespace Quorvex::App::Settings {

using Rtl::Objects::IntfPtr;
using Rtl::Objects::TObject;
using Rtl::Strings::UnicodeString;

class QXRTL_API TAppSettings : public TObject {
  QX_CLASS(TAppSettings, TObject, "Quorvex.App.Settings")
 public:
  TAppSettings();
  ~TAppSettings() override;
  TAppSettings(const TAppSettings&) = delete;
  TAppSettings& operator=(const TAppSettings&) = delete;

  // The bare file name, "Preferences.xml"; override to store elsewhere.
  virtual UnicodeString GetNameOfFile() const;
  // The settings folder of the installed application class joined with
  // GetNameOfFile(). Raises as gApp() does when no class is installed.
  virtual UnicodeString GetFileName() const;
  QX_READONLY_PROPERTY(public, FileName, GetFileName);

  // Fills this object from the file. A missing file (or an empty file
  // name) changes nothing. Raises EXmlError for a file that is not
  // well-formed XML, keeping every value; a value that cannot be converted
  // raises EVariantTypeCastError and leaves the object partly loaded.
  void Load();

  // Writes this object to the file, creating its folder with all missing
  // parents. The file is replaced atomically: it holds the old or the new
  // settings at every moment. Raises the file system's error when the
  // folder or the file cannot be written; the old file then stays.
  void Save();

 private:
  IntfPtr<Rtti::XMLSerializer::IXmlSerializer<TObject>> FSerializer;
};

}  // namespace Quorvex::App::Settings
