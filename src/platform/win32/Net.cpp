// Windows only: socket address conversions, the shell's URL escaping and
// opening a URL through the shell.
// winsock2.h has to come before windows.h, which would pull in the older
// winsock.h otherwise.
#include <winsock2.h>

#include "Quorvex.Platform.Win32.hpp"
// shellapi.h and shlwapi.h need windows.h first.
#include <shellapi.h>
#include <shlwapi.h>
// shlwapi.h maps these names to their W forms with macros, which would
// rename the platform functions of the same names.
#undef UrlEscape
#undef UrlUnescape

#include <cstring>

#include "Quorvex.Platform.Net.hpp"

namespace Quorvex::Platform {

namespace {

// Runs one of the shell's URL functions (which take the buffer size in and
// give the length out) over a UrlBufferLength buffer.
template <typename Call>
bool CallUrlFunction(std::u16string_view url, std::u16string& result, Call call) {
  result.clear();
  std::wstring source(url.begin(), url.end());
  wchar_t buffer[UrlBufferLength] = {};
  DWORD size = UrlBufferLength;
  if (call(source.data(), buffer, &size) != S_OK) return false;
  result = Win32::FromWide(buffer);
  return true;
}

}  // namespace

uint32_t InetAddr(const std::string& text) { return inet_addr(text.c_str()); }

std::u16string InetNtoa(uint32_t address) {
  in_addr value = {};
  value.s_addr = address;
  const char* text = inet_ntoa(value);
  return text ? std::u16string(text, text + strlen(text)) : std::u16string();
}

bool UrlEscape(std::u16string_view url, uint32_t flags, std::u16string& result) {
  return CallUrlFunction(url, result, [flags](wchar_t* source, wchar_t* buffer, DWORD* size) {
    return UrlEscapeW(source, buffer, size, flags);
  });
}

bool UrlUnescape(std::u16string_view url, uint32_t flags, std::u16string& result) {
  return CallUrlFunction(url, result, [flags](wchar_t* source, wchar_t* buffer, DWORD* size) {
    return UrlUnescapeW(source, buffer, size, flags);
  });
}

void OpenInBrowser(std::u16string_view url) {
  const std::wstring target(url.begin(), url.end());
  ShellExecuteW(nullptr, L"open", target.c_str(), nullptr, nullptr, SW_SHOW);
}

}  // namespace Quorvex::Platform
