// Windows only: error codes and their texts for Win32 builds.
#include "Quorvex.Platform.Win32.hpp"
#include "Quorvex.Platform.hpp"

namespace Quorvex::Platform {

uint32_t LastError() { return ::GetLastError(); }

void SetLastError(uint32_t code) { ::SetLastError(code); }

std::u16string ErrorMessage(uint32_t code) {
  const DWORD saved = ::GetLastError();
  wchar_t* buffer = nullptr;
  const DWORD length = FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                                          FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_ARGUMENT_ARRAY,
                                      nullptr, code, 0, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
  std::u16string text;
  if (length > 0 && buffer != nullptr) text = Win32::FromWide(buffer);
  LocalFree(buffer);
  // The system ends its texts with a full stop and a line break; callers
  // embed them in sentences of their own.
  while (!text.empty() && (text.back() <= u' ')) text.pop_back();
  if (!text.empty() && text.back() == u'.') text.pop_back();
  ::SetLastError(saved);
  return text;
}

}  // namespace Quorvex::Platform
