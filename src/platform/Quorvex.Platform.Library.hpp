// Loading shared libraries (DLLs on Windows, shared objects elsewhere).
// Like the rest of the platform layer, nothing here raises.
#pragma once

#include <cstdint>
#include <string>

#include "Quorvex.Platform.hpp"

namespace Quorvex::Platform {

// Why a library did not load: an error code and the system's text for it.
struct LibraryError {
  uint32_t Code = 0;
  std::u16string Text;
};

// Loads the library `name` (a file name or path) with every symbol bound
// now (LoadLibraryW; dlopen with RTLD_NOW). Each success adds one load
// reference. Returns nullptr on failure with `error` filled in: on Windows
// GetLastError and its text, elsewhere ELIBACC and the loader's own text
// (the loader sets no error code of its own), or EINVAL for a name that
// holds a NUL.
void* LoadLibraryModule(PathView name, LibraryError& error);

}  // namespace Quorvex::Platform
