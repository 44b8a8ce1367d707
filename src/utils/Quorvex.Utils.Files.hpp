// gFile: everyday file chores with library exceptions on failure:
// existence, deletion that survives the read-only attribute, free names
// beside an existing one, and whole text files in one call.
#pragma once

#include <cstdint>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::Utils::Files {

using Rtl::Strings::UnicodeString;
using Rtl::Strings::UnicodeStringView;

// Raised by gFile for failed deletions, renames and attribute changes.
QX_DECLARE_EXCEPTION(EFileException, Rtl::Exceptions::Exception, "Quorvex.Utils.Files");

struct QXRTL_API gFile {
  gFile() = delete;

  // True when `fileName` is an existing file; links are followed.
  static bool Exists(UnicodeStringView fileName);

  // Deletes the file, clearing its read-only attribute first; a missing
  // file is left alone. On failure restores the attributes and raises
  // EFileException "File cannot not be deleted: %s; error code: %d".
  static void Delete(UnicodeStringView fileName);

  // The first free name "<folder><base>_<n><ext>" for n = 1, 2, ... with n
  // in upper-case hexadecimal; never the given name itself.
  static UnicodeString GetSameName(UnicodeStringView fileName);

  // The same as GetSameName.
  static UnicodeString GetUniqueName(UnicodeStringView fileName);

  // The size a directory search reports for `fileName`; 0 when none.
  static int64_t GetSize(UnicodeStringView fileName);

  // The whole file as text in the system's ANSI code page (UTF-8 off
  // Windows). Raises EFOpenError when the file cannot be opened.
  static UnicodeString Load(UnicodeStringView fileName);

  // Creates or truncates the file and writes `text` in the encoding Load
  // reads, without a byte-order mark. Raises EFCreateError when the file
  // cannot be created or has the read-only attribute (root included).
  static void Save(UnicodeStringView fileName, UnicodeStringView text);

  // Renames the file, moving it to another volume or file system when
  // needed; never replaces an existing file. Raises EFileException "Cannot
  // rename file %s to %s; error: %d" on failure, the source left as it was.
  static void Rename(UnicodeStringView oldName, UnicodeStringView newName);

  // Sets the Windows attribute bits; raises EFileException "Cannot set
  // attributes for the file %s; error: %d" on failure.
  static void SetAttributes(UnicodeStringView fileName, uint32_t attributes);
};

}  // namespace Quorvex::Utils::Files
