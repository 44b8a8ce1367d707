// Windows only: loading DLLs.
#include "Quorvex.Platform.Library.hpp"
#include "Quorvex.Platform.Win32.hpp"

namespace Quorvex::Platform {

void* LoadLibraryModule(PathView name, LibraryError& error) {
  const Win32::WidePath wide(name);
  HMODULE module = wide ? ::LoadLibraryW(wide.c_str()) : nullptr;
  if (module == nullptr) {
    error.Code = ::GetLastError();
    error.Text = ErrorMessage(error.Code);
  }
  return reinterpret_cast<void*>(module);
}

}  // namespace Quorvex::Platform
