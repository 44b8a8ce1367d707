// POSIX only: file attributes, folder changes and file handles on Linux.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>

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

namespace {

// Like MoveFileW, a rename never replaces what already stands at the new
// name; plain rename() would overwrite it silently.
bool RenameNoReplace(const char* from, const char* to) {
  if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  // File systems without the no-replace flag: check first, then rename.
  struct stat info {};
  if (lstat(to, &info) == 0) {
    errno = EEXIST;
    return false;
  }
  return rename(from, to) == 0;
}

bool WriteAll(int file, const char* bytes, ssize_t count) {
  while (count > 0) {
    const ssize_t done = write(file, bytes, static_cast<size_t>(count));
    if (done <= 0) return false;
    bytes += done;
    count -= done;
  }
  return true;
}

bool CopyContent(int source, int target) {
  char buffer[65536];
  for (;;) {
    const ssize_t count = read(source, buffer, sizeof buffer);
    if (count <= 0) return count == 0;
    if (!WriteAll(target, buffer, count)) return false;
  }
}

// Gives `target` the content, permission bits and times of `source`
// (described by `info`) and flushes it to its device.
bool CopyFile(int source, int target, const struct stat& info) {
  const timespec times[] = {info.st_atim, info.st_mtim};
  return CopyContent(source, target) && fchmod(target, info.st_mode & 07777) == 0 && futimens(target, times) == 0 &&
         fsync(target) == 0;
}

// Closes a descriptor when it leaves scope, keeping errno.
class TDescriptor {
 public:
  explicit TDescriptor(int descriptor) : FDescriptor(descriptor) {}
  ~TDescriptor() {
    if (FDescriptor < 0) return;
    const int code = errno;
    close(FDescriptor);
    errno = code;
  }
  TDescriptor(const TDescriptor&) = delete;
  TDescriptor& operator=(const TDescriptor&) = delete;

  int Get() const { return FDescriptor; }

 private:
  int FDescriptor;
};

// Moves a file to another file system as MoveFileW does between volumes:
// copy, flush, then delete the source. `to` must not exist. Any failure
// removes the copy and leaves the source as it was, with errno from the
// step that failed. Folders, links and devices do not move this way.
bool MoveFileAcross(const char* from, const char* to) {
  struct stat info {};
  if (lstat(from, &info) != 0) return false;
  if (!S_ISREG(info.st_mode)) {
    errno = EXDEV;
    return false;
  }
  const TDescriptor source(open(from, O_RDONLY | O_CLOEXEC));
  if (source.Get() < 0) return false;
  const TDescriptor target(open(to, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (target.Get() < 0) return false;
  if (CopyFile(source.Get(), target.Get(), info) && unlink(from) == 0) return true;
  const int code = errno;
  unlink(to);  // the copy made here: O_EXCL guarantees nothing else stood there
  errno = code;
  return false;
}

// Refuses, with the reason in errno, what a file may not replace: a
// folder, a file with the read-only attribute, a device or other special
// entry. Nothing standing at `target` is fine.
bool MayReplace(const char* target) {
  struct stat info {};
  if (lstat(target, &info) != 0) return errno == ENOENT;
  int code = 0;
  if (S_ISDIR(info.st_mode)) {
    code = EISDIR;
  } else if (S_ISREG(info.st_mode) && (info.st_mode & S_IWUSR) == 0) {
    code = EACCES;
  } else if (!S_ISREG(info.st_mode) && !S_ISLNK(info.st_mode)) {
    code = EINVAL;
  }
  errno = code;
  return code == 0;
}

// Flushes the folder holding `file`, so that a rename in it outlives a
// crash. A file system that cannot flush folders (EINVAL) orders its
// renames by itself.
bool SyncFolderOf(const std::string& file) {
  const size_t delimiter = file.rfind('/');
  const std::string folder = delimiter == std::string::npos ? "." : file.substr(0, std::max<size_t>(delimiter, 1));
  const TDescriptor handle(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return handle.Get() >= 0 && (fsync(handle.Get()) == 0 || errno == EINVAL);
}

}  // namespace

bool ReplaceFile(PathView from, PathView to) {
  const Posix::NativePath source(from);
  const Posix::NativePath target(to);
  return source && target && MayReplace(target.c_str()) && rename(source.c_str(), target.c_str()) == 0 &&
         SyncFolderOf(target.str());
}

bool RenameFile(PathView oldName, PathView newName) {
  const Posix::NativePath from(oldName);
  const Posix::NativePath to(newName);
  if (!from || !to) return false;
  if (RenameNoReplace(from.c_str(), to.c_str())) return true;
  return errno == EXDEV && MoveFileAcross(from.c_str(), to.c_str());
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
  // A file made here is writable whatever the umask gave its bits; one
  // that was there already is checked before it loses its content.
  const FileHandle created = FileCreateNew(path);
  if (created != InvalidFile || errno != EEXIST) return created;
  return Admit(open(Posix::NativePath(path).c_str(), O_RDWR | O_CLOEXEC), true, true);
}

FileHandle FileCreateNew(PathView path) {
  const Posix::NativePath native(path);
  return native ? open(native.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666) : InvalidFile;
}

bool FileCopyAccess(FileHandle file, PathView original) {
  struct stat info {};
  if (!LinkStatOf(original, info)) return errno == ENOENT;
  if (!S_ISREG(info.st_mode)) return true;
  const int descriptor = static_cast<int>(file);
  // Only a privileged process may give a file away; for any other the new
  // file stays its own, as a file it wrote anew would.
  if (fchown(descriptor, info.st_uid, info.st_gid) != 0 && errno != EPERM) return false;
  // After the owner: changing the owner clears the set-id bits.
  return fchmod(descriptor, info.st_mode & 07777) == 0;
}

bool FileFlush(FileHandle file) { return fsync(static_cast<int>(file)) == 0; }

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
