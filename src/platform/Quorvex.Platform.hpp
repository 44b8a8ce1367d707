// The library's one door to the operating system. Units hold their logic
// once and call only these functions; win32/ and posix/ each implement all
// of them, and the build picks one. Nothing here raises: failures come back
// as false / invalid values with the code in LastError(), and the callers
// decide what to report. A path that holds a NUL is refused before it
// reaches the system, which would end the name there and act on another
// file: the call fails as for an invalid name (ERROR_INVALID_NAME on
// Windows, EINVAL elsewhere).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Quorvex::Platform {

using Path = std::u16string;
using PathView = std::u16string_view;

// --- Errors -----------------------------------------------------------------

// The calling thread's last error code (GetLastError, or errno).
uint32_t LastError();
void SetLastError(uint32_t code);
// The system's text for an error code, without a trailing line break.
std::u16string ErrorMessage(uint32_t code);

// --- Paths ------------------------------------------------------------------

// The path delimiter of this platform: '\\' on Windows, '/' elsewhere.
char16_t PathDelimiter();
// The process's current directory.
Path CurrentDirectory();
// `path` expanded against the current directory with "." and ".." resolved.
Path FullPathName(PathView path);
// Removes "." and ".." segments (PathCanonicalizeW); false when the call
// fails or the result would not fit MAX_PATH.
bool CanonicalizePath(PathView path, Path& result);
// The relative path from directory `from` to file `to`
// (PathRelativePathToW); false when none exists.
bool RelativePath(PathView from, PathView to, Path& result);

// --- File attributes (Windows attribute bits everywhere) ---------------------

constexpr uint32_t faReadOnly = 0x01;
constexpr uint32_t faHidden = 0x02;
constexpr uint32_t faSysFile = 0x04;
constexpr uint32_t faDirectory = 0x10;
constexpr uint32_t faArchive = 0x20;
constexpr uint32_t faNormal = 0x80;
constexpr uint32_t faSymLink = 0x400;
constexpr uint32_t faAnyFile = 0x1FF;
constexpr uint32_t InvalidAttributes = 0xFFFFFFFFu;

// True when an entry with `attributes` passes a search `mask`: folders,
// hidden and system entries only when the mask asks for them, other
// entries always.
constexpr bool FitsSearchMask(uint32_t attributes, uint32_t mask) {
  return (attributes & ~mask & (faHidden | faSysFile | faDirectory)) == 0;
}

// The attribute bits of a file or folder, InvalidAttributes when missing.
uint32_t GetFileAttributes(PathView path);
bool SetFileAttributes(PathView path, uint32_t attributes);

bool FileExists(PathView path);       // a file (not a folder), links followed
bool DirectoryExists(PathView path);  // a folder, links followed
bool DeleteFile(PathView path);
bool CreateDirectory(PathView path);
bool RemoveDirectory(PathView path);
// Renames or moves a file or folder; never replaces an existing entry. A
// file moves to another volume or file system (copied, then deleted), a
// folder does not (ERROR_NOT_SAME_DEVICE, EXDEV).
bool RenameFile(PathView oldName, PathView newName);
// Puts file `from` in the place of `to` in one step, replacing what stands
// there: whoever opens `to` finds the old or the new file, never none or a
// mix, also after a crash, and the change is on disk once this answers
// true. Refuses a folder at `to` (EISDIR, ERROR_ACCESS_DENIED) and a file
// with the read-only attribute (EACCES, ERROR_ACCESS_DENIED), and on POSIX
// any entry but a file or a link (EINVAL); a link is replaced itself, its
// target untouched. Both names must lie on one volume. On POSIX false also
// follows a replacement whose folder could not be flushed to its device.
bool ReplaceFile(PathView from, PathView to);

// --- Directory search ---------------------------------------------------------

struct FindData {
  std::u16string Name;  // the entry's name, without its folder
  uint32_t Attributes = 0;
  int64_t Size = 0;
  double TimeStamp = 0;  // last write, as a local date-time value
};

using FindHandle = void*;

// Starts a search for `pattern` (a folder, a delimiter and a name that may
// hold the wildcards "*" and "?"). Only entries whose attributes fit `mask`
// are reported (faAnyFile for all). Returns nullptr when nothing matches.
FindHandle FindFirst(PathView pattern, uint32_t mask, FindData& data);
// The next match; false at the end.
bool FindNext(FindHandle handle, FindData& data);
void FindClose(FindHandle handle);

// --- File handles ---------------------------------------------------------------

using FileHandle = intptr_t;
constexpr FileHandle InvalidFile = -1;

// Share and access modes of the runtime's file functions.
constexpr uint32_t fmOpenRead = 0x0000;
constexpr uint32_t fmOpenWrite = 0x0001;
constexpr uint32_t fmOpenReadWrite = 0x0002;
constexpr uint32_t fmShareExclusive = 0x0010;
constexpr uint32_t fmShareDenyWrite = 0x0020;
constexpr uint32_t fmShareDenyNone = 0x0040;
// The library's own whole-file reads: others may read, write, delete or
// replace the file meanwhile (on Windows FILE_SHARE_DELETE too, so an
// atomic save over a file being read goes through).
constexpr uint32_t fmShareAll = 0x0050;

// Opens an existing file. As on Windows, a folder never opens as a file
// (EISDIR elsewhere), and a file with the read-only attribute never opens
// for writing (ERROR_ACCESS_DENIED, EACCES), whatever the caller's rights.
FileHandle FileOpen(PathView path, uint32_t mode);
// Creates or truncates a file for writing; refuses folders and read-only
// files as FileOpen does, leaving their content alone.
FileHandle FileCreate(PathView path);
// Creates a new file for writing; fails when anything stands at `path`
// already (ERROR_FILE_EXISTS, EEXIST), leaving it alone.
FileHandle FileCreateNew(PathView path);
// Gives a new file the permission bits, and where the process may give
// files away the owner, of the file at `original` (a link is not
// followed), so that putting one in the place of the other neither widens
// nor narrows access. True with nothing done when no file stands there.
// Windows files take their access from their folder: nothing to do there.
bool FileCopyAccess(FileHandle file, PathView original);
// Writes what the system holds of the file's data through to its device.
bool FileFlush(FileHandle file);
// Bytes read or written, -1 on failure.
int64_t FileRead(FileHandle file, void* buffer, int64_t count);
int64_t FileWrite(FileHandle file, const void* buffer, int64_t count);
// Moves the position (origin 0 = start, 1 = current, 2 = end); the new
// position, -1 on failure.
int64_t FileSeek(FileHandle file, int64_t offset, int origin);
void FileClose(FileHandle file);

// --- Text encodings ---------------------------------------------------------------

// The system's ANSI code page (CP_ACP on Windows; UTF-8 elsewhere).
std::u16string AnsiToUnicode(std::string_view text);
std::string UnicodeToAnsi(std::u16string_view text);

// --- Locale and time --------------------------------------------------------------

// The user's decimal and thousands separators.
char16_t DecimalSeparator();
char16_t ThousandSeparator();

// Current local time broken down, and its offset from UTC in minutes
// (UTC+2 gives 120), both taken now.
struct LocalTime {
  int Year, Month, Day, Hour, Minute, Second, Milliseconds;
};
LocalTime Now();
int32_t UtcOffsetMinutes();

}  // namespace Quorvex::Platform
