#include "Quorvex.Rtl.Files.hpp"

#include <random>
#include <utility>
#include <vector>

#include "Quorvex.Platform.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"

namespace Quorvex::Rtl::Files {

namespace {

using Strings::Format;

static_assert(faReadOnly == Platform::faReadOnly && faHidden == Platform::faHidden &&
              faSysFile == Platform::faSysFile && faDirectory == Platform::faDirectory &&
              faArchive == Platform::faArchive && faNormal == Platform::faNormal && faAnyFile == Platform::faAnyFile &&
              faInvalid == Platform::InvalidAttributes);

bool OnWindows() { return Platform::PathDelimiter() == u'\\'; }

// Characters that separate folders: Windows also takes '/'.
UnicodeStringView PathDelimiters() { return OnWindows() ? u"\\/" : u"/"; }

// Characters that end a folder part: the path delimiters and, on Windows,
// the colon of a drive.
UnicodeStringView Delimiters() { return OnWindows() ? u"\\/:" : u"/"; }

// 0-based index of the last delimiter in `fileName`, npos when none.
size_t LastDelimiter(UnicodeStringView fileName) { return fileName.find_last_of(Delimiters()); }

// Index of the dot that starts the extension, npos when the last name
// holds no dot.
size_t ExtensionDot(UnicodeStringView fileName) {
  const size_t at = fileName.find_last_of(UnicodeString(Delimiters()) + u'.');
  return at != UnicodeStringView::npos && fileName[at] == u'.' ? at : UnicodeStringView::npos;
}

bool IsPathDelimiterAt(UnicodeStringView s, size_t index) { return index < s.size() && s[index] == PathDelim(); }

int SearchResult(bool found) { return found ? 0 : static_cast<int>(Platform::LastError()); }

void Fill(TSearchRec& rec, const Platform::FindData& data) {
  rec.Name = data.Name;
  rec.Attr = data.Attributes;
  rec.Size = data.Size;
  rec.TimeStamp = data.TimeStamp;
}

// Puts the thread's error code back when it leaves scope, so clean-up
// keeps the code of the call that failed before.
class TLastErrorKept {
 public:
  TLastErrorKept() : FCode(Platform::LastError()) {}
  ~TLastErrorKept() { Platform::SetLastError(FCode); }
  TLastErrorKept(const TLastErrorKept&) = delete;
  TLastErrorKept& operator=(const TLastErrorKept&) = delete;

 private:
  uint32_t FCode;
};

// Closes a file handle when it leaves scope.
class TFileCloser {
 public:
  explicit TFileCloser(Platform::FileHandle file) : FFile(file) {}
  ~TFileCloser() {
    const TLastErrorKept kept;
    Platform::FileClose(FFile);
  }
  TFileCloser(const TFileCloser&) = delete;
  TFileCloser& operator=(const TFileCloser&) = delete;

 private:
  Platform::FileHandle FFile;
};

// Deletes a file made here when it leaves scope, unless told to keep it.
class TMadeFile {
 public:
  explicit TMadeFile(UnicodeString name) : FName(std::move(name)) {}
  ~TMadeFile() {
    if (FKept) return;
    const TLastErrorKept kept;
    Platform::DeleteFile(FName);
  }
  TMadeFile(const TMadeFile&) = delete;
  TMadeFile& operator=(const TMadeFile&) = delete;

  const UnicodeString& Name() const { return FName; }
  void Keep() { FKept = true; }

 private:
  UnicodeString FName;
  bool FKept = false;
};

UnicodeString FileErrorMessage(UnicodeStringView format, UnicodeStringView fileName) {
  return Format(format, fileName, Exceptions::SysErrorMessage(Platform::LastError()));
}

[[noreturn]] void RaiseCreateError(UnicodeStringView fileName) {
  throw Exceptions::EFCreateError(FileErrorMessage(u"Cannot create file \"%s\". %s", fileName));
}

// Writes all of `bytes`; raises EWriteError when the file takes less.
void WriteAll(Platform::FileHandle file, const RawByteString& bytes) {
  for (size_t done = 0; done < bytes.size();) {
    const int64_t count = Platform::FileWrite(file, bytes.data() + done, static_cast<int64_t>(bytes.size() - done));
    if (count <= 0) throw Exceptions::EWriteError(u"Stream write error");
    done += static_cast<size_t>(count);
  }
}

// A name beside `fileName` that no entry is likely to have: the name, a
// dot, 16 random hexadecimal digits and ".tmp".
UnicodeString NameBeside(UnicodeStringView fileName) {
  std::random_device random;
  const uint64_t bits = (static_cast<uint64_t>(random()) << 32) | random();
  return UnicodeString(fileName) + u'.' + Strings::IntToHex(bits, 16) + u".tmp";
}

// Creates a new file beside `fileName`, trying another name when one is
// taken; raises EFCreateError for `fileName` when none can be made.
Platform::FileHandle CreateFileBeside(UnicodeStringView fileName, UnicodeString& name) {
  constexpr int kAttempts = 4;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    name = NameBeside(fileName);
    const Platform::FileHandle file = Platform::FileCreateNew(name);
    if (file != Platform::InvalidFile) return file;
  }
  RaiseCreateError(fileName);
}

}  // namespace

Char PathDelim() { return Platform::PathDelimiter(); }

bool FileExists(UnicodeStringView name) { return Platform::FileExists(name); }

bool DirectoryExists(UnicodeStringView name) { return Platform::DirectoryExists(name); }

bool DeleteFile(UnicodeStringView name) { return Platform::DeleteFile(name); }

bool CreateDir(UnicodeStringView dir) { return Platform::CreateDirectory(dir); }

bool RemoveDir(UnicodeStringView dir) { return Platform::RemoveDirectory(dir); }

bool ForceDirectories(UnicodeStringView dir) {
  if (dir.empty()) return false;
  // Walk up to the first level that exists, then create downwards.
  std::vector<UnicodeString> missing;
  UnicodeString level = ExcludeTrailingPathDelimiter(dir);
  while (!level.empty() && !DirectoryExists(level)) {
    const UnicodeString parent = ExtractFileDir(level);
    missing.push_back(level);
    if (parent == level) break;
    level = parent;
  }
  for (auto it = missing.rbegin(); it != missing.rend(); ++it) {
    if (!CreateDir(*it) && !DirectoryExists(*it)) return false;
  }
  return true;
}

bool RenameFile(UnicodeStringView oldName, UnicodeStringView newName) { return Platform::RenameFile(oldName, newName); }

uint32_t FileGetAttr(UnicodeStringView name) { return Platform::GetFileAttributes(name); }

bool FileSetAttr(UnicodeStringView name, uint32_t attributes) { return Platform::SetFileAttributes(name, attributes); }

int FindFirst(UnicodeStringView path, uint32_t attr, TSearchRec& rec) {
  Platform::FindData data;
  rec.FindHandle = Platform::FindFirst(path, attr, data);
  if (rec.FindHandle != nullptr) Fill(rec, data);
  return SearchResult(rec.FindHandle != nullptr);
}

int FindNext(TSearchRec& rec) {
  Platform::FindData data;
  const bool found = rec.FindHandle != nullptr && Platform::FindNext(rec.FindHandle, data);
  if (found) Fill(rec, data);
  return SearchResult(found);
}

void FindClose(TSearchRec& rec) {
  if (rec.FindHandle == nullptr) return;
  Platform::FindClose(rec.FindHandle);
  rec.FindHandle = nullptr;
}

UnicodeString ExtractFilePath(UnicodeStringView fileName) {
  const size_t at = LastDelimiter(fileName);
  return UnicodeString(at == UnicodeStringView::npos ? UnicodeStringView() : fileName.substr(0, at + 1));
}

UnicodeString ExtractFileDir(UnicodeStringView fileName) {
  const size_t at = LastDelimiter(fileName);
  if (at == UnicodeStringView::npos) return {};
  // Keep the delimiter of a root ("\", "C:\", "/"), drop any other.
  if (at > 0 && fileName[at] != u':' && Delimiters().find(fileName[at - 1]) == UnicodeStringView::npos) {
    return UnicodeString(fileName.substr(0, at));
  }
  return UnicodeString(fileName.substr(0, at + 1));
}

UnicodeString ExtractFileName(UnicodeStringView fileName) {
  const size_t at = LastDelimiter(fileName);
  return UnicodeString(at == UnicodeStringView::npos ? fileName : fileName.substr(at + 1));
}

UnicodeString ExtractFileExt(UnicodeStringView fileName) {
  const size_t dot = ExtensionDot(fileName);
  return UnicodeString(dot == UnicodeStringView::npos ? UnicodeStringView() : fileName.substr(dot));
}

UnicodeString ChangeFileExt(UnicodeStringView fileName, UnicodeStringView extension) {
  UnicodeString result(fileName.substr(0, ExtensionDot(fileName)));
  result += extension;
  return result;
}

UnicodeString IncludeTrailingPathDelimiter(UnicodeStringView s) {
  UnicodeString result(s);
  if (s.empty() || !IsPathDelimiterAt(s, s.size() - 1)) result += PathDelim();
  return result;
}

UnicodeString ExcludeTrailingPathDelimiter(UnicodeStringView s) {
  if (!s.empty() && IsPathDelimiterAt(s, s.size() - 1)) s.remove_suffix(1);
  return UnicodeString(s);
}

bool IsRelativePath(UnicodeStringView path) {
  if (path.empty()) return false;
  const bool startsWithDelimiter = PathDelimiters().find(path[0]) != UnicodeStringView::npos;
  const bool hasDrive = path.size() > 1 && path[1] == u':' &&
                        ((path[0] >= u'A' && path[0] <= u'Z') || (path[0] >= u'a' && path[0] <= u'z'));
  return !startsWithDelimiter && !hasDrive;
}

UnicodeString ExpandFileName(UnicodeStringView fileName) { return Platform::FullPathName(fileName); }

UnicodeString GetCurrentDir() { return Platform::CurrentDirectory(); }

RawByteString ReadFileBytes(UnicodeStringView fileName) {
  const Platform::FileHandle file = Platform::FileOpen(fileName, Platform::fmOpenRead | Platform::fmShareAll);
  if (file == Platform::InvalidFile) {
    throw Exceptions::EFOpenError(FileErrorMessage(u"Cannot open file \"%s\". %s", fileName));
  }
  TFileCloser closer(file);
  RawByteString bytes;
  char buffer[65536];
  for (;;) {
    const int64_t count = Platform::FileRead(file, buffer, sizeof buffer);
    if (count < 0) throw Exceptions::EReadError(u"Stream read error");
    if (count == 0) return bytes;
    bytes.append(buffer, static_cast<size_t>(count));
  }
}

void WriteFileBytes(UnicodeStringView fileName, const RawByteString& bytes) {
  const Platform::FileHandle file = Platform::FileCreate(fileName);
  if (file == Platform::InvalidFile) RaiseCreateError(fileName);
  TFileCloser closer(file);
  WriteAll(file, bytes);
}

void ReplaceFileBytes(UnicodeStringView fileName, const RawByteString& bytes) {
  UnicodeString name;
  const Platform::FileHandle file = CreateFileBeside(fileName, name);
  TMadeFile made(name);
  {
    TFileCloser closer(file);
    if (!Platform::FileCopyAccess(file, fileName)) RaiseCreateError(fileName);
    WriteAll(file, bytes);
    if (!Platform::FileFlush(file)) throw Exceptions::EWriteError(u"Stream write error");
  }
  if (!Platform::ReplaceFile(made.Name(), fileName)) RaiseCreateError(fileName);
  made.Keep();
}

}  // namespace Quorvex::Rtl::Files
