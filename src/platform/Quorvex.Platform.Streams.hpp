// File-handle operations needed by the runtime's streams beyond the basic
// open, read, write and seek of Quorvex.Platform.hpp. Like the rest of the
// platform layer, nothing here raises: failures answer false with the code
// in LastError().
#pragma once

#include "Quorvex.Platform.hpp"

namespace Quorvex::Platform {

// Makes the file end at its current position, truncating or extending it.
bool FileSetEnd(FileHandle file);

}  // namespace Quorvex::Platform
