// Windows only: loading DLLs.
#include "Quorvex.Platform.Library.hpp"
#include "Quorvex.Platform.Win32.hpp"

namespace Quorvex::Platform {

void* LoadLibraryModule(PathView name, LibraryError& error) {
  HMODULE module = ::LoadLibraryW(Win32::Wide(name).c_str());
  if (module == nullptr) {
    error.Code = ::GetLastError();
    error.Text = ErrorMessage(error.Code);
  }
  return reinterpret_cast<void*>(module);
}

}  // namespace Quorvex::Platform
