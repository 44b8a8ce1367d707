// gVersion: the file version of a loaded module or of the running
// application, read from the module's version block (the version resource
// on Windows; the block stamped by qx_add_version_resource elsewhere).
#pragma once

#include <cstdint>

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Types.Version.hpp"

namespace Quorvex::App::Version {

// A loaded module: an HMODULE on Windows, a dlopen handle elsewhere; 0
// stands for the process's main executable.
using TModuleHandle = uintptr_t;

struct QXRTL_API gVersion {
  gVersion() = delete;

  // The file version in module `Instance`'s version block; 0.0.0.0 when the
  // block is empty. Raises EResNotFound "Resource #1 not found" when the
  // module has no block of its own, EReadError "Stream read error" when the
  // block is too short to hold the version.
  static Quorvex::Types::Version::TVersionValue GetModuleVersion(TModuleHandle Instance);

  // GetModuleVersion of the process's main executable.
  static Quorvex::Types::Version::TVersionValue GetAppVersion();
};

}  // namespace Quorvex::App::Version
