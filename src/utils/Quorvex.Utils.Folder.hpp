// gFolder: everyday folder chores: existence, emptiness, recursive
// emptying and deletion, creation with parents, free names and renaming,
// with library exceptions on failure.
#pragma once

#include <cstdint>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::Utils::Folder {

using Rtl::Strings::UnicodeString;
using Rtl::Strings::UnicodeStringView;

// Raised by gFolder for failed removals, renames and attribute changes.
QX_DECLARE_EXCEPTION(EFolderException, Rtl::Exceptions::Exception, "Quorvex.Utils.Folder");

struct QXRTL_API gFolder {
  gFolder() = delete;

  // True when `folder` exists; links are followed.
  static bool Exists(UnicodeStringView folder);

  // True when the folder holds no entries, and also when it does not
  // exist at all.
  static bool IsEmpty(UnicodeStringView folder);

  // Deletes everything inside the folder, depth first; the folder stays.
  // The first failure raises (EFileException or EFolderException) and
  // ends the work; what was deleted stays deleted.
  static void Empty(UnicodeStringView folder);

  // Empties and removes the folder; a missing folder is left alone, and a
  // link (or junction) is removed itself, its target untouched. Raises
  // EFolderException "Folder cannot not be deleted: %s; error code: %d"
  // when the removal fails.
  static void Delete(UnicodeStringView folder);

  // Deletes the folder only when it exists and is empty.
  static void DeleteEmpty(UnicodeStringView folder);

  // Creates the folder, with its missing parents when needed. Failures are
  // not reported.
  static void Force(UnicodeStringView folder);

  // `parent` joined with `name`, or with name2, name3, ... while a folder
  // of that path exists.
  static UnicodeString GetUniqueName(UnicodeStringView parent, UnicodeStringView name);

  // GetUniqueName, then creates that folder (failure not reported).
  static UnicodeString MakeUnique(UnicodeStringView parent, UnicodeStringView name);

  // Renames the folder; raises EFolderException "Cannot rename folder %s
  // to %s; error: %d" on failure.
  static void Rename(UnicodeStringView oldName, UnicodeStringView newName);

  // Sets the Windows attribute bits; raises EFolderException "Cannot set
  // attributes for the folder %s; error: %d" on failure.
  static void SetAttributes(UnicodeStringView folder, uint32_t attributes);
};

}  // namespace Quorvex::Utils::Folder
