#include "Quorvex.System.LibUtils.hpp"

#include "Quorvex.Platform.Library.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"

namespace Quorvex::System::LibUtils {

TModuleHandle LibUtils::GetDLLInstance(UnicodeStringView name) {
  Platform::LibraryError error;
  void* module = Platform::LoadLibraryModule(name, error);
  if (module == nullptr) Rtl::Exceptions::RaiseOSError(error.Code, error.Text);
  return module;
}

}  // namespace Quorvex::System::LibUtils
