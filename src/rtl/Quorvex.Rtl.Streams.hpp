// Byte streams: the abstract TStream with its buffer helpers, streams over
// file handles and named files, and streams over memory, byte arrays and
// encoded text. Positions and sizes are 64-bit byte counts.
#pragma once

#include <cstdint>
#include <memory>

#include "Quorvex.Rtl.Encoding.hpp"
#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Objects.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::Rtl::Streams {

using Encoding::TBytes;
using Encoding::TEncoding;
using Strings::UnicodeString;
using Strings::UnicodeStringView;

// Where Seek counts from.
enum class TSeekOrigin { soBeginning, soCurrent, soEnd };
using enum TSeekOrigin;

// Modes of TFileStream: fmCreate or one access mode, combined with one
// share mode (share modes only take effect on Windows).
inline constexpr uint16_t fmCreate = 0xFF00;
inline constexpr uint16_t fmOpenRead = 0x0000;
inline constexpr uint16_t fmOpenWrite = 0x0001;
inline constexpr uint16_t fmOpenReadWrite = 0x0002;
inline constexpr uint16_t fmShareCompat = 0x0000;
inline constexpr uint16_t fmShareExclusive = 0x0010;
inline constexpr uint16_t fmShareDenyWrite = 0x0020;
inline constexpr uint16_t fmShareDenyRead = 0x0030;
inline constexpr uint16_t fmShareDenyNone = 0x0040;

// A sequence of bytes with a current position.
class QXRTL_API TStream : public Objects::TObject {
  QX_CLASS(TStream, TObject, "Quorvex.Rtl.Streams")
 public:
  // Reads up to `count` bytes at the position into `buffer` and advances
  // past them; answers how many were read (0 at the end).
  virtual int64_t Read(void* buffer, int64_t count) = 0;
  // Writes `count` bytes at the position and advances past them; answers
  // how many were written.
  virtual int64_t Write(const void* buffer, int64_t count) = 0;
  // Moves the position and answers the new one.
  virtual int64_t Seek(int64_t offset, TSeekOrigin origin) = 0;

  int64_t GetPosition() { return Seek(0, soCurrent); }
  void SetPosition(int64_t position) { Seek(position, soBeginning); }
  // The length in bytes; the base finds it by seeking to the end and back.
  virtual int64_t GetSize();
  // Changes the length where the stream can; the base ignores it.
  virtual void SetSize(int64_t size);

  // Reads exactly `count` bytes; raises EReadError "Stream read error" when
  // the stream ends first.
  void ReadBuffer(void* buffer, int64_t count);
  // Writes exactly `count` bytes; raises EWriteError "Stream write error"
  // when the stream takes fewer.
  void WriteBuffer(const void* buffer, int64_t count);
  // Copies `count` bytes from `source` at its position; a count of 0 (or
  // less) copies the whole source from its start. Answers the bytes
  // copied; raises EReadError / EWriteError as ReadBuffer and WriteBuffer.
  int64_t CopyFrom(TStream& source, int64_t count);
};

// A stream over an operating-system file handle it does not own.
class QXRTL_API THandleStream : public TStream {
  QX_CLASS(THandleStream, TStream, "Quorvex.Rtl.Streams")
 public:
  explicit THandleStream(intptr_t handle) : FHandle(handle) {}

  // Read and Write answer -1 when the system call fails.
  int64_t Read(void* buffer, int64_t count) override;
  int64_t Write(const void* buffer, int64_t count) override;
  // Answers -1 when the system refuses the move.
  int64_t Seek(int64_t offset, TSeekOrigin origin) override;
  // Truncates or extends the file and leaves the position at the new end;
  // raises EOSError when the system refuses.
  void SetSize(int64_t size) override;

  intptr_t Handle() const { return FHandle; }

 protected:
  intptr_t FHandle;
};

// A stream over a named file that it opens and closes.
class QXRTL_API TFileStream : public THandleStream {
  QX_CLASS(TFileStream, THandleStream, "Quorvex.Rtl.Streams")
 public:
  // Opens `fileName` with `mode` (an access mode or'ed with a share mode)
  // or, with fmCreate, creates or truncates it. Raises EFCreateError
  // "Cannot create file \"%s\". %s" or EFOpenError "Cannot open file
  // \"%s\". %s" with the system's error text when that fails.
  TFileStream(UnicodeStringView fileName, uint16_t mode);
  ~TFileStream() override;
  TFileStream(const TFileStream&) = delete;
  TFileStream& operator=(const TFileStream&) = delete;

  const UnicodeString& FileName() const { return FFileName; }

 private:
  UnicodeString FFileName;
};

// A stream over a block of memory it reads, seeks and saves; writing is
// left to subclasses that own the memory.
class QXRTL_API TCustomMemoryStream : public TStream {
  QX_CLASS(TCustomMemoryStream, TStream, "Quorvex.Rtl.Streams")
 public:
  int64_t Read(void* buffer, int64_t count) override;
  // Positions may move past the end; reading there answers 0. Answers -1
  // for a negative target.
  int64_t Seek(int64_t offset, TSeekOrigin origin) override;
  int64_t GetSize() override { return FSize; }

  // Writes the whole content to `stream` / to a new file (raising as
  // TFileStream and WriteBuffer do).
  void SaveToStream(TStream& stream);
  void SaveToFile(UnicodeStringView fileName);

  // The content (Size bytes); valid until the stream next grows.
  uint8_t* Memory() const { return FMemory; }

 protected:
  void SetPointer(uint8_t* memory, int64_t size);

  uint8_t* FMemory = nullptr;
  int64_t FSize = 0;
  int64_t FPosition = 0;
};

// A growable memory stream that owns its buffer.
class QXRTL_API TMemoryStream : public TCustomMemoryStream {
  QX_CLASS(TMemoryStream, TCustomMemoryStream, "Quorvex.Rtl.Streams")
 public:
  TMemoryStream() = default;
  ~TMemoryStream() override = default;
  TMemoryStream(const TMemoryStream&) = delete;
  TMemoryStream& operator=(const TMemoryStream&) = delete;

  // Writing past the end grows the stream; the buffer grows by at least
  // half its size at a time, so repeated small writes stay linear.
  int64_t Write(const void* buffer, int64_t count) override;
  // Bytes added by growing are unspecified; the position stays unless it
  // would pass the new end.
  void SetSize(int64_t size) override;
  int64_t GetCapacity() const { return FCapacity; }
  void SetCapacity(int64_t capacity);
  // Empties the stream and frees its memory.
  void Clear();

  // Replaces the content with the whole of `stream` (read from its start)
  // or of a file; the position goes back to 0. Raises as ReadBuffer and
  // TFileStream do.
  void LoadFromStream(TStream& stream);
  void LoadFromFile(UnicodeStringView fileName);
  // Replaces the content with what `stream` holds from its position to
  // the end its size tells; the position goes back to 0. The size is not
  // trusted with memory: what is reserved grows with the bytes actually
  // read, so a stream that overstates it raises EReadError "Stream read
  // error" instead of exhausting memory.
  void LoadFromPosition(TStream& stream);

 protected:
  // Moves the content to storage of `capacity` bytes and answers it.
  virtual uint8_t* Realloc(int64_t capacity);

 private:
  void Grow(int64_t needed);

  std::unique_ptr<uint8_t[]> FBuffer;
  int64_t FCapacity = 0;
};

// A memory stream whose storage is a byte array.
class QXRTL_API TBytesStream : public TMemoryStream {
  QX_CLASS(TBytesStream, TMemoryStream, "Quorvex.Rtl.Streams")
 public:
  TBytesStream() = default;
  // Starts with a copy of `bytes` at position 0.
  explicit TBytesStream(const TBytes& bytes);

  // The storage itself: its length is the capacity, of which the first
  // Size bytes are the content.
  const TBytes& Bytes() const { return FBytes; }

 protected:
  uint8_t* Realloc(int64_t capacity) override;

 private:
  TBytes FBytes;
};

// A byte stream holding text in one encoding.
class QXRTL_API TStringStream : public TBytesStream {
  QX_CLASS(TStringStream, TBytesStream, "Quorvex.Rtl.Streams")
 public:
  // An empty stream in the default encoding.
  TStringStream();
  // `s` in the default encoding.
  explicit TStringStream(UnicodeStringView s);
  // `s` in `encoding` (the default one when null). A non-standard encoding
  // is freed with the stream when `ownsEncoding`.
  TStringStream(UnicodeStringView s, TEncoding* encoding, bool ownsEncoding = true);
  // The bytes as they are, read in the default encoding.
  explicit TStringStream(const TBytes& bytes);
  ~TStringStream() override;
  TStringStream(const TStringStream&) = delete;
  TStringStream& operator=(const TStringStream&) = delete;

  // The whole content decoded.
  UnicodeString DataString() const;
  // Decodes `count` bytes (fewer at the end) from the position and
  // advances past them.
  UnicodeString ReadString(int64_t count);
  // Writes `s` encoded at the position.
  void WriteString(UnicodeStringView s);
  TEncoding* GetEncoding() const { return FEncoding; }

 private:
  // Frees the encoding when the stream owns it.
  void ReleaseEncoding();

  TEncoding* FEncoding;
  bool FOwnsEncoding;
};

}  // namespace Quorvex::Rtl::Streams
