// POSIX only: file attributes, folder changes and file handles on Linux.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "Quorvex.Platform.Posix.hpp"
#include "Quorvex.Platform.hpp"

namespace Quorvex::Platform {

namespace {

bool StatOf(PathView path, struct stat& info) {
  const Posix::NativePath native(path);
  return native && stat(native.c_str(), &info) == 0;
}

// Describes a link itself rather than its target, as Windows does.
bool LinkStatOf(PathView path, struct stat& info) {
  const Posix::NativePath native(path);
  return native && lstat(native.c_str(), &info) == 0;
}

// Lets through an opened descriptor only where Windows would open the
// file: never a folder, and for writing never an entry that reports the
// read-only attribute, even for root, whom the kernel lets write anyway.
// A regular file is truncated once admitted when `truncate` asks for it.
FileHandle Admit(int file, bool writing, bool truncate) {
  if (file < 0) return InvalidFile;
  struct stat info {};
  int code = 0;
  if (fstat(file, &info) != 0) {
    code = errno;
  } else if (S_ISDIR(info.st_mode)) {
    code = EISDIR;
  } else if (writing && (info.st_mode & S_IWUSR) == 0) {
    code = EACCES;
  } else if (truncate && S_ISREG(info.st_mode) && ftruncate(file, 0) != 0) {
    code = errno;
  }
  if (code == 0) return file;
  close(file);
  errno = code;
  return InvalidFile;
}

// One transfer is capped like a Windows ReadFile/WriteFile count.
size_t TransferSize(int64_t count) { return static_cast<size_t>(std::clamp<int64_t>(count, 0, 0x7FFFF000)); }

}  // namespace

namespace Posix {

uint32_t AttributesOf(const struct stat& info, PathView name) {
  uint32_t attributes = S_ISDIR(info.st_mode) ? faDirectory : faArchive;
  if ((info.st_mode & S_IWUSR) == 0) attributes |= faReadOnly;
  if (name.size() > 1 && name.front() == u'.' && name != u"..") attributes |= faHidden;
  return attributes;
}

}  // namespace Posix

uint32_t GetFileAttributes(PathView path) {
  struct stat info {};
  if (!LinkStatOf(path, info)) return InvalidAttributes;
  const size_t delimiter = path.rfind(u'/');
  const uint32_t attributes =
      Posix::AttributesOf(info, delimiter == PathView::npos ? path : path.substr(delimiter + 1));
  return S_ISLNK(info.st_mode) ? attributes | faSymLink : attributes;
}

bool SetFileAttributes(PathView path, uint32_t attributes) {
  // Only the read-only bit has a POSIX counterpart: the owner's write bit.
  // A link has no bits of its own to change, and changing its target's
  // would reach outside the path that was named.
  struct stat info {};
  if (!LinkStatOf(path, info)) return false;
  if (S_ISLNK(info.st_mode)) return true;
  const mode_t mode = (attributes & faReadOnly) != 0 ? (info.st_mode & ~S_IWUSR) : (info.st_mode | S_IWUSR);
  return chmod(Posix::NativePath(path).c_str(), mode & 07777) == 0;
}

bool FileExists(PathView path) {
  struct stat info {};
  return StatOf(path, info) && !S_ISDIR(info.st_mode);
}

bool DirectoryExists(PathView path) {
  struct stat info {};
  return StatOf(path, info) && S_ISDIR(info.st_mode);
}

bool DeleteFile(PathView path) {
  const Posix::NativePath native(path);
  return native && unlink(native.c_str()) == 0;
}

bool CreateDirectory(PathView path) {
  const Posix::NativePath native(path);
  return native && mkdir(native.c_str(), 0777) == 0;
}

bool RemoveDirectory(PathView path) {
  const Posix::NativePath native(path);
  return native && rmdir(native.c_str()) == 0;
}

bool RenameFile(PathView oldName, PathView newName) {
  // Like MoveFileW, a rename never replaces what already stands at the new
  // name; plain rename() would overwrite it silently.
  const Posix::NativePath from(oldName);
  const Posix::NativePath to(newName);
  if (!from || !to) return false;
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  // File systems without the no-replace flag: check first, then rename.
  struct stat info {};
  if (lstat(to.c_str(), &info) == 0) {
    errno = EEXIST;
    return false;
  }
  return rename(from.c_str(), to.c_str()) == 0;
}

FileHandle FileOpen(PathView path, uint32_t mode) {
  // Share modes have no POSIX counterpart and are ignored.
  static constexpr int kAccess[] = {O_RDONLY, O_WRONLY, O_RDWR};
  const uint32_t access = mode & 3;
  if (access > 2) {
    errno = EINVAL;
    return InvalidFile;
  }
  const Posix::NativePath native(path);
  if (!native) return InvalidFile;
  return Admit(open(native.c_str(), kAccess[access] | O_CLOEXEC), access != fmOpenRead, false);
}

FileHandle FileCreate(PathView path) {
  const Posix::NativePath native(path);
  if (!native) return InvalidFile;
  // A file made here is writable whatever the umask gave its bits; one
  // that was there already is checked before it loses its content.
  const int created = open(native.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (created >= 0 || errno != EEXIST) return created;
  return Admit(open(native.c_str(), O_RDWR | O_CLOEXEC), true, true);
}

int64_t FileRead(FileHandle file, void* buffer, int64_t count) {
  return read(static_cast<int>(file), buffer, TransferSize(count));
}

int64_t FileWrite(FileHandle file, const void* buffer, int64_t count) {
  return write(static_cast<int>(file), buffer, TransferSize(count));
}

int64_t FileSeek(FileHandle file, int64_t offset, int origin) {
  static constexpr int kWhence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
  if (origin < 0 || origin > 2) {
    errno = EINVAL;
    return -1;
  }
  return lseek(static_cast<int>(file), offset, kWhence[origin]);
}

void FileClose(FileHandle file) { close(static_cast<int>(file)); }

}  // namespace Quorvex::Platform
