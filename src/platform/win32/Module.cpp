// Windows only: module version resources and the tick count.
#include "Quorvex.Platform.Module.hpp"
#include "Quorvex.Platform.Win32.hpp"

namespace Quorvex::Platform {

bool ReadVersionResource(ModuleHandle module, std::vector<uint8_t>& bytes) {
  const HMODULE instance = module != 0 ? reinterpret_cast<HMODULE>(module) : GetModuleHandleW(nullptr);
  const HRSRC info = FindResourceW(instance, L"#1", MAKEINTRESOURCEW(16));
  if (info == nullptr) return false;
  const HGLOBAL data = LoadResource(instance, info);
  if (data == nullptr) return false;
  const DWORD size = SizeofResource(instance, info);
  const auto* first = static_cast<const uint8_t*>(LockResource(data));
  if (first == nullptr && size != 0) return false;
  bytes.assign(first, first + size);
  return true;
}

uint32_t TickCount32() { return GetTickCount(); }

}  // namespace Quorvex::Platform
