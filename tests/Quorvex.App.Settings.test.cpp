#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <random>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#else
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
extern char** environ;
#endif

#include "Quorvex.App.Settings.hpp"
#include "Quorvex.Rtl.Classes.hpp"
#include "Quorvex.Rtl.Files.TestSupport.hpp"
#include "Quorvex.Rtl.Files.hpp"
#include "Quorvex.TestSupport.hpp"

namespace Quorvex::App::Settings {

QX_ENUM(TTestMode, uint8_t, tmFast, tmSafe);

namespace {

using Rtl::Classes::TStringList;
using Rtl::Files::Testing::TTempFolder;
using Rtl::Strings::UnicodeStringView;

constexpr const char* kChildFileVariable = "QXRTL_SETTINGS_CHILD_FILE";

class TTestSettings : public TAppSettings {
  QX_CLASS(TTestSettings, TAppSettings, "Quorvex.Tests")
  TStringList FRecent;

 public:
  explicit TTestSettings(UnicodeString fileName = u"") : FFileName(std::move(fileName)) {}

  UnicodeString Title = u"Untitled";
  int Width = 640;
  bool Maximized = false;
  TTestMode Mode = tmSafe;
  Rtl::DateTime::TDateTime LastRun = 0;
  TStringList* GetRecent() { return &FRecent; }

  QX_PROPERTY(published, Title, Title, Title);
  QX_PROPERTY(published, Width, Width, Width);
  QX_PROPERTY(published, Maximized, Maximized, Maximized);
  QX_PROPERTY(published, Mode, Mode, Mode);
  QX_PROPERTY(published, LastRun, LastRun, LastRun);
  QX_READONLY_PROPERTY(published, Recent, GetRecent);

  UnicodeString GetFileName() const override { return FFileName; }

 private:
  UnicodeString FFileName;
};

TEST(AppSettingsTest, LoadsNothingWithoutAFileAndSavesWhatLoadsBack) {
  TTempFolder temp;
  const UnicodeString fileName = temp / u"a/b/Prefs ü.xml";
  TTestSettings defaults(fileName);
  defaults.Load();
  EXPECT_EQ(defaults.Title, u"Untitled");
  EXPECT_FALSE(Rtl::Files::DirectoryExists(temp / u"a"));

  TTestSettings saved(fileName);
  saved.Title = u"Report <1>";
  saved.Width = 1024;
  saved.Maximized = true;
  saved.Mode = tmFast;
  saved.LastRun = 45123.5;
  saved.GetRecent()->SetCommaText(u"one,\"two words\"");
  saved.Save();
  const std::string text = Rtl::Files::ReadFileBytes(fileName);
  EXPECT_EQ(text.substr(0, 46), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Root>\n");
  EXPECT_EQ(text.find("FileName"), std::string::npos);

  TTestSettings loaded(fileName);
  loaded.Load();
  EXPECT_EQ(loaded.Title, u"Report <1>");
  EXPECT_EQ(loaded.Width, 1024);
  EXPECT_TRUE(loaded.Maximized);
  EXPECT_EQ(loaded.Mode, tmFast);
  EXPECT_DOUBLE_EQ(loaded.LastRun, 45123.5);
  EXPECT_EQ(loaded.GetRecent()->GetCommaText(), u"one,\"two words\"");

  // Emptying the list is saved too: the next start does not see the old items.
  loaded.GetRecent()->Clear();
  loaded.Save();
  TTestSettings again(fileName);
  again.GetRecent()->Add(u"default");
  again.Load();
  EXPECT_EQ(again.GetRecent()->GetCount(), 0);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(std::filesystem::path(temp / u"a/b")),
                          std::filesystem::directory_iterator()),
            1);
}

TEST(AppSettingsTest, AMalformedFileKeepsEveryValue) {
  TTempFolder temp;
  const UnicodeString fileName = temp / u"Preferences.xml";
  Rtl::Files::WriteFileBytes(fileName, "<Root><Title>new</Title><Width>1</Root>");
  TTestSettings settings(fileName);
  try {
    settings.Load();
    ADD_FAILURE() << "no EXmlError";
  } catch (const Rtl::Xml::EXmlError& error) {
    EXPECT_NE(error.Message().find(u"Error loading XML file \"" + fileName + u"\": "), UnicodeString::npos);
  }
  EXPECT_EQ(settings.Title, u"Untitled");
  EXPECT_EQ(settings.Width, 640);

  // A folder that cannot be made raises and writes nothing.
  Rtl::Files::WriteFileBytes(temp / u"blocker", "");
  TTestSettings blocked(temp / u"blocker/Preferences.xml");
  EXPECT_THROW(blocked.Save(), Rtl::Exceptions::Exception);
  EXPECT_EQ(Rtl::Files::ReadFileBytes(temp / u"blocker"), "");
  EXPECT_EQ(TAppSettings().GetNameOfFile(), u"Preferences.xml");
}

}  // namespace
}  // namespace Quorvex::App::Settings
