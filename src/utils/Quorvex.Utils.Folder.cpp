#include "Quorvex.Utils.Folder.hpp"

#include "Quorvex.Rtl.Checked.hpp"
#include "Quorvex.Rtl.Files.hpp"
#include "Quorvex.Utils.Files.hpp"
#include "Quorvex.Utils.Path.hpp"

namespace Quorvex::Utils::Folder {

namespace {

// Calls `visit(path, attributes)` for each entry of `folder` other than
// "." and "..", in the order the search returns them, until it returns
// false. The search is closed however the walk ends. A folder that does
// not exist has no entries; checking first also keeps an empty name from
// turning into the bare delimiter, which names the root.
template <typename Visit>
void ForEachEntry(UnicodeStringView folder, Visit visit) {
  if (!gFolder::Exists(folder)) return;
  const UnicodeString prefix = Rtl::Files::IncludeTrailingPathDelimiter(folder);
  Rtl::Files::TSearchRec rec;
  if (Rtl::Files::FindFirst(prefix + u"*", Rtl::Files::faAnyFile, rec) != 0) return;
  struct TCloser {
    Rtl::Files::TSearchRec& Rec;
    ~TCloser() { Rtl::Files::FindClose(Rec); }
  } closer{rec};
  do {
    if (Rtl::Strings::SameText(rec.Name, u".") || Rtl::Strings::SameText(rec.Name, u"..")) continue;
    if (!visit(prefix + rec.Name, rec.Attr)) return;
  } while (Rtl::Files::FindNext(rec) == 0);
}

}  // namespace

bool gFolder::Exists(UnicodeStringView folder) { return Rtl::Files::DirectoryExists(folder); }

bool gFolder::IsEmpty(UnicodeStringView folder) {
  bool empty = true;
  ForEachEntry(folder, [&empty](const UnicodeString&, uint32_t) {
    empty = false;
    return false;  // one entry settles it
  });
  return empty;
}

namespace {

// Removes a link itself. Links are never followed: emptying a folder
// through one would delete what lies outside the tree being removed.
void RemoveLink(const UnicodeString& path, uint32_t attributes) {
  if ((attributes & Rtl::Files::faDirectory) != 0) {
    if (!Rtl::Files::RemoveDir(path))
      Rtl::Exceptions::RaiseWithLastError<EFolderException>(u"Folder cannot not be deleted: %s; error code: %d", path);
  } else if (!Rtl::Files::DeleteFile(path)) {
    Rtl::Exceptions::RaiseWithLastError<Files::EFileException>(u"File cannot not be deleted: %s; error code: %d", path);
  }
}

}  // namespace

void gFolder::Empty(UnicodeStringView folder) {
  ForEachEntry(folder, [](const UnicodeString& path, uint32_t attributes) {
    if ((attributes & Rtl::Files::faSymLink) != 0) {
      RemoveLink(path, attributes);
    } else if ((attributes & Rtl::Files::faDirectory) != 0) {
      Delete(path);
    } else {
      Files::gFile::Delete(path);
    }
    return true;
  });
}

void gFolder::Delete(UnicodeStringView folder) {
  if (!Exists(folder)) return;
  Empty(folder);
  if (!Rtl::Files::RemoveDir(folder)) {
    Rtl::Exceptions::RaiseWithLastError<EFolderException>(u"Folder cannot not be deleted: %s; error code: %d", folder);
  }
}

void gFolder::DeleteEmpty(UnicodeStringView folder) {
  if (Exists(folder) && IsEmpty(folder)) Delete(folder);
}

void gFolder::Force(UnicodeStringView folder) {
  if (!Rtl::Files::CreateDir(folder)) Rtl::Files::ForceDirectories(folder);
}

UnicodeString gFolder::GetUniqueName(UnicodeStringView parent, UnicodeStringView name) {
  const UnicodeString delimiter(1, Rtl::Files::PathDelim());
  UnicodeString path = Path::gPath::Combine(parent, name, delimiter);
  for (int n = 2; Exists(path); n = Rtl::Checked::Add(n, 1)) {
    path = Path::gPath::Combine(parent, UnicodeString(name) + Rtl::Strings::IntToStr(n), delimiter);
  }
  return path;
}

UnicodeString gFolder::MakeUnique(UnicodeStringView parent, UnicodeStringView name) {
  UnicodeString path = GetUniqueName(parent, name);
  Rtl::Files::CreateDir(path);
  return path;
}

void gFolder::Rename(UnicodeStringView oldName, UnicodeStringView newName) {
  if (!Rtl::Files::RenameFile(oldName, newName)) {
    Rtl::Exceptions::RaiseWithLastError<EFolderException>(u"Cannot rename folder %s to %s; error: %d", oldName,
                                                          newName);
  }
}

void gFolder::SetAttributes(UnicodeStringView folder, uint32_t attributes) {
  if (!Rtl::Files::FileSetAttr(folder, attributes)) {
    Rtl::Exceptions::RaiseWithLastError<EFolderException>(u"Cannot set attributes for the folder %s; error: %d",
                                                          folder);
  }
}

}  // namespace Quorvex::Utils::Folder
