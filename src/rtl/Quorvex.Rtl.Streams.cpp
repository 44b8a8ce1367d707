#include "Quorvex.Rtl.Streams.hpp"

#include <algorithm>
#include <cstring>
#include <limits>

#include "Quorvex.Platform.Streams.hpp"
#include "Quorvex.Platform.hpp"
#include "Quorvex.Rtl.Checked.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"

namespace Quorvex::Rtl::Streams {

namespace {

static_assert(fmOpenRead == Platform::fmOpenRead && fmOpenWrite == Platform::fmOpenWrite &&
              fmOpenReadWrite == Platform::fmOpenReadWrite && fmShareExclusive == Platform::fmShareExclusive &&
              fmShareDenyWrite == Platform::fmShareDenyWrite && fmShareDenyNone == Platform::fmShareDenyNone);

// Copies move through a buffer of this size: large enough that the
// per-call cost vanishes, small enough not to matter as memory.
constexpr int64_t kCopyBufferSize = int64_t{1} << 20;

// The most memory a load reserves on a stream's word about its size;
// beyond it, memory grows as the bytes arrive.
constexpr int64_t kTrustedReserve = int64_t{64} << 20;

// Memory streams grow in whole blocks of this size.
constexpr int64_t kMemoryBlock = 8192;

// Raises E for `fileName` with the system's text for the last error.
template <typename E>
[[noreturn]] void RaiseFileError(UnicodeStringView format, UnicodeStringView fileName) {
  const uint32_t code = Exceptions::GetLastError();
  throw E(Strings::Format(format, fileName, Exceptions::SysErrorMessage(code)));
}

Platform::FileHandle OpenOrCreate(UnicodeStringView fileName, uint16_t mode) {
  if ((mode & fmCreate) == fmCreate) {
    const Platform::FileHandle file = Platform::FileCreate(fileName);
    if (file == Platform::InvalidFile)
      RaiseFileError<Exceptions::EFCreateError>(u"Cannot create file \"%s\". %s", fileName);
    return file;
  }
  const Platform::FileHandle file = Platform::FileOpen(fileName, mode);
  if (file == Platform::InvalidFile) RaiseFileError<Exceptions::EFOpenError>(u"Cannot open file \"%s\". %s", fileName);
  return file;
}

}  // namespace

// ---------------------------------------------------------------- TStream

int64_t TStream::GetSize() {
  const int64_t position = Seek(0, soCurrent);
  const int64_t size = Seek(0, soEnd);
  Seek(position, soBeginning);
  return size;
}

void TStream::SetSize(int64_t) {}

void TStream::ReadBuffer(void* buffer, int64_t count) {
  auto* at = static_cast<uint8_t*>(buffer);
  while (count > 0) {
    const int64_t done = Read(at, count);
    if (done <= 0) throw Exceptions::EReadError(u"Stream read error");
    at += done;
    count -= done;
  }
}

void TStream::WriteBuffer(const void* buffer, int64_t count) {
  const auto* at = static_cast<const uint8_t*>(buffer);
  while (count > 0) {
    const int64_t done = Write(at, count);
    if (done <= 0) throw Exceptions::EWriteError(u"Stream write error");
    at += done;
    count -= done;
  }
}

int64_t TStream::CopyFrom(TStream& source, int64_t count) {
  if (count <= 0) {
    source.SetPosition(0);
    count = source.GetSize();
    // A source that cannot tell its size (a pipe) has nothing to copy whole.
    if (count <= 0) return 0;
  }
  const int64_t bufferSize = std::min(count, kCopyBufferSize);
  const auto buffer = std::make_unique_for_overwrite<uint8_t[]>(static_cast<size_t>(bufferSize));
  for (int64_t left = count; left > 0;) {
    const int64_t chunk = std::min(left, bufferSize);
    source.ReadBuffer(buffer.get(), chunk);
    WriteBuffer(buffer.get(), chunk);
    left -= chunk;
  }
  return count;
}

// ---------------------------------------------------------------- THandleStream

int64_t THandleStream::Read(void* buffer, int64_t count) { return Platform::FileRead(FHandle, buffer, count); }

int64_t THandleStream::Write(const void* buffer, int64_t count) { return Platform::FileWrite(FHandle, buffer, count); }

int64_t THandleStream::Seek(int64_t offset, TSeekOrigin origin) {
  return Platform::FileSeek(FHandle, offset, static_cast<int>(origin));
}

void THandleStream::SetSize(int64_t size) {
  if (Seek(size, soBeginning) < 0 || !Platform::FileSetEnd(FHandle)) Exceptions::RaiseLastOSError();
}

// ---------------------------------------------------------------- TFileStream

TFileStream::TFileStream(UnicodeStringView fileName, uint16_t mode)
    : THandleStream(OpenOrCreate(fileName, mode)), FFileName(fileName) {}

TFileStream::~TFileStream() { Platform::FileClose(FHandle); }

// ---------------------------------------------------------------- TCustomMemoryStream

int64_t TCustomMemoryStream::Read(void* buffer, int64_t count) {
  if (count <= 0 || FPosition >= FSize) return 0;
  const int64_t done = std::min(count, FSize - FPosition);
  std::memcpy(buffer, FMemory + FPosition, static_cast<size_t>(done));
  FPosition += done;
  return done;
}

int64_t TCustomMemoryStream::Seek(int64_t offset, TSeekOrigin origin) {
  const int64_t base = origin == soBeginning ? 0 : origin == soCurrent ? FPosition : FSize;
  const int64_t target = Checked::Add(base, offset);
  if (target < 0) return -1;
  FPosition = target;
  return FPosition;
}

void TCustomMemoryStream::SaveToStream(TStream& stream) { stream.WriteBuffer(FMemory, FSize); }

void TCustomMemoryStream::SaveToFile(UnicodeStringView fileName) {
  TFileStream file(fileName, fmCreate);
  SaveToStream(file);
}

void TCustomMemoryStream::SetPointer(uint8_t* memory, int64_t size) {
  FMemory = memory;
  FSize = size;
}

// ---------------------------------------------------------------- TMemoryStream

int64_t TMemoryStream::Write(const void* buffer, int64_t count) {
  if (count <= 0) return 0;
  const int64_t end = Checked::Add(FPosition, count);
  if (end > FSize) {
    if (end > FCapacity) Grow(end);
    FSize = end;
  }
  std::memcpy(FMemory + FPosition, buffer, static_cast<size_t>(count));
  FPosition = end;
  return count;
}

void TMemoryStream::Grow(int64_t needed) {
  const int64_t wanted = std::max(needed, FCapacity + FCapacity / 2);
  SetCapacity(Checked::Add(wanted, kMemoryBlock - 1) / kMemoryBlock * kMemoryBlock);
}

void TMemoryStream::SetSize(int64_t size) {
  Checked::CheckRange(size, 0, std::numeric_limits<int64_t>::max());
  if (size > FCapacity) SetCapacity(size);
  FSize = size;
  FPosition = std::min(FPosition, size);
}

void TMemoryStream::SetCapacity(int64_t capacity) {
  Checked::CheckRange(capacity, FSize, std::numeric_limits<int64_t>::max());
  if (capacity == FCapacity) return;
  SetPointer(Realloc(capacity), FSize);
  FCapacity = capacity;
}

uint8_t* TMemoryStream::Realloc(int64_t capacity) {
  if (capacity == 0) {
    FBuffer.reset();
    return nullptr;
  }
  auto buffer = std::make_unique_for_overwrite<uint8_t[]>(static_cast<size_t>(capacity));
  if (FSize > 0) std::memcpy(buffer.get(), FMemory, static_cast<size_t>(FSize));
  FBuffer = std::move(buffer);
  return FBuffer.get();
}

void TMemoryStream::Clear() {
  FSize = 0;
  FPosition = 0;
  SetCapacity(0);
}

void TMemoryStream::LoadFromStream(TStream& stream) {
  stream.SetPosition(0);
  LoadFromPosition(stream);
}

void TMemoryStream::LoadFromPosition(TStream& stream) {
  const int64_t size = std::max<int64_t>(stream.GetSize() - stream.GetPosition(), 0);
  FPosition = 0;
  SetSize(0);
  const int64_t reserve = std::min(size, kTrustedReserve);
  if (reserve > FCapacity) SetCapacity(reserve);
  while (FSize < size) {
    const int64_t chunk = std::min(size - FSize, kCopyBufferSize);
    if (FSize + chunk > FCapacity) Grow(FSize + chunk);
    stream.ReadBuffer(FMemory + FSize, chunk);
    FSize += chunk;
  }
}

void TMemoryStream::LoadFromFile(UnicodeStringView fileName) {
  TFileStream file(fileName, fmOpenRead | fmShareDenyWrite);
  LoadFromStream(file);
}

// ---------------------------------------------------------------- TBytesStream

TBytesStream::TBytesStream(const TBytes& bytes) {
  WriteBuffer(bytes.data(), static_cast<int64_t>(bytes.size()));
  SetPosition(0);
}

uint8_t* TBytesStream::Realloc(int64_t capacity) {
  FBytes.resize(static_cast<size_t>(capacity));
  return FBytes.data();
}

// ---------------------------------------------------------------- TStringStream

TStringStream::TStringStream() : TStringStream(UnicodeStringView(), nullptr, false) {}

TStringStream::TStringStream(UnicodeStringView s) : TStringStream(s, nullptr, false) {}

TStringStream::TStringStream(UnicodeStringView s, TEncoding* encoding, bool ownsEncoding)
    : FEncoding(encoding != nullptr ? encoding : TEncoding::Default()), FOwnsEncoding(ownsEncoding) {
  try {
    WriteString(s);
  } catch (...) {
    // No destructor runs for a half-made stream: give the encoding back here.
    ReleaseEncoding();
    throw;
  }
  SetPosition(0);
}

TStringStream::TStringStream(const TBytes& bytes)
    : TBytesStream(bytes), FEncoding(TEncoding::Default()), FOwnsEncoding(false) {}

TStringStream::~TStringStream() { ReleaseEncoding(); }

void TStringStream::ReleaseEncoding() {
  if (FOwnsEncoding && !TEncoding::IsStandardEncoding(FEncoding)) delete FEncoding;
}

UnicodeString TStringStream::DataString() const {
  return FEncoding->GetString(Encoding::TByteSpan(FMemory, static_cast<size_t>(FSize)));
}

UnicodeString TStringStream::ReadString(int64_t count) {
  const int64_t length = std::min(count, FSize - FPosition);
  if (length <= 0) return {};
  const UnicodeString s = FEncoding->GetString(Encoding::TByteSpan(FMemory + FPosition, static_cast<size_t>(length)));
  FPosition += length;
  return s;
}

void TStringStream::WriteString(UnicodeStringView s) {
  const TBytes bytes = FEncoding->GetBytes(s);
  WriteBuffer(bytes.data(), static_cast<int64_t>(bytes.size()));
}

}  // namespace Quorvex::Rtl::Streams
