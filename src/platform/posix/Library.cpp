// POSIX only: loading shared objects.
#include <dlfcn.h>

#include <cerrno>

#include "Quorvex.Platform.Library.hpp"
#include "Quorvex.Platform.Posix.hpp"
#include "Quorvex.Platform.Unicode.hpp"

namespace Quorvex::Platform {

void* LoadLibraryModule(PathView name, LibraryError& error) {
  const Posix::NativePath native(name);
  if (!native) {
    error.Code = EINVAL;
    error.Text = ErrorMessage(error.Code);
    return nullptr;
  }
  dlerror();  // forget an older failure so the text below is this one's
  void* module = dlopen(native.c_str(), RTLD_NOW);
  if (module == nullptr) {
    const char* text = dlerror();
    error.Code = ELIBACC;
    error.Text = Utf8ToUtf16(text != nullptr ? text : "");
  }
  return module;
}

}  // namespace Quorvex::Platform
