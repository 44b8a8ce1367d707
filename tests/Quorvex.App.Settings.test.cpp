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

// ---------------------------------------------------------------------------
// Crash safety: a child process saves large settings in a loop, switching
// between two contents, while the parent kills it at random moments.

constexpr int kEntries = 4000;

void Fill(TTestSettings& settings, int generation) {
  settings.Width = generation;
  settings.GetRecent()->Clear();
  for (int i = 0; i < kEntries; ++i)
    settings.GetRecent()->Add(Rtl::Strings::Format(u"%d-entry-%d", generation, i));
}

// A file holds one whole content when every entry belongs to its generation.
bool IsWhole(TTestSettings& loaded) {
  TTestSettings expected;
  Fill(expected, loaded.Width);
  return loaded.GetRecent()->Equals(*expected.GetRecent());
}

TEST(AppSettingsCrashTest, DISABLED_SaveInALoop) {
  const char* fileName = std::getenv(kChildFileVariable);
  ASSERT_NE(fileName, nullptr);
  TTestSettings settings(Rtl::Strings::Utf8ToUtf16(fileName));
  for (int generation = 1;; generation = 3 - generation) {
    Fill(settings, generation);
    settings.Save();
    std::fputc('s', stderr);
    std::fflush(stderr);
  }
}

// The test binary run again as the saving child, its progress on a pipe.
class TSavingChild {
 public:
  explicit TSavingChild(const std::string& fileName);
  ~TSavingChild();
  // Waits until the child reports `saves` more completed saves.
  bool AwaitSaves(int saves);
  void Kill();

 private:
#if defined(_WIN32)
  PROCESS_INFORMATION FProcess{};
  HANDLE FProgress = nullptr;
#else
  pid_t FPid = -1;
  int FProgress = -1;
#endif
};

#if defined(_WIN32)
TSavingChild::TSavingChild(const std::string& fileName) {
  SECURITY_ATTRIBUTES inherit{sizeof(inherit), nullptr, TRUE};
  HANDLE writeEnd = nullptr;
  CreatePipe(&FProgress, &writeEnd, &inherit, 0);
  SetHandleInformation(FProgress, HANDLE_FLAG_INHERIT, 0);
  SetEnvironmentVariableA(kChildFileVariable, fileName.c_str());
  wchar_t self[MAX_PATH];
  GetModuleFileNameW(nullptr, self, MAX_PATH);
  std::wstring command = L"\"" + std::wstring(self) +
                         L"\" --gtest_filter=AppSettingsCrashTest.DISABLED_SaveInALoop --gtest_also_run_disabled_tests";
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdError = writeEnd;
  startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
  CreateProcessW(self, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &FProcess);
  CloseHandle(writeEnd);
}

TSavingChild::~TSavingChild() {
  Kill();
  CloseHandle(FProgress);
  CloseHandle(FProcess.hThread);
  CloseHandle(FProcess.hProcess);
}

bool TSavingChild::AwaitSaves(int saves) {
  char progress;
  DWORD read = 0;
  for (int i = 0; i < saves; ++i)
    if (!ReadFile(FProgress, &progress, 1, &read, nullptr) || read != 1) return false;
  return true;
}

void TSavingChild::Kill() {
  TerminateProcess(FProcess.hProcess, 9);
  WaitForSingleObject(FProcess.hProcess, INFINITE);
}
#else
TSavingChild::TSavingChild(const std::string& fileName) {
  int ends[2];
  if (pipe(ends) != 0) return;
  setenv(kChildFileVariable, fileName.c_str(), 1);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
  posix_spawn_file_actions_addclose(&actions, ends[0]);
  char filter[] = "--gtest_filter=AppSettingsCrashTest.DISABLED_SaveInALoop";
  char disabled[] = "--gtest_also_run_disabled_tests";
  char self[] = "/proc/self/exe";
  char* argv[] = {self, filter, disabled, nullptr};
  if (posix_spawn(&FPid, self, &actions, nullptr, argv, environ) != 0) FPid = -1;
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  FProgress = ends[0];
}

TSavingChild::~TSavingChild() {
  Kill();
  close(FProgress);
}

bool TSavingChild::AwaitSaves(int saves) {
  char progress;
  for (int i = 0; i < saves; ++i)
    if (read(FProgress, &progress, 1) != 1) return false;
  return true;
}

void TSavingChild::Kill() {
  if (FPid <= 0) return;
  kill(FPid, SIGKILL);
  waitpid(FPid, nullptr, 0);
  FPid = -1;
}
#endif

TEST(AppSettingsCrashTest, AKilledSaveLeavesTheOldOrTheNewFile) {
  TTempFolder temp;
  const UnicodeString fileName = temp / u"Preferences.xml";
  std::mt19937 random(std::random_device{}());
  constexpr int kKills = 200;
  for (int kill = 0; kill < kKills; ++kill) {
    SCOPED_TRACE(kill);
    TSavingChild child(Rtl::Strings::Utf16ToUtf8(fileName));
    // Let it finish a save or two, then strike somewhere inside the next
    // one: the busy wait spreads the moment over a whole save.
    ASSERT_TRUE(child.AwaitSaves(1 + static_cast<int>(random() % 2)));
    const auto until = std::chrono::steady_clock::now() + std::chrono::microseconds(random() % 5000);
    while (std::chrono::steady_clock::now() < until) {
    }
    child.Kill();

    TTestSettings loaded(fileName);
    ASSERT_NO_THROW(loaded.Load());
    ASSERT_TRUE(loaded.Width == 1 || loaded.Width == 2) << loaded.Width;
    ASSERT_TRUE(IsWhole(loaded));
  }
}

}  // namespace
}  // namespace Quorvex::App::Settings
