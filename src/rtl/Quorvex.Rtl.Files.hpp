// The runtime's file-system services: existence tests, folder and file
// changes, directory search, file-name parsing and whole-file byte I/O,
// including replacing a file's content in one step.
// Operations that change the file system report success as a boolean and
// leave the reason in GetLastError(); the search reports 0 for "found".
#pragma once

#include <cstdint>
#include <string>

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::Rtl::Files {

using Strings::Char;
using Strings::UnicodeString;
using Strings::UnicodeStringView;

// Bytes as they are on disk.
using RawByteString = std::string;

// File attribute bits (the Windows values on every platform).
inline constexpr uint32_t faReadOnly = 0x01;
inline constexpr uint32_t faHidden = 0x02;
inline constexpr uint32_t faSysFile = 0x04;
inline constexpr uint32_t faDirectory = 0x10;
inline constexpr uint32_t faArchive = 0x20;
inline constexpr uint32_t faNormal = 0x80;
inline constexpr uint32_t faSymLink = 0x400;  // a symbolic link or other reparse point
inline constexpr uint32_t faAnyFile = 0x1FF;
// What FileGetAttr answers for a missing path.
inline constexpr uint32_t faInvalid = 0xFFFFFFFFu;

// The platform's path delimiter: '\' on Windows, '/' elsewhere.
QXRTL_API Char PathDelim();

// True when `name` is an existing file (not a folder); links are followed.
QXRTL_API bool FileExists(UnicodeStringView name);

// True when `name` is an existing folder; links are followed.
QXRTL_API bool DirectoryExists(UnicodeStringView name);

// Deletes a file; false on failure.
QXRTL_API bool DeleteFile(UnicodeStringView name);

// Creates one folder (its parent must exist); false on failure.
QXRTL_API bool CreateDir(UnicodeStringView dir);

// Removes an empty folder; false on failure.
QXRTL_API bool RemoveDir(UnicodeStringView dir);

// Creates `dir` with every missing parent. True when the folder exists
// afterwards; false for an empty name or when a level cannot be created.
QXRTL_API bool ForceDirectories(UnicodeStringView dir);

// Renames or moves a file or folder; false on failure.
QXRTL_API bool RenameFile(UnicodeStringView oldName, UnicodeStringView newName);

// The attribute bits of a file or folder; faInvalid when it is missing.
QXRTL_API uint32_t FileGetAttr(UnicodeStringView name);

// Sets the attribute bits; false on failure.
QXRTL_API bool FileSetAttr(UnicodeStringView name, uint32_t attributes);

// One entry found by FindFirst/FindNext.
struct QXRTL_API TSearchRec {
  UnicodeString Name;  // without its folder
  uint32_t Attr = 0;
  int64_t Size = 0;
  double TimeStamp = 0;  // last write, local date-time
  void* FindHandle = nullptr;
};

// Starts a search for `path` (folder, delimiter, name with "*" and "?")
// reporting entries whose attributes fit `attr` (faAnyFile for all).
// Returns 0 with the first entry in `rec`, otherwise the system error
// code; on success the search must end with FindClose.
QXRTL_API int FindFirst(UnicodeStringView path, uint32_t attr, TSearchRec& rec);

// Moves `rec` to the next entry: 0, or the system error code at the end.
QXRTL_API int FindNext(TSearchRec& rec);

// Ends a search; harmless on a record whose search has ended.
QXRTL_API void FindClose(TSearchRec& rec);

// The folder part of a file name, with its trailing delimiter ("" when
// there is none). '\', '/' and the drive colon delimit on Windows, '/'
// elsewhere.
QXRTL_API UnicodeString ExtractFilePath(UnicodeStringView fileName);

// The folder part without its trailing delimiter, except for a root.
QXRTL_API UnicodeString ExtractFileDir(UnicodeStringView fileName);

// The name after the last delimiter.
QXRTL_API UnicodeString ExtractFileName(UnicodeStringView fileName);

// The extension with its dot ("" when the name has none).
QXRTL_API UnicodeString ExtractFileExt(UnicodeStringView fileName);

// `fileName` with its extension replaced by (or extended with) `extension`.
QXRTL_API UnicodeString ChangeFileExt(UnicodeStringView fileName, UnicodeStringView extension);

// `s` ending in exactly the path delimiter it had, or with one added.
QXRTL_API UnicodeString IncludeTrailingPathDelimiter(UnicodeStringView s);

// `s` without one trailing path delimiter.
QXRTL_API UnicodeString ExcludeTrailingPathDelimiter(UnicodeStringView s);

// False for an absolute path (one that starts with a delimiter or with a
// drive letter and a colon) and for the empty string; true otherwise.
QXRTL_API bool IsRelativePath(UnicodeStringView path);

// `fileName` expanded against the current folder, "." and ".." resolved;
// "" when the platform cannot expand it.
QXRTL_API UnicodeString ExpandFileName(UnicodeStringView fileName);

// The process's current folder.
QXRTL_API UnicodeString GetCurrentDir();

// The whole content of a file. Others may read, write or replace the file
// meanwhile, so a save never fails for a read. Raises EFOpenError "Cannot
// open file \"%s\". %s" (name, system message) when it cannot be opened,
// EReadError "Stream read error" when reading fails.
QXRTL_API RawByteString ReadFileBytes(UnicodeStringView fileName);

// Creates or truncates a file and writes `bytes`. Raises EFCreateError
// "Cannot create file \"%s\". %s" when it cannot be created, EWriteError
// "Stream write error" when writing fails.
QXRTL_API void WriteFileBytes(UnicodeStringView fileName, const RawByteString& bytes);

// Replaces the content of a file in one step: at every moment, also when
// the process dies or the machine loses power, the file holds its old
// content or all of `bytes`. The bytes go to a new file beside it, flushed
// to disk, which then takes its place, with its permission bits on POSIX;
// a link at `fileName` is replaced, not followed. On failure that new file
// is deleted and the old one stays as it was. Raises EFCreateError "Cannot
// create file \"%s\". %s" (name, system message) when the file cannot be
// made or put in place (a folder or a read-only file stands there),
// EWriteError "Stream write error" when writing or flushing fails.
QXRTL_API void ReplaceFileBytes(UnicodeStringView fileName, const RawByteString& bytes);

}  // namespace Quorvex::Rtl::Files
