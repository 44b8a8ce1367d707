// A first tour of QxRtl: formats sizes and rates, joins and splits lists,
// builds paths, writes and reads the XML date-time form and finds free
// file names in a scratch folder, printing what each step did.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>

#include "Quorvex.Rtl.DateTime.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Files.hpp"
#include "Quorvex.Utils.DateTime.hpp"
#include "Quorvex.Utils.Files.hpp"
#include "Quorvex.Utils.Folder.hpp"
#include "Quorvex.Utils.Path.hpp"
#include "Quorvex.Utils.Strings.hpp"
#include "Quorvex.Utils.Xml.hpp"

using namespace Quorvex;
using Rtl::Strings::Format;
using Rtl::Strings::UnicodeString;
using Utils::Strings::gString;

namespace {

void Print(const UnicodeString& line) { std::printf("%s\n", Rtl::Strings::Utf16ToUtf8(line).c_str()); }

// Writes and reads back a few MiB in `folder` and reports the sizes and
// rates it measured.
void ShowMeasuredRates(const UnicodeString& folder) {
  const UnicodeString file =
      Utils::Path::gPath::Make(folder, u"payload.txt", UnicodeString(1, Rtl::Files::PathDelim()));
  const UnicodeString text = gString::StringOf(u"0123456789abcdef", 256 * 1024);
  const auto start = std::chrono::steady_clock::now();
  Utils::Files::gFile::Save(file, text);
  const UnicodeString back = Utils::Files::gFile::Load(file);
  const auto elapsed = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
  const int64_t bytes = Utils::Files::gFile::GetSize(file);
  const int64_t perSecond = bytes * 2 * 1000000 / std::max<int64_t>(elapsed.count(), 1);
  Print(Format(u"Wrote and read %s (%s) in %d ms: %s, %s", gString::FormatBytes(bytes),
               back == text ? u"intact" : u"CORRUPT", elapsed.count() / 1000, gString::FormatBytesPerSec(perSecond),
               gString::FormatBitsPerSec(perSecond * 8)));
}

void ShowSizesAndRates() {
  Print(u"Sizes, rates and distances:");
  const int64_t samples[] = {512, 1536, 1048576, 1500000, 5368709120};
  for (int64_t value : samples)
    Print(Format(u"  %12d -> %-10s %-12s %-12s %s", value, gString::FormatBytes(value),
                 gString::FormatBytesPerSec(value), gString::FormatBitsPerSec(value), gString::FormatMeters(value)));
  Print(u"  uptime 93784005 ms -> " + Utils::DateTime::gTime::MsecsToStr(93784005, Utils::DateTime::ddDay));
}

void ShowJoinAndSplit() {
  const UnicodeString line = u"alpha,,beta, gamma ,";
  const auto pieces = gString::Split(line, u",");
  Print(Format(u"Split \"%s\" at \",\": %d pieces", line, static_cast<int>(pieces.size())));
  Print(u"  Join skips empties:        \"" + gString::Join(pieces, u";") + u"\"");
  Print(u"  JoinWithEmpties keeps them: \"" + gString::JoinWithEmpties(pieces, u";") + u"\"");
  Print(u"  KeyOf/ValueOf of \"host = example.org\": \"" + gString::KeyOf(u"host = example.org", u"=") + u"\" / \"" +
        gString::ValueOf(u"host = example.org", u"=") + u"\"");
}

UnicodeString ShowPaths(const UnicodeString& base) {
  const UnicodeString delimiter(1, Rtl::Files::PathDelim());
  const UnicodeString reports = Utils::Path::gPath::Make(base, u"reports", delimiter);
  Print(u"Paths:");
  Print(u"  Make(base, \"reports\")  = " + reports);
  Print(u"  relative to base        = " + Utils::Path::gPath::ToRelative(reports, base));
  Print(u"  ValidateName(\"a:b*c?\") = " + Utils::Path::gPath::ValidateName(u"a:b*c?", u'_'));
  return reports;
}

void ShowXmlTime() {
  const Rtl::DateTime::TDateTime now = Rtl::DateTime::Now();
  const UnicodeString local = Utils::Xml::gXml::DateTimeToXMLTime(now, true);
  const Rtl::DateTime::TDateTime back = Utils::Xml::gXml::XMLTimeToDateTime(local, false);
  Print(u"XML date-time:");
  Print(u"  now as XML     = " + local);
  Print(u"  read back      = " + Rtl::DateTime::FormatDateTime(u"yyyy-mm-dd hh:nn:ss", back));
  Print(Format(u"  time-zone bias = %d minutes", Utils::DateTime::gTime::GetTimeZoneBias()));
}

void ShowUniqueNames(const UnicodeString& reports) {
  Utils::Folder::gFolder::Force(reports);
  const UnicodeString first =
      Utils::Path::gPath::Make(reports, u"summary.txt", UnicodeString(1, Rtl::Files::PathDelim()));
  Utils::Files::gFile::Save(first, u"first report\n");
  Print(u"Unique names beside " + first + u":");
  for (int i = 0; i < 3; ++i) {
    const UnicodeString next = Utils::Files::gFile::GetUniqueName(first);
    Utils::Files::gFile::Save(next, Format(u"report %d\n", i + 2));
    Print(Format(u"  %s (%d bytes)", next, Utils::Files::gFile::GetSize(next)));
  }
}

}  // namespace

int main() {
  try {
    ShowSizesAndRates();
    ShowJoinAndSplit();
    const auto temp = std::filesystem::temp_directory_path().u16string();
    const UnicodeString scratch = Utils::Folder::gFolder::MakeUnique(temp, u"QxRtlExample");
    const UnicodeString reports = ShowPaths(scratch);
    ShowXmlTime();
    ShowUniqueNames(reports);
    ShowMeasuredRates(reports);
    Print(u"A free folder name beside it: " + Utils::Folder::gFolder::GetUniqueName(scratch, u"reports"));
    Utils::Folder::gFolder::Delete(scratch);
    Print(u"Removed " + scratch);
    return 0;
  } catch (const Rtl::Exceptions::Exception& e) {
    Print(u"Error: " + e.Message());
    return 1;
  }
}
