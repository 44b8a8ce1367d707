// Windows only: file-handle operations of the runtime's streams.
#include "Quorvex.Platform.Streams.hpp"
#include "Quorvex.Platform.Win32.hpp"

namespace Quorvex::Platform {

bool FileSetEnd(FileHandle file) { return SetEndOfFile(reinterpret_cast<HANDLE>(file)) != FALSE; }

}  // namespace Quorvex::Platform
