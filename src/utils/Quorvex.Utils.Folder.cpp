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

constexpr UnicodeStringView kFolderNotDeleted = u"Folder cannot not be deleted: %s; error code: %d";

bool IsLink(uint32_t attributes) {
  return attributes != Rtl::Files::faInvalid && (attributes & Rtl::Files::faSymLink) != 0;
}

// Removes a link itself (a link to a folder, a junction and a mount point
// go as folders on Windows). Links are never followed: emptying a folder
// through one would delete what lies outside the tree being removed.
bool RemoveLinkItself(const UnicodeString& path, uint32_t attributes) {
  return (attributes & Rtl::Files::faDirectory) != 0 ? Rtl::Files::RemoveDir(path) : Rtl::Files::DeleteFile(path);
}

void RemoveLink(const UnicodeString& path, uint32_t attributes) {
  if (RemoveLinkItself(path, attributes)) return;
  if ((attributes & Rtl::Files::faDirectory) != 0) {
    Rtl::Exceptions::RaiseWithLastError<EFolderException>(kFolderNotDeleted, path);
  }
  Rtl::Exceptions::RaiseWithLastError<Files::EFileException>(u"File cannot not be deleted: %s; error code: %d", path);
}

// `folder` without the delimiters that end it. A trailing delimiter makes
// the system look through a link, so it must go before asking whether the
// name is a link. Roots ("/", "C:\") keep theirs.
UnicodeString WithoutTrailingDelimiters(UnicodeStringView folder) {
  while (folder.size() > 1 && folder.back() == Rtl::Files::PathDelim() && folder[folder.size() - 2] != u':') {
    folder.remove_suffix(1);
  }
  return UnicodeString(folder);
}

}  // namespace

void gFolder::Empty(UnicodeStringView folder) {
  ForEachEntry(folder, [](const UnicodeString& path, uint32_t attributes) {
    if (IsLink(attributes)) {
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
  // A link named here goes as the links met inside the tree do: the link
  // itself, its target untouched.
  const UnicodeString name = WithoutTrailingDelimiters(folder);
  const uint32_t attributes = Rtl::Files::FileGetAttr(name);
  if (IsLink(attributes)) {
    if (!RemoveLinkItself(name, attributes)) {
      Rtl::Exceptions::RaiseWithLastError<EFolderException>(kFolderNotDeleted, folder);
    }
    return;
  }
  Empty(folder);
  if (!Rtl::Files::RemoveDir(folder)) Rtl::Exceptions::RaiseWithLastError<EFolderException>(kFolderNotDeleted, folder);
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
