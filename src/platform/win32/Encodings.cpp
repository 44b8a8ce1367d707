// Windows only: conversions through the system's ANSI code page.
#include "Quorvex.Platform.Win32.hpp"
#include "Quorvex.Platform.hpp"
#include "Quorvex.Rtl.Checked.hpp"

namespace Quorvex::Platform {

std::u16string AnsiToUnicode(std::string_view text) {
  if (text.empty()) return {};
  const int size = Rtl::Checked::Narrow<int>(text.size());
  const int length = MultiByteToWideChar(CP_ACP, 0, text.data(), size, nullptr, 0);
  std::u16string result(static_cast<size_t>(length), u'\0');
  MultiByteToWideChar(CP_ACP, 0, text.data(), size, reinterpret_cast<wchar_t*>(result.data()), length);
  return result;
}

std::string UnicodeToAnsi(std::u16string_view text) {
  if (text.empty()) return {};
  const int size = Rtl::Checked::Narrow<int>(text.size());
  const auto* wide = reinterpret_cast<const wchar_t*>(text.data());
  const int length = WideCharToMultiByte(CP_ACP, 0, wide, size, nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<size_t>(length), '\0');
  WideCharToMultiByte(CP_ACP, 0, wide, size, result.data(), length, nullptr, nullptr);
  return result;
}

}  // namespace Quorvex::Platform
