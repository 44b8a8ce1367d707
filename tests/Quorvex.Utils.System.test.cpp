#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <tuple>

#include "Quorvex.Rtl.Files.TestSupport.hpp"
#include "Quorvex.TestSupport.hpp"
#include "Quorvex.Utils.System.hpp"

#if defined(__linux__)
#include <pwd.h>
#include <unistd.h>
#endif

namespace Quorvex::Utils::System {
namespace {

using Rtl::Strings::Utf16ToUtf8;

TEST(UtilsSystemTest, WindowsVersionDecision) {
  const std::tuple<uint32_t, uint32_t, uint32_t, uint8_t, bool, TWindowsVersion> cases[] = {
      {2, 5, 0, 1, false, wv2000},  {2, 5, 1, 1, false, wvXP},          {2, 5, 2, 1, true, wvXP},
      {2, 5, 2, 3, false, wv2003},  {2, 4, 0, 1, false, wvUnknown},     {2, 6, 0, 1, false, wvVista},
      {2, 6, 1, 1, false, wvSeven}, {2, 6, 2, 1, false, wvWin8},        {2, 6, 3, 1, false, wvUnknown},
      {2, 6, 0, 3, false, wv2008},  {2, 6, 2, 3, false, wv2008},        {2, 10, 0, 1, false, wvUnknown},
      {2, 7, 2, 1, false, wvWin8},  {2, 10, 3, 2, false, wvWinSrv2012}, {2, 10, 2, 0, false, wvUnknown},
      {1, 4, 9, 0, false, wv95},    {1, 4, 10, 0, false, wv98},         {1, 4, 89, 0, false, wv98},
      {1, 4, 90, 0, false, wvME},   {0, 6, 1, 1, false, wvUnknown},
  };
  for (const auto& [platform, major, minor, productType, wow64, expected] : cases)
    EXPECT_EQ(Detail::WindowsVersionOf(platform, major, minor, productType, wow64), expected)
        << platform << " " << major << "." << minor << " type " << int{productType};
}

TEST(UtilsSystemTest, OSDescriptionAndWhatEveryPlatformAnswersAlike) {
  EXPECT_EQ(Detail::OSDescriptionOf(wvSeven, u"Windows", u"6.1.7601", u""), u"Windows 7 (6.1.7601)");
  EXPECT_EQ(Detail::OSDescriptionOf(wvUnknown, u"Windows", u"10.0.19045", u""), u"Windows 10.0.19045");
  EXPECT_EQ(Detail::OSDescriptionOf(wvUnknown, u"Linux", u"6.1.0-18-amd64", u"Debian GNU/Linux 12 (bookworm)"),
            u"Linux 6.1.0-18-amd64 (Debian GNU/Linux 12 (bookworm))");
  const UnicodeString real = gSystem::GetOSDescription();
  EXPECT_TRUE(real.starts_with(Rtl::Files::Testing::OnWindows() ? u"Windows " : u"Linux ")) << Utf16ToUtf8(real);

  const TWindowsVersion version = gSystem::GetWindowsVersion();
  EXPECT_EQ(gSystem::GetWindowsVersionStr(), STR_WINDOWS_VERSION[version]);
  EXPECT_TRUE(version >= wvVista || !gSystem::IsUACEnabled());
  EXPECT_TRUE(sizeof(void*) == 4 || !gSystem::IsWow64());
  const int64_t memory = gSystem::MemorySize();
  EXPECT_GT(memory, 0);
  EXPECT_EQ(gSystem::MemorySize(), memory);
}

#if defined(__linux__)

TEST(UtilsSystemTest, PosixFoldersFollowXdg) {
  // "@" stands for a fresh temporary folder; the home folder is @/home.
  struct Case {
    const char *configHome, *dataHome, *userDirs, *roaming, *local, *docs;
  } cases[] = {
      {nullptr, nullptr, nullptr, "@/home/.config", "@/home/.local/share", "@/home/Documents"},
      {"@/cfg/", "@/data", "XDG_DOCUMENTS_DIR=\"$HOME/Papers\"", "@/cfg", "@/data", "@/home/Papers"},
      {"cfg", "", "XDG_DOCUMENTS_DIR=\"papers\"", "@/home/.config", "@/home/.local/share", "@/home/Documents"},
      {nullptr, nullptr, "# xdg\nXDG_DESKTOP_DIR=\"$HOME/Desktop\"\nXDG_DOCUMENTS_DIR=\"@/papers/\"", "@/home/.config",
       "@/home/.local/share", "@/papers"},
      {"@/c", "@/d", "XDG_DOCUMENTS_DIR=\"$HOME/\"", "@/c", "@/d", "@/home"},
      {"@/c", "@/d", "XDG_DOCUMENTS_DIR=\"$HOMEX/a\"", "@/c", "@/d", "@/home/Documents"},
      {"@/c", "@/d", "XDG_DOCUMENTS_DIR=\"$HOME/Old\"\nXDG_DOCUMENTS_DIR=\"$HOME/Say \\\"hi\\\"\"", "@/c", "@/d",
       "@/home/Say \"hi\""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(&c - cases);
    Rtl::Files::Testing::TTempFolder temp;
    auto place = [root = Utf16ToUtf8(temp.Path())](const char* text) -> std::optional<std::string> {
      if (text == nullptr) return std::nullopt;
      std::string result = text;
      if (const size_t at = result.find('@'); at != std::string::npos) result.replace(at, 1, root);
      return result;
    };
    const TScopedEnv home("HOME", place("@/home/")), config("XDG_CONFIG_HOME", place(c.configHome)),
        data("XDG_DATA_HOME", place(c.dataHome));
    if (c.userDirs) {
      std::filesystem::create_directories(*place(c.roaming));
      std::ofstream(*place(c.roaming) + "/user-dirs.dirs") << *place(c.userDirs) << "\n";
    }
    EXPECT_EQ(Utf16ToUtf8(gSystem::UserAppDataPath()), place(c.roaming));
    EXPECT_EQ(Utf16ToUtf8(gSystem::UserAppDataLocalPath()), place(c.local));
    EXPECT_EQ(Utf16ToUtf8(gSystem::UserDocsPath()), place(c.docs));
  }
}

TEST(UtilsSystemTest, PosixAnswers) {
  EXPECT_EQ(gSystem::IsAdmin(), geteuid() == 0);
  EXPECT_EQ(gSystem::IsElevated(), geteuid() == 0);
  EXPECT_EQ(gSystem::GetWindowsVersion(), wvUnknown);
  EXPECT_EQ(gSystem::MemorySize(), int64_t{sysconf(_SC_PHYS_PAGES)} * sysconf(_SC_PAGESIZE));
  // Without $HOME the passwd entry names the home folder.
  if (const passwd* entry = getpwuid(getuid())) {
    const TScopedEnv home("HOME", std::nullopt), config("XDG_CONFIG_HOME", std::nullopt);
    const std::string folder = entry->pw_dir;
    EXPECT_EQ(Utf16ToUtf8(gSystem::UserAppDataPath()), (folder == "/" ? "" : folder) + "/.config");
  }
}

#endif  // __linux__

#if defined(_WIN32)

// The standard folders keep their usual places relative to each other.
TEST(UtilsSystemTest, WindowsFolders) {
  using Rtl::Strings::LowerCase;
  const UnicodeString windows = LowerCase(gSystem::WindowsPath());
  EXPECT_TRUE(windows.ends_with(u":\\windows")) << Utf16ToUtf8(windows);
  EXPECT_EQ(LowerCase(gSystem::SystemPath()), windows + u"\\system32");
  const UnicodeString roaming = gSystem::UserAppDataPath();
  ASSERT_TRUE(roaming.ends_with(u"\\AppData\\Roaming")) << Utf16ToUtf8(roaming);
  const UnicodeString profile = roaming.substr(0, roaming.size() - 16);
  EXPECT_EQ(gSystem::UserAppDataLocalPath(), profile + u"\\AppData\\Local");
  EXPECT_EQ(gSystem::UserDocsPath(), profile + u"\\Documents");
  EXPECT_TRUE(gSystem::GetProgramFilesPath().ends_with(u":\\Program Files"));
  EXPECT_EQ(gSystem::GetProgramFilesX86Path(), gSystem::GetProgramFilesPath() + u" (x86)");
}

#endif  // _WIN32

}  // namespace
}  // namespace Quorvex::Utils::System
