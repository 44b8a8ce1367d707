#include "Quorvex.App.Settings.hpp"

#include "Quorvex.App.Info.hpp"
#include "Quorvex.Rtl.Files.hpp"
#include "Quorvex.Utils.Folder.hpp"
#include "Quorvex.Utils.Path.hpp"

namespace Quorvex::App::Settings {

TAppSettings::TAppSettings() : FSerializer(Rtti::XMLSerializer::NewXmlSerializer<TObject>()) {}

TAppSettings::~TAppSettings() = default;

UnicodeString TAppSettings::GetNameOfFile() const { return u"Preferences.xml"; }

UnicodeString TAppSettings::GetFileName() const {
  return Utils::Path::gPath::Make(Info::gApp().GetSettingsPath(), GetNameOfFile(),
                                  UnicodeString(1, Rtl::Files::PathDelim()));
}

void TAppSettings::Load() {
  if (GetFileName().empty() || !Rtl::Files::FileExists(GetFileName())) return;
  FSerializer->GetDocument().LoadFromFile(GetFileName());
  FSerializer->Deserialize(this);
}

void TAppSettings::Save() {
  if (GetFileName().empty()) return;
  const UnicodeString folder = Rtl::Files::ExtractFilePath(GetFileName());
  if (!folder.empty() && !Rtl::Files::DirectoryExists(folder)) Utils::Folder::gFolder::Force(folder);
  FSerializer->Serialize(this);
  FSerializer->GetDocument().SaveToFile(GetFileName());
}

}  // namespace Quorvex::App::Settings
