#include "Quorvex.Utils.Files.hpp"

#include "Quorvex.Platform.hpp"
#include "Quorvex.Rtl.Checked.hpp"
#include "Quorvex.Rtl.Files.hpp"

namespace Quorvex::Utils::Files {

using Rtl::Strings::Format;

bool gFile::Exists(UnicodeStringView fileName) { return Rtl::Files::FileExists(fileName); }

void gFile::Delete(UnicodeStringView fileName) {
  if (!Exists(fileName)) return;
  const uint32_t attributes = Rtl::Files::FileGetAttr(fileName);
  const bool known = attributes != Rtl::Files::faInvalid;
  if (known) Rtl::Files::FileSetAttr(fileName, attributes & ~Rtl::Files::faReadOnly);
  if (Rtl::Files::DeleteFile(fileName)) return;
  const uint32_t code = Rtl::Exceptions::GetLastError();
  if (known) Rtl::Files::FileSetAttr(fileName, attributes);
  throw EFileException(Format(u"File cannot not be deleted: %s; error code: %d", fileName, code));
}

UnicodeString gFile::GetSameName(UnicodeStringView fileName) {
  const UnicodeString folder = Rtl::Files::ExtractFilePath(fileName);
  const UnicodeString base = Rtl::Files::ChangeFileExt(Rtl::Files::ExtractFileName(fileName), u"");
  const UnicodeString extension = Rtl::Files::ExtractFileExt(fileName);
  for (int n = 1;; n = Rtl::Checked::Add(n, 1)) {
    UnicodeString candidate = folder + base + Format(u"_%x", n) + extension;
    if (!Exists(candidate)) return candidate;
  }
}

UnicodeString gFile::GetUniqueName(UnicodeStringView fileName) { return GetSameName(fileName); }

int64_t gFile::GetSize(UnicodeStringView fileName) {
  Rtl::Files::TSearchRec rec;
  if (Rtl::Files::FindFirst(fileName, Rtl::Files::faAnyFile, rec) != 0) return 0;
  Rtl::Files::FindClose(rec);
  return rec.Size;
}

UnicodeString gFile::Load(UnicodeStringView fileName) {
  return Platform::AnsiToUnicode(Rtl::Files::ReadFileBytes(fileName));
}

void gFile::Save(UnicodeStringView fileName, UnicodeStringView text) {
  Rtl::Files::WriteFileBytes(fileName, Platform::UnicodeToAnsi(text));
}

void gFile::Rename(UnicodeStringView oldName, UnicodeStringView newName) {
  if (!Rtl::Files::RenameFile(oldName, newName)) {
    Rtl::Exceptions::RaiseWithLastError<EFileException>(u"Cannot rename file %s to %s; error: %d", oldName, newName);
  }
}

void gFile::SetAttributes(UnicodeStringView fileName, uint32_t attributes) {
  if (!Rtl::Files::FileSetAttr(fileName, attributes)) {
    Rtl::Exceptions::RaiseWithLastError<EFileException>(u"Cannot set attributes for the file %s; error: %d", fileName);
  }
}

}  // namespace Quorvex::Utils::Files
