#include "Quorvex.App.Version.hpp"

#include <vector>

#include "Quorvex.Platform.Module.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"

namespace Quorvex::App::Version {

using Types::Version::TVersionValue;

namespace {

// The version block opens with the standard header: lengths, type, the key
// "VS_VERSION_INFO" and the fixed file information, whose file version
// words end the first 56 bytes.
constexpr size_t kHeaderSize = 56;
constexpr size_t kFileVersionMsOffset = 48;
constexpr size_t kFileVersionLsOffset = 52;

uint32_t LittleEndian32(const std::vector<uint8_t>& bytes, size_t offset) {
  return bytes[offset] | bytes[offset + 1] << 8 | bytes[offset + 2] << 16 |
         static_cast<uint32_t>(bytes[offset + 3]) << 24;
}

}  // namespace

TVersionValue gVersion::GetModuleVersion(TModuleHandle Instance) {
  std::vector<uint8_t> block;
  if (!Platform::ReadVersionResource(Instance, block))
    throw Rtl::Exceptions::EResNotFound(Rtl::Strings::Format(u"Resource %s not found", u"#1"));
  TVersionValue result;
  if (block.empty()) return result;
  if (block.size() < kHeaderSize) throw Rtl::Exceptions::EReadError(u"Stream read error");
  const uint32_t high = LittleEndian32(block, kFileVersionMsOffset);
  const uint32_t low = LittleEndian32(block, kFileVersionLsOffset);
  result.Major = static_cast<uint16_t>(high >> 16);
  result.Minor = static_cast<uint16_t>(high);
  result.Release = static_cast<uint16_t>(low >> 16);
  result.Build = static_cast<uint16_t>(low);
  return result;
}

TVersionValue gVersion::GetAppVersion() { return GetModuleVersion(0); }

}  // namespace Quorvex::App::Version
