// A first tour of QxRtl: formats sizes and rates, joins and splits lists,
// builds paths, writes and reads the XML date-time form, finds free file
// names in a scratch folder, describes the machine and a sample
// application's identity, keeps its settings file and checks a few URLs,
// printing each step.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>

#include "Quorvex.App.Info.hpp"
#include "Quorvex.App.Settings.hpp"
#include "Quorvex.Rtl.Classes.hpp"
#include "Quorvex.Rtl.DateTime.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Files.hpp"
#include "Quorvex.Types.Registry.hpp"
#include "Quorvex.Types.Url.hpp"
#include "Quorvex.Utils.DateTime.hpp"
#include "Quorvex.Utils.Files.hpp"
#include "Quorvex.Utils.Folder.hpp"
#include "Quorvex.Utils.Path.hpp"
#include "Quorvex.Utils.Strings.hpp"
#include "Quorvex.Utils.System.hpp"
#include "Quorvex.Utils.Xml.hpp"

using namespace Quorvex;
using Rtl::Strings::Format;
using Rtl::Strings::UnicodeString;
using Utils::Strings::gString;

namespace {

void Print(const UnicodeString& line) { std::printf("%s\n", Rtl::Strings::Utf16ToUtf8(line).c_str()); }

// Writes and reads back a few MiB in `folder` and reports the sizes and
// rates it measured.
void ShowMeasuredRates(const UnicodeString& folder) {
  const UnicodeString file =
      Utils::Path::gPath::Make(folder, u"payload.txt", UnicodeString(1, Rtl::Files::PathDelim()));
  const UnicodeString text = gString::StringOf(u"0123456789abcdef", 256 * 1024);
  const auto start = std::chrono::steady_clock::now();
  Utils::Files::gFile::Save(file, text);
  const UnicodeString back = Utils::Files::gFile::Load(file);
  const auto elapsed = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
  const int64_t bytes = Utils::Files::gFile::GetSize(file);
  const int64_t perSecond = bytes * 2 * 1000000 / std::max<int64_t>(elapsed.count(), 1);
  Print(Format(u"Wrote and read %s (%s) in %d ms: %s, %s", gString::FormatBytes(bytes),
               back == text ? u"intact" : u"CORRUPT", elapsed.count() / 1000, gString::FormatBytesPerSec(perSecond),
               gString::FormatBitsPerSec(perSecond * 8)));
}

void ShowSizesAndRates() {
  Print(u"Sizes, rates and distances:");
  const int64_t samples[] = {512, 1536, 1048576, 1500000, 5368709120};
  for (int64_t value : samples)
    Print(Format(u"  %12d -> %-10s %-12s %-12s %s", value, gString::FormatBytes(value),
                 gString::FormatBytesPerSec(value), gString::FormatBitsPerSec(value), gString::FormatMeters(value)));
  Print(u"  uptime 93784005 ms -> " + Utils::DateTime::gTime::MsecsToStr(93784005, Utils::DateTime::ddDay));
}

void ShowJoinAndSplit() {
  const UnicodeString line = u"alpha,,beta, gamma ,";
  const auto pieces = gString::Split(line, u",");
  Print(Format(u"Split \"%s\" at \",\": %d pieces", line, static_cast<int>(pieces.size())));
  Print(u"  Join skips empties:        \"" + gString::Join(pieces, u";") + u"\"");
  Print(u"  JoinWithEmpties keeps them: \"" + gString::JoinWithEmpties(pieces, u";") + u"\"");
  Print(u"  KeyOf/ValueOf of \"host = example.org\": \"" + gString::KeyOf(u"host = example.org", u"=") + u"\" / \"" +
        gString::ValueOf(u"host = example.org", u"=") + u"\"");
}

UnicodeString ShowPaths(const UnicodeString& base) {
  const UnicodeString delimiter(1, Rtl::Files::PathDelim());
  const UnicodeString reports = Utils::Path::gPath::Make(base, u"reports", delimiter);
  Print(u"Paths:");
  Print(u"  Make(base, \"reports\")  = " + reports);
  Print(u"  relative to base        = " + Utils::Path::gPath::ToRelative(reports, base));
  Print(u"  ValidateName(\"a:b*c?\") = " + Utils::Path::gPath::ValidateName(u"a:b*c?", u'_'));
  return reports;
}

// Exchanges the current time as UTC ("Z"), the form that reads back exactly in every time
// zone. A local time written with its offset does not: the reader drops the offset's sign,
// so west of UTC it comes back off by twice the offset.
void ShowXmlTime() {
  using namespace Rtl::DateTime;
  int hour = 0, minute = 0, second = 0, msec = 0;
  const TDateTime now = Now();
  DecodeTime(now, hour, minute, second, msec);
  const TDateTime local = IncMilliSecond(now, -msec);  // the XML reader drops milliseconds
  const int32_t bias = Utils::DateTime::gTime::GetTimeZoneBias();
  const UnicodeString text = Utils::Xml::gXml::DateTimeToXMLTime(IncMinute(local, bias), false);
  const TDateTime back = Utils::Xml::gXml::XMLTimeToDateTime(text, false);
  Print(u"XML date-time:");
  Print(u"  local time     = " + FormatDateTime(u"yyyy-mm-dd hh:nn:ss", local));
  Print(u"  as UTC in XML  = " + text);
  Print(u"  read back      = " + FormatDateTime(u"yyyy-mm-dd hh:nn:ss", back));
  Print(Format(u"  time-zone bias = %d minutes", bias));
  Print(u"  with offset    = " + Utils::Xml::gXml::DateTimeToXMLTime(local, true) +
        u" (the offset's sign is not read back: exchange UTC instead)");
}

void ShowUniqueNames(const UnicodeString& reports) {
  Utils::Folder::gFolder::Force(reports);
  const UnicodeString first =
      Utils::Path::gPath::Make(reports, u"summary.txt", UnicodeString(1, Rtl::Files::PathDelim()));
  Utils::Files::gFile::Save(first, u"first report\n");
  Print(u"Unique names beside " + first + u":");
  for (int i = 0; i < 3; ++i) {
    const UnicodeString next = Utils::Files::gFile::GetUniqueName(first);
    Utils::Files::gFile::Save(next, Format(u"report %d\n", i + 2));
    Print(Format(u"  %s (%d bytes)", next, Utils::Files::gFile::GetSize(next)));
  }
}

const char16_t* YesNo(bool value) { return value ? u"yes" : u"no"; }

// What an About box or a log header would say about the machine.
void ShowSystem() {
  using Utils::System::gSystem;
  Print(u"System:");
  Print(u"  " + gSystem::GetOSDescription());
  Print(Format(u"  Windows version: %s; admin: %s; elevated: %s; WOW64: %s", gSystem::GetWindowsVersionStr(),
               YesNo(gSystem::IsAdmin()), YesNo(gSystem::IsElevated()), YesNo(gSystem::IsWow64())));
  Print(u"  Memory:           " + gString::FormatBytes(gSystem::MemorySize()));
  Print(u"  Application data: " + gSystem::UserAppDataPath());
  Print(u"  Local data:       " + gSystem::UserAppDataLocalPath());
  Print(u"  Documents:        " + gSystem::UserDocsPath());
}

// A product's identity: the two answers only the product knows.
class TBackupApp : public App::Info::TQxApp {
  QX_CLASS(TBackupApp, App::Info::TQxApp, "Example")
 public:
  UnicodeString GetApplicationName() const override { return u"Backup"; }
  UnicodeString GetProductURL() const override { return u"https://www.quorvex.com/backup/"; }
};

void ShowApplication() {
  App::Info::InstallAppClass(TBackupApp::StaticClass());
  const App::Info::TQxApp& app = App::Info::gApp();
  Print(u"Application:");
  Print(u"  " + app.GetDisplayName() + u" " + app.GetVersion().AsString() + u", " + app.GetProductURL());
  Print(u"  Settings:  " + app.GetSettingsPath());
  Print(u"  Registry:  " + app.GetRegistryPath());
  Print(u"  Sales:     " + app.GetMailtoSales());
}

// Where a backup goes: the settings hold one of these, written with its
// registered name so that the right class comes back.
class TDestination : public Rtl::Classes::TPersistent {
  QX_CLASS(TDestination, TPersistent, "Example")
};

class TFolderDestination : public TDestination {
  QX_CLASS(TFolderDestination, TDestination, "Example")
 public:
  UnicodeString Folder = u"backups";
  QX_PROPERTY(published, Folder, Folder, Folder);
};

class TJob : public Rtl::Classes::TCollectionItem {
  QX_CLASS(TJob, TCollectionItem, "Example")
 public:
  UnicodeString Source;
  int KeepDays = 30;
  QX_PROPERTY(published, Source, Source, Source);
  QX_PROPERTY(published, KeepDays, KeepDays, KeepDays);
};

QX_ENUM(TCompression, uint8_t, cmNone, cmFast, cmBest);

// The product's preferences: each published property is one element of
// "Preferences.xml" in the settings folder.
class TBackupSettings : public App::Settings::TAppSettings {
  QX_CLASS(TBackupSettings, TAppSettings, "Example")
  Rtl::Classes::TStringList FRecent;
  Rtl::Classes::TCollection FJobs{TJob::StaticClass()};
  std::unique_ptr<TDestination> FDestination = std::make_unique<TFolderDestination>();

 public:
  UnicodeString UserName = u"guest";
  int RunCount = 0;
  bool Verify = true;
  TCompression Compression = cmFast;
  Rtl::DateTime::TDateTime LastRun = 0;

  Rtl::Classes::TStringList* GetRecent() { return &FRecent; }
  Rtl::Classes::TCollection* GetJobs() { return &FJobs; }
  TDestination* GetDestination() const { return FDestination.get(); }
  void SetDestination(TDestination* value) {
    if (value != FDestination.get()) FDestination.reset(value);
  }

  QX_PROPERTY(published, UserName, UserName, UserName);
  QX_PROPERTY(published, RunCount, RunCount, RunCount);
  QX_PROPERTY(published, Verify, Verify, Verify);
  QX_PROPERTY(published, Compression, Compression, Compression);
  QX_PROPERTY(published, LastRun, LastRun, LastRun);
  QX_READONLY_PROPERTY(published, Recent, GetRecent);
  QX_READONLY_PROPERTY(published, Jobs, GetJobs);
  QX_PROPERTY(published, Destination, GetDestination, SetDestination);
};

void ShowSettings() {
  Types::Registry::TTypeRegistry::RegisterClass<TFolderDestination>(u"folder");
  TBackupSettings settings;
  settings.Load();
  settings.RunCount++;
  settings.LastRun = Rtl::DateTime::Now();
  settings.GetRecent()->Insert(0, Format(u"run %d", settings.RunCount));
  while (settings.GetRecent()->GetCount() > 3) settings.GetRecent()->Delete(3);
  if (settings.GetJobs()->Count() == 0) static_cast<TJob*>(settings.GetJobs()->Add())->Source = u"Documents";
  settings.Save();
  Print(u"Settings, run " + Rtl::Strings::IntToStr(settings.RunCount) + u", saved in " + settings.GetFileName() + u":");
  Print(Rtl::Strings::Utf8ToUtf16(Rtl::Files::ReadFileBytes(settings.GetFileName())));
}

void ShowUrls() {
  using Types::Url::TUrl;
  Print(u"URLs:");
  for (const Rtl::Strings::UnicodeStringView text : {u"https://www.quorvex.com:8443/support/?q=backup#top",
                                                     u"ftp://10.0.0.1/pub", u"not a url", u"http://999.1.1.1/"}) {
    const TUrl url = TUrl::FromString(text);
    Print(Format(u"  %-52s valid: %-5s host: %s, port: %d", UnicodeString(text), YesNo(TUrl::VerifyUrl(text)), url.Host,
                 url.Port));
  }
}

}  // namespace

int main() {
  try {
    ShowSizesAndRates();
    ShowJoinAndSplit();
    const auto temp = std::filesystem::temp_directory_path().u16string();
    const UnicodeString scratch = Utils::Folder::gFolder::MakeUnique(temp, u"QxRtlExample");
    const UnicodeString reports = ShowPaths(scratch);
    ShowXmlTime();
    ShowUniqueNames(reports);
    ShowMeasuredRates(reports);
    Print(u"A free folder name beside it: " + Utils::Folder::gFolder::GetUniqueName(scratch, u"reports"));
    Utils::Folder::gFolder::Delete(scratch);
    Print(u"Removed " + scratch);
    ShowSystem();
    ShowApplication();
    ShowSettings();
    ShowUrls();
    return 0;
  } catch (const Rtl::Exceptions::Exception& e) {
    Print(u"Error: " + e.Message());
    return 1;
  } catch (const std::exception& e) {
    std::printf("Error: %s\n", e.what());
    return 1;
  }
}
