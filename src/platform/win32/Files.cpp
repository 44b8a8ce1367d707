// Windows only: file attributes, folder changes and file handles.
#include <algorithm>

#include "Quorvex.Platform.Win32.hpp"
#include "Quorvex.Platform.hpp"

namespace Quorvex::Platform {

namespace {

HANDLE Native(FileHandle file) { return reinterpret_cast<HANDLE>(file); }

// One ReadFile/WriteFile call moves at most this many bytes.
DWORD TransferSize(int64_t count) { return static_cast<DWORD>(std::clamp<int64_t>(count, 0, 0x7FFFF000)); }

}  // namespace

uint32_t GetFileAttributes(PathView path) {
  const Win32::WidePath wide(path);
  return wide ? GetFileAttributesW(wide.c_str()) : InvalidAttributes;
}

bool SetFileAttributes(PathView path, uint32_t attributes) {
  const Win32::WidePath wide(path);
  return wide && SetFileAttributesW(wide.c_str(), attributes) != FALSE;
}

namespace {

// The attributes of what `path` finally names: a link is followed to its
// target, and a dangling link names nothing.
uint32_t TargetAttributes(PathView path) {
  const uint32_t attributes = GetFileAttributes(path);
  if (attributes == InvalidAttributes || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return attributes;
  // GetFileAttributes has refused a path holding a NUL already.
  const HANDLE target =
      CreateFileW(Win32::WidePath(path).c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (target == INVALID_HANDLE_VALUE) return InvalidAttributes;
  BY_HANDLE_FILE_INFORMATION info{};
  const bool known = GetFileInformationByHandle(target, &info) != FALSE;
  CloseHandle(target);
  return known ? info.dwFileAttributes : InvalidAttributes;
}

}  // namespace

bool FileExists(PathView path) {
  const uint32_t attributes = TargetAttributes(path);
  return attributes != InvalidAttributes && (attributes & faDirectory) == 0;
}

bool DirectoryExists(PathView path) {
  const uint32_t attributes = TargetAttributes(path);
  return attributes != InvalidAttributes && (attributes & faDirectory) != 0;
}

bool DeleteFile(PathView path) {
  const Win32::WidePath wide(path);
  return wide && DeleteFileW(wide.c_str()) != FALSE;
}

bool CreateDirectory(PathView path) {
  const Win32::WidePath wide(path);
  return wide && CreateDirectoryW(wide.c_str(), nullptr) != FALSE;
}

bool RemoveDirectory(PathView path) {
  const Win32::WidePath wide(path);
  return wide && RemoveDirectoryW(wide.c_str()) != FALSE;
}

bool RenameFile(PathView oldName, PathView newName) {
  const Win32::WidePath from(oldName);
  const Win32::WidePath to(newName);
  return from && to && MoveFileW(from.c_str(), to.c_str()) != FALSE;
}

namespace {

// Windows refuses to write to a file with the read-only attribute. Asking
// first keeps that so where the layer beneath would let an administrator
// through (Wine run by root).
bool IsReadOnlyFile(const Win32::WidePath& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ||
      (attributes & FILE_ATTRIBUTE_READONLY) == 0) {
    return false;
  }
  ::SetLastError(ERROR_ACCESS_DENIED);
  return true;
}

}  // namespace

FileHandle FileOpen(PathView path, uint32_t mode) {
  static constexpr DWORD kAccess[] = {GENERIC_READ, GENERIC_WRITE, GENERIC_READ | GENERIC_WRITE};
  // Indexed by the share bits; 0 (no share mode given) locks others out
  // like fmShareExclusive.
  static constexpr DWORD kShare[] = {0,
                                     0,
                                     FILE_SHARE_READ,
                                     FILE_SHARE_WRITE,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE};
  const uint32_t access = mode & 3;
  const uint32_t share = (mode & 0xF0) >> 4;
  if (access > 2 || share > 5) {
    ::SetLastError(ERROR_INVALID_PARAMETER);
    return InvalidFile;
  }
  const Win32::WidePath wide(path);
  if (!wide || (access != fmOpenRead && IsReadOnlyFile(wide))) return InvalidFile;
  const HANDLE file =
      CreateFileW(wide.c_str(), kAccess[access], kShare[share], nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  return reinterpret_cast<FileHandle>(file);
}

namespace {

// Opens `path` for reading and writing, unshared, as `disposition` says.
FileHandle CreateForWriting(const Win32::WidePath& path, DWORD disposition) {
  const HANDLE file =
      CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
  return reinterpret_cast<FileHandle>(file);
}

}  // namespace

FileHandle FileCreate(PathView path) {
  const Win32::WidePath wide(path);
  if (!wide || IsReadOnlyFile(wide)) return InvalidFile;
  return CreateForWriting(wide, CREATE_ALWAYS);
}

FileHandle FileCreateNew(PathView path) {
  const Win32::WidePath wide(path);
  return wide ? CreateForWriting(wide, CREATE_NEW) : InvalidFile;
}

bool FileCopyAccess(FileHandle, PathView) { return true; }

bool FileFlush(FileHandle file) { return FlushFileBuffers(Native(file)) != FALSE; }

bool ReplaceFile(PathView from, PathView to) {
  const Win32::WidePath source(from);
  const Win32::WidePath target(to);
  if (!source || !target || IsReadOnlyFile(target)) return false;
  // A reader, a virus scanner or an indexer may hold the old file open for
  // a moment, which refuses the replacement; it is tried again for about a
  // tenth of a second before it counts as failed.
  for (DWORD pause = 1;; pause *= 2) {
    if (MoveFileExW(source.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) return true;
    const DWORD error = ::GetLastError();
    if ((error != ERROR_ACCESS_DENIED && error != ERROR_SHARING_VIOLATION) || pause > 64) return false;
    ::Sleep(pause);
  }
}

int64_t FileRead(FileHandle file, void* buffer, int64_t count) {
  DWORD done = 0;
  if (!ReadFile(Native(file), buffer, TransferSize(count), &done, nullptr)) return -1;
  return done;
}

int64_t FileWrite(FileHandle file, const void* buffer, int64_t count) {
  DWORD done = 0;
  if (!WriteFile(Native(file), buffer, TransferSize(count), &done, nullptr)) return -1;
  return done;
}

int64_t FileSeek(FileHandle file, int64_t offset, int origin) {
  static constexpr DWORD kMethod[] = {FILE_BEGIN, FILE_CURRENT, FILE_END};
  if (origin < 0 || origin > 2) {
    ::SetLastError(ERROR_INVALID_PARAMETER);
    return -1;
  }
  LARGE_INTEGER distance{};
  distance.QuadPart = offset;
  LARGE_INTEGER position{};
  if (!SetFilePointerEx(Native(file), distance, &position, kMethod[origin])) return -1;
  return position.QuadPart;
}

void FileClose(FileHandle file) { CloseHandle(Native(file)); }

}  // namespace Quorvex::Platform
