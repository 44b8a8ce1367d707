// POSIX only: file-handle operations of the runtime's streams.
#include <unistd.h>

#include "Quorvex.Platform.Streams.hpp"

namespace Quorvex::Platform {

bool FileSetEnd(FileHandle file) {
  const int descriptor = static_cast<int>(file);
  const off_t position = lseek(descriptor, 0, SEEK_CUR);
  return position >= 0 && ftruncate(descriptor, position) == 0;
}

}  // namespace Quorvex::Platform
