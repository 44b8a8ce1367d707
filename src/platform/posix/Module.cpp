// POSIX only: version blocks stamped into modules and the tick count.
#include <dlfcn.h>
#include <link.h>
#include <time.h>

#include "Quorvex.Platform.Module.hpp"

namespace Quorvex::Platform {

namespace {

// The exported symbol qx_add_version_resource (cmake/QxRtlVersionResource.cmake)
// gives a module's version block.
constexpr char kVersionBlockSymbol[] = "qxrtl_version_block";

// The link-map entry of the module behind a dlopen handle.
const link_map* ModuleOfHandle(void* handle) {
  link_map* module = nullptr;
  return dlinfo(handle, RTLD_DI_LINKMAP, &module) == 0 ? module : nullptr;
}

// The link-map entry of the module whose image holds `address`.
const link_map* ModuleAt(const void* address) {
  Dl_info info;
  link_map* module = nullptr;
  return dladdr1(address, &info, reinterpret_cast<void**>(&module), RTLD_DL_LINKMAP) != 0 ? module : nullptr;
}

// The version block of the module behind `handle`, nullptr when it has
// none of its own: dlsym also searches the module's dependencies (and for
// the main program every global module), whose blocks must not count.
const uint8_t* FindVersionBlock(void* handle) {
  const void* block = dlsym(handle, kVersionBlockSymbol);
  if (block == nullptr) return nullptr;
  const link_map* module = ModuleOfHandle(handle);
  return module != nullptr && ModuleAt(block) == module ? static_cast<const uint8_t*>(block) : nullptr;
}

}  // namespace

bool ReadVersionResource(ModuleHandle module, std::vector<uint8_t>& bytes) {
  void* handle = module != 0 ? reinterpret_cast<void*>(module) : dlopen(nullptr, RTLD_LAZY);
  if (handle == nullptr) return false;
  const uint8_t* block = FindVersionBlock(handle);
  if (module == 0) dlclose(handle);
  if (block == nullptr) return false;
  // The block opens with its total length, little-endian, like a resource.
  const size_t size = block[0] | static_cast<size_t>(block[1]) << 8;
  bytes.assign(block, block + size);
  return true;
}

uint32_t TickCount32() {
  timespec now{};
  // The boot clock keeps counting while the machine is suspended, as the
  // Windows tick count does; the monotonic clock stops.
  clock_gettime(CLOCK_BOOTTIME, &now);
  // Truncated like GetTickCount, so the count wraps at 2^32 milliseconds.
  return static_cast<uint32_t>(static_cast<uint64_t>(now.tv_sec) * 1000 + static_cast<uint64_t>(now.tv_nsec) / 1000000);
}

}  // namespace Quorvex::Platform
