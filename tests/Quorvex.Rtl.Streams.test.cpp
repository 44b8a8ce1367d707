#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <tuple>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Files.TestSupport.hpp"
#include "Quorvex.Rtl.Streams.hpp"
#include "Quorvex.TestSupport.hpp"

namespace Quorvex::Rtl::Streams {
namespace {

using Exceptions::EFOpenError;
using Exceptions::EReadError;
using Exceptions::SysErrorMessage;
using Files::Testing::OnWindows;
using Files::Testing::TTempFolder;

std::string Rest(TStream& stream) {
  std::string bytes(static_cast<size_t>(stream.GetSize() - stream.GetPosition()), '\0');
  stream.ReadBuffer(bytes.data(), static_cast<int64_t>(bytes.size()));
  return bytes;
}

void Put(TStream& stream, std::string_view bytes) {
  stream.WriteBuffer(bytes.data(), static_cast<int64_t>(bytes.size()));
}

TEST(RtlStreamsTest, MemoryStreamReadsWritesAndSeeks) {
  TMemoryStream stream;
  Put(stream, "hello world");
  EXPECT_EQ(stream.Seek(-5, soEnd), 6);
  Put(stream, "there!");  // overwrites and extends
  stream.SetPosition(0);
  EXPECT_EQ(Rest(stream), "hello there!");

  stream.SetSize(5);
  EXPECT_EQ(stream.GetPosition(), 5);
  stream.SetPosition(1);
  EXPECT_EQ(Rest(stream), "ello");
  char byte;
  EXPECT_RAISES(EReadError, stream.ReadBuffer(&byte, 1), u"Stream read error");

  // Byte-sized writes grow the buffer geometrically, not byte by byte.
  int reallocations = 0;
  for (int i = 0; i < 1 << 20; ++i) {
    const int64_t capacity = stream.GetCapacity();
    stream.WriteBuffer(&i, 1);
    reallocations += stream.GetCapacity() != capacity;
  }
  EXPECT_LT(reallocations, 20);
}

TEST(RtlStreamsTest, FileStreamsRoundTripAndTruncate) {
  TTempFolder folder;
  const UnicodeString name = folder / u"data.bin";
  {
    TFileStream file(name, fmCreate);
    Put(file, "0123456789");
  }
  {
    TFileStream file(name, fmOpenReadWrite | fmShareExclusive);
    file.SetPosition(3);
    EXPECT_EQ(Rest(file), "3456789");
    file.SetSize(4);  // leaves the position at the new end
    Put(file, "!");
  }
  TFileStream file(name, fmOpenRead | fmShareDenyWrite);
  EXPECT_EQ(Rest(file), "0123!");
  EXPECT_RAISES(Exceptions::EWriteError, Put(file, "x"), u"Stream write error");
}

TEST(RtlStreamsTest, FailingOpensNameTheFileAndTheSystemError) {
  TTempFolder folder;
  const UnicodeString missing = folder / u"missing.txt";
  const UnicodeString inMissingFolder = folder / u"no/such.txt";
  // Windows reports a missing folder as "path not found".
  const uint32_t folderCode = OnWindows() ? 3 : 2;
  EXPECT_RAISES(EFOpenError, TFileStream file(missing, fmOpenRead),
                u"Cannot open file \"" + missing + u"\". " + SysErrorMessage(2));
  EXPECT_RAISES(Exceptions::EFCreateError, TFileStream file(inMissingFolder, fmCreate),
                u"Cannot create file \"" + inMissingFolder + u"\". " + SysErrorMessage(folderCode));

  // A folder never opens as a file; a read-only file never opens for
  // writing, not even for root, and keeps its content.
  const UnicodeString readOnly = folder / u"read-only.txt";
  {
    TFileStream file(readOnly, fmCreate);
    Put(file, "kept");
  }
  ASSERT_TRUE(Files::FileSetAttr(readOnly, Files::faReadOnly));
  const uint32_t denied = OnWindows() ? 5 : 13;    // ERROR_ACCESS_DENIED, EACCES
  const uint32_t isFolder = OnWindows() ? 5 : 21;  // EISDIR
  const std::tuple<UnicodeString, uint16_t, uint32_t> refused[] = {
      {folder.Path(), fmOpenRead, isFolder},
      {readOnly, fmOpenWrite, denied},
      {readOnly, fmOpenReadWrite | fmShareDenyNone, denied},
  };
  for (const auto& [name, mode, code] : refused) {
    SCOPED_TRACE(Strings::Utf16ToUtf8(name) + " mode " + std::to_string(mode));
    EXPECT_RAISES(EFOpenError, TFileStream file(name, mode),
                  u"Cannot open file \"" + name + u"\". " + SysErrorMessage(code));
  }
  EXPECT_RAISES(Exceptions::EFCreateError, TFileStream file(readOnly, fmCreate),
                u"Cannot create file \"" + readOnly + u"\". " + SysErrorMessage(denied));
  TMemoryStream loaded;
  EXPECT_RAISES(EFOpenError, loaded.LoadFromFile(folder.Path()),
                u"Cannot open file \"" + folder.Path() + u"\". " + SysErrorMessage(isFolder));
  loaded.LoadFromFile(readOnly);
  EXPECT_EQ(Rest(loaded), "kept");

  if (OnWindows()) {  // share modes exist only there
    const UnicodeString name = folder / u"locked.txt";
    TFileStream locked(name, fmCreate);
    EXPECT_RAISES(EFOpenError, TFileStream second(name, fmOpenRead | fmShareDenyNone),
                  u"Cannot open file \"" + name + u"\". " + SysErrorMessage(32));
  }
}

// A stream that cannot seek, like a pipe.
class TUnsizedStream : public TStream {
 public:
  int64_t Read(void*, int64_t) override { return 0; }
  int64_t Write(const void*, int64_t) override { return 0; }
  int64_t Seek(int64_t, TSeekOrigin) override { return -1; }
};

// A stream that claims far more bytes than it has, as a folder opened as
// a file on Linux does (2^63 - 1 on ext4).
class TOverstatedStream : public TBytesStream {
 public:
  TOverstatedStream() : TBytesStream(TBytes{'a', 'b', 'c'}) {}
  int64_t GetSize() override { return std::numeric_limits<int64_t>::max(); }
};

TEST(RtlStreamsTest, LoadsTrustNoSizeWithMemory) {
  TOverstatedStream source;
  TMemoryStream target;
  EXPECT_RAISES(EReadError, target.LoadFromStream(source), u"Stream read error");
  EXPECT_LE(target.GetCapacity(), int64_t{64} << 20);

  TBytesStream exact(TBytes{'x', 'y', 'z'});
  exact.SetPosition(1);
  target.LoadFromPosition(exact);
  EXPECT_EQ(target.GetPosition(), 0);
  EXPECT_EQ(Rest(target), "yz");
  target.LoadFromStream(exact);
  EXPECT_EQ(Rest(target), "xyz");
}

TEST(RtlStreamsTest, CopyFromAndStringStreams) {
  TBytesStream source(TBytes{'a', 'b', 'c', 'd', 'e'});
  TMemoryStream target;
  source.SetPosition(3);
  EXPECT_EQ(target.CopyFrom(source, 0), 5);  // 0: the whole source from its start
  source.SetPosition(1);
  EXPECT_EQ(target.CopyFrom(source, 2), 2);
  target.SetPosition(0);
  EXPECT_EQ(Rest(target), "abcdebc");
  EXPECT_RAISES(EReadError, target.CopyFrom(source, 3), u"Stream read error");
  TUnsizedStream pipe;  // cannot tell its size, so "everything" is nothing
  EXPECT_EQ(target.CopyFrom(pipe, 0), 0);

  TStringStream text(u"h\u00E9llo", TEncoding::UTF8(), false);
  EXPECT_EQ(text.ReadString(3), u"h\u00E9");
  EXPECT_EQ(text.ReadString(100), u"llo");
  text.WriteString(u"!");
  EXPECT_EQ(text.DataString(), u"h\u00E9llo!");

  // An owned clone goes with the stream (else the leak checker objects).
  TStringStream wide(u"ab", TEncoding::BigEndianUnicode()->Clone());
  EXPECT_EQ(wide.DataString(), u"ab");
}

}  // namespace
}  // namespace Quorvex::Rtl::Streams
