// Loading system libraries that the process keeps for its whole life.
#pragma once

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::System::LibUtils {

using Rtl::Strings::UnicodeStringView;

// A loaded library: an HMODULE on Windows, a dlopen handle elsewhere.
using TModuleHandle = void*;

struct QXRTL_API LibUtils {
  LibUtils() = delete;

  // Loads library `name` (file name or path) and returns its handle; the
  // same library gives the same handle on every call. The library is
  // never freed: each call adds a load reference left to the process's
  // end. Raises EOSError "System Error.  Code: %d.\r\n%s" with the system's
  // text when the library cannot be loaded.
  static TModuleHandle GetDLLInstance(UnicodeStringView name);
};

}  // namespace Quorvex::System::LibUtils
