#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#if !defined(_WIN32)
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include "Quorvex.Types.Url.hpp"

namespace Quorvex::Types::Url {
namespace {

using Rtl::Strings::Utf16ToUtf8;

TEST(TypesUrlTest, FromStringToStringAndCombine) {
  using V = UnicodeStringView;  // text; protocol, host, port and path; the text shown
  const std::tuple<V, V, V, int32_t, V, V> cases[] = {
      {u"https://host1:8080/a/b?x=1", u"https://", u"host1", 8080, u"/a/b?x=1", u"https://host1:8080/a/b?x=1"},
      {u"host:80/x", u"", u"host", 80, u"/x", u"host/x"},
      {u"host:abc", u"", u"host", 0, u"", u"host"},
      {u"user:pw@host/x", u"", u"user", 0, u"/x", u"user/x"},
      {u"ftp://a:b:21/c://d", u"ftp://", u"a", 0, u"/c://d", u"ftp://a/c://d"},
  };
  for (const auto& [text, protocol, host, port, path, shown] : cases) {
    SCOPED_TRACE(Utf16ToUtf8(text));
    const TUrl url(text);
    EXPECT_EQ(url.Protocol, protocol);
    EXPECT_EQ(url.Host, host);
    EXPECT_EQ(url.Path, path);
    EXPECT_EQ(url.Port, port);
    EXPECT_TRUE(url.Username.empty() && url.Password.empty());
    EXPECT_EQ(url.ToString(), shown);
  }
  TUrl url = TUrl::FromString(u"http://h:8080/p");
  url.Username = u"me";
  EXPECT_EQ(url.ToString(), u"http://me@h:8080/p");
  url.Password = u"pw";
  EXPECT_EQ(url.ToString(), u"http://me:pw@h:8080/p");

  EXPECT_EQ(TUrl::Combine(u"http://h/a/", u"/b"), u"http://h/a/b");
  EXPECT_EQ(TUrl::Combine(u"http://h/a  ", u"//b"), u"http://h/a//b");
  EXPECT_EQ(TUrl::Combine(TUrl(u"http://h:80/a"), u"b/c"), u"http://h/a/b/c");
}

// One table for both platforms: Windows answers through the shell's
// functions, Linux through the library's own rules, and both must agree.
TEST(TypesUrlTest, EscapeAndUnescapeVectors) {
  EXPECT_EQ(TUrlEscapeOptionsFormat::Flags({}), 0u);
  EXPECT_EQ(TUrlEscapeOptionsFormat::Flags({ueoBrowserMode}), 0x02000000u);
  EXPECT_EQ(TUrlEscapeOptionsFormat::Flags({ueoDontEscapeExtraInfo, ueoEscapeSpacesOnly, ueoEscapePercent}),
            0x06001000u);
  const UnicodeStringView sample = u"http://host/a b/c d?x y=1&z=%20#frag ment";
  const UnicodeStringView escaped = u"http://h/a%20b?c%20d#e%20f";
  const std::tuple<bool, UnicodeStringView, TURLEscapeOptions, UnicodeStringView> cases[] = {
      {false, u"", {}, u""},
      // The query and anchor are left alone unless only spaces are escaped.
      {false, sample, {ueoDontEscapeExtraInfo}, u"http://host/a%20b/c%20d?x y=1&z=%20#frag ment"},
      {false, sample, {ueoEscapeSpacesOnly, ueoBrowserMode}, u"http://host/a%20b/c%20d?x%20y=1&z=%20#frag%20ment"},
      {false, sample, {ueoEscapeSegmentOnly}, u"http:%2F%2Fhost%2Fa%20b%2Fc%20d%3Fx%20y=1%26z=%20%23frag%20ment"},
      {false, u"a%20b?%", {ueoEscapeSegmentOnly, ueoEscapePercent}, u"a%2520b%3F%25"},
      {false, u"http://h/a%20b?q=%20", {ueoEscapePercent}, u"http://h/a%2520b?q=%20"},
      {false, u"http://h/100% x", {ueoEscapeSpacesOnly, ueoEscapePercent}, u"http://h/100%%20x"},
      // Unsafe characters; 8-bit ones are escaped, wider ones pass.
      {false, u"http://h/a\"<>{}|^`[]&;=~!*'()", {}, u"http://h/a%22%3C%3E%7B%7D%7C%5E%60%5B%5D%26;=~!*'()"},
      {false, u"a\tb\x7F", {}, u"a%09b%7F"},
      {false, u"http://h/\u00E9\u4E2D\U0001F600", {}, u"http://h/%E9\u4E2D\U0001F600"},
      // Scheme rules: web and file URLs turn backslashes into slashes.
      {false, u"http://h\\a b\\c", {}, u"http://h/a%20b/c"},
      {false, u"c:\\a b", {}, u"c:%5Ca%20b"},
      {false, u"file://localhost/c:/a b", {}, u"file:///c:/a%20b"},
      {false, u"file:\\\\server\\share#1?2#3", {}, u"file://server/share%231?2#3"},
      {false, u"mailto:a b?subject=x y", {}, u"mailto:a%20b%3Fsubject=x%20y"},
      {false, u"news:a/b c", {}, u"news:a%2Fb%20c"},
      {true, escaped, {}, u"http://h/a b?c d#e f"},
      {true, escaped, {ueoDontEscapeExtraInfo}, u"http://h/a b?c%20d#e%20f"},
      {true, u"%41%zz%4%%41", {}, u"A%zz%4%A"},
      // Each escape is one character: no UTF-8 decoding.
      {true, u"%e9%C3%A9+%u00e9", {}, u"\u00E9\u00C3\u00A9+%u00e9"},
      {true, u"x%00y", {}, u"x"},
  };
  for (const auto& [unescape, input, options, expected] : cases) {
    SCOPED_TRACE(Utf16ToUtf8(input) + " / " + std::to_string(TUrlEscapeOptionsFormat::Flags(options)));
    EXPECT_EQ(unescape ? TUrl::UnescapeURL(input, options) : TUrl::EscapeURL(input, options), expected);
  }
  // 2083 characters fit the 2084-character buffer with its null; with one
  // more the input comes back unchanged.
  const UnicodeString a2080(2080, u'a');
  EXPECT_EQ(TUrl::EscapeURL(a2080 + u" ", {}), a2080 + u"%20");
  EXPECT_EQ(TUrl::EscapeURL(a2080 + u"a ", {}), a2080 + u"a ");
  EXPECT_EQ(TUrl::UnescapeURL(u"%41aa" + a2080, {}), u"Aaa" + a2080);
  EXPECT_EQ(TUrl::UnescapeURL(u"%41aaa" + a2080, {}), u"%41aaa" + a2080);
}

TEST(TypesUrlTest, VerifyUrl) {
  EXPECT_EQ(TUrl::VerifyPattern().size(), 620u);
  const UnicodeStringView valid[] = {
      u"http://10.0.0.1/index.html", u"HTTP://10.0.0.1/INDEX.HTML", u"https://www.example.com:8080/a/b?x=1&y=2#top",
      u"ftp://u:pw@f.example.org/",  u"~/www.example.museum",       u"example.co.uk/a%20b"};
  const UnicodeStringView invalid[] = {
      u"not a url",     u"", u"http://example", u"http://256.1.1.1", u"http://a.com:123456", u"http://a.com/a b",
      u"gopher://a.com"};
  for (UnicodeStringView text : valid) EXPECT_TRUE(TUrl::VerifyUrl(text)) << Utf16ToUtf8(text);
  for (UnicodeStringView text : invalid) EXPECT_FALSE(TUrl::VerifyUrl(text)) << Utf16ToUtf8(text);
  // Length and nesting do not change the answer: texts that make a
  // backtracking matcher give up (or take seconds) are decided as any other.
  const UnicodeString longSegment = u"http://example.com/" + UnicodeString(49'995, u'a');
  UnicodeString segments = u"http://example.com", labels, crafted = u"http://example.com";
  for (int i = 0; i < 200'000; ++i) segments += u"/a";
  for (int i = 0; i < 200'000; ++i) labels += u"a.";
  for (int i = 0; i < 16; ++i) crafted += u"/a";
  const std::pair<UnicodeString, bool> lengths[] = {
      {longSegment, true},
      {longSegment + u"?x=" + UnicodeString(50'000, u'b') + u"#" + UnicodeString(50'000, u'c'), true},
      {segments, true},
      {labels + u"com", true},
      {labels + u"com/" + segments.substr(18), true},
      {crafted + u"/%", false},
      {crafted + u"/%41", true},
      {labels, false},
      {UnicodeString(1024 * 1024, u'-'), false},
      {segments + u" ", false},
      {longSegment + u"%", false},
  };
  for (const auto& [text, expected] : lengths) {
    SCOPED_TRACE(Utf16ToUtf8(text.substr(0, 40)) + "... of " + std::to_string(text.size()));
    EXPECT_EQ(TUrl::VerifyUrl(text), expected);
  }

  std::atomic<int> hits = 0;
  std::vector<std::thread> threads(4);
  for (std::thread& thread : threads)
    thread = std::thread([&hits] {
      for (int i = 0; i < 200; ++i) hits += TUrl::VerifyUrl(u"http://a.com/") + TUrl::VerifyUrl(u"not a url");
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(hits, 800);
}

#if !defined(_WIN32)
// Reads what a writer puts into the FIFO `fd` until it closes it, waiting
// at most a minute for each piece.
std::string ReadUntilClosed(int fd) {
  std::string text;
  pollfd watch{fd, POLLIN, 0};
  char buffer[256];
  while (::poll(&watch, 1, 60'000) > 0) {
    const ssize_t count = ::read(fd, buffer, sizeof buffer);
    if (count <= 0) break;
    text.append(buffer, static_cast<size_t>(count));
  }
  return text;
}

// A stand-in xdg-open first on PATH writes what it was asked to open into
// a FIFO the test reads, so the test waits for the opener, not for a clock.
TEST(TypesUrlTest, GoUrlHandsTheUrlToTheOpener) {
  namespace fs = std::filesystem;
  std::string folderName = (fs::temp_directory_path() / "qx-gourl-XXXXXX").string();
  const fs::path folder = ::mkdtemp(folderName.data());
  const fs::path record = folder / "opened";
  ASSERT_EQ(::mkfifo(record.c_str(), 0600), 0);
  std::ofstream(folder / "xdg-open") << "#!/bin/sh\nprintf '%s' \"$1\" > " << record << "\n";
  fs::permissions(folder / "xdg-open", fs::perms::owner_all);
  const std::string oldPath = std::getenv("PATH");
  ::setenv("PATH", (folder.string() + ":" + oldPath).c_str(), 1);
  const auto opened = [&record](const auto& go) {
    // Open before the opener runs: its write waits for this reader.
    const int fd = ::open(record.c_str(), O_RDONLY | O_NONBLOCK);
    go();
    std::string text = ReadUntilClosed(fd);
    ::close(fd);
    return text;
  };
  EXPECT_EQ(opened([] { TUrl::GoUrl(u"example.com:8080/a b?x=1"); }), "http://example.com:8080/a b?x=1");
  EXPECT_EQ(opened([] { TUrl::GoUrl(TUrl(u"https://example.com:80/\u00E9")); }), "https://example.com/\xC3\xA9");
  ::setenv("PATH", oldPath.c_str(), 1);
  fs::remove_all(folder);
}
#endif

}  // namespace
}  // namespace Quorvex::Types::Url
