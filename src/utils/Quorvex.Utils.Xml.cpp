#include "Quorvex.Utils.Xml.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "Quorvex.Rtl.Checked.hpp"
#include "Quorvex.Utils.DateTime.hpp"

namespace Quorvex::Utils::Xml {

namespace RtlDateTime = Rtl::DateTime;
using Rtl::Strings::Char;
using Rtl::Strings::Format;

namespace {

constexpr UnicodeStringView kXmlTimeFormat = u"yyyy'-'mm'-'dd'T'hh':'nn':'ss'.'zzz";

// Walks one part of the text (date or time). A separator counts only when
// it is not the last character, so "10:" reads as hour 10 and nothing more.
class TXmlTimeScanner {
 public:
  explicit TXmlTimeScanner(UnicodeStringView text) : FText(text) {}

  // Steps over `separator` when it comes next and is not the last character.
  bool SkipSeparator(Char separator) {
    if (!HasSeparatorRoom() || FText[FPos] != separator) return false;
    ++FPos;
    return true;
  }

  // Steps over whatever character comes next, unless it is the last.
  bool SkipAnySeparator() {
    if (!HasSeparatorRoom()) return false;
    ++FPos;
    return true;
  }

  // Steps over a run of decimal digits; raises EXmlError "Incorrect XML"
  // when there is none.
  UnicodeStringView Digits() {
    const size_t start = FPos;
    while (FPos < FText.size() && FText[FPos] >= u'0' && FText[FPos] <= u'9') ++FPos;
    if (FPos == start) throw EXmlError(u"Incorrect XML");
    return FText.substr(start, FPos - start);
  }

  // A run of digits, raising as Digits. Saturating just past 65535 keeps
  // absurdly long runs in range of the accumulator while still failing
  // the 16-bit range check made later.
  int64_t UncheckedNumber() {
    constexpr int64_t kPastLimit = 65536;
    int64_t value = 0;
    for (Char c : Digits()) value = std::min<int64_t>(value * 10 + (c - u'0'), kPastLimit);
    return value;
  }

  // A run of digits as a 16-bit number; raises as Digits, or ERangeError
  // above 65535.
  int Number() { return Rtl::Checked::Narrow<uint16_t>(UncheckedNumber()); }

  // The number after `separator`, or 0 when the separator is absent.
  int NumberAfter(Char separator) { return SkipSeparator(separator) ? Number() : 0; }
  int64_t UncheckedNumberAfter(Char separator) { return SkipSeparator(separator) ? UncheckedNumber() : 0; }

 private:
  bool HasSeparatorRoom() const { return FPos + 1 < FText.size(); }

  UnicodeStringView FText;
  size_t FPos = 0;
};

struct TTimeOfDay {
  int Hour = 0, Minute = 0, Second = 0;
  int ZoneOffset = 0;  // minutes, never negative
};

struct TCalendarDate {
  int Year, Month, Day;
};

TCalendarDate ScanDate(UnicodeStringView text) {
  // Years before the common era are not supported: the sign is dropped.
  if (!text.empty() && text.front() == u'-') text.remove_prefix(1);
  if (text.size() < 4) throw EXmlError(Format(u"Invalid date string: %s", text));
  TXmlTimeScanner scanner(text);
  TCalendarDate date;
  date.Year = scanner.Number();
  date.Month = scanner.NumberAfter(u'-');
  date.Day = scanner.NumberAfter(u'-');
  return date;
}

TTimeOfDay ScanTime(UnicodeStringView text) {
  TXmlTimeScanner scanner(text);
  TTimeOfDay time;
  // Hour, minute and second are range-checked only once the whole time has
  // been scanned, so malformed text reports "Incorrect XML" first.
  const int64_t hour = scanner.UncheckedNumber();
  // Writers disagree on the hour-minute separator; any character will do.
  const int64_t minute = scanner.SkipAnySeparator() ? scanner.UncheckedNumber() : 0;
  const int64_t second = scanner.UncheckedNumberAfter(u':');
  // The fraction is read only to get past it: values go back to the
  // second, as stored documents have always been read.
  if (scanner.SkipSeparator(u'.')) scanner.Digits();
  // The sign is deliberately not kept: "-05:00" counts as five hours like
  // "+05:00", which existing settings files depend on.
  if (scanner.SkipSeparator(u'+') || scanner.SkipSeparator(u'-')) {
    const int hours = scanner.Number();
    time.ZoneOffset = hours * 60 + scanner.NumberAfter(u':');
  }
  time.Hour = Rtl::Checked::Narrow<uint16_t>(hour);
  time.Minute = Rtl::Checked::Narrow<uint16_t>(minute);
  time.Second = Rtl::Checked::Narrow<uint16_t>(second);
  return time;
}

// `value` moved back by `minutes` (forward when negative). The shift goes
// through the time encoding, so it must stay under a day.
TDateTime ShiftBack(TDateTime value, int minutes) {
  if (minutes == 0) return value;
  const int magnitude = std::abs(minutes);
  const TDateTime shift = RtlDateTime::EncodeTime(magnitude / 60, magnitude % 60, 0, 0);
  return minutes > 0 ? value - shift : value + shift;
}

}  // namespace

UnicodeString gXml::DateTimeToXMLTime(TDateTime Value, bool ApplyLocalBias) {
  const UnicodeString text = RtlDateTime::FormatDateTime(kXmlTimeFormat, Value);
  const int32_t bias = DateTime::gTime::GetTimeZoneBias();
  if (!ApplyLocalBias || bias == 0) return text + u'Z';
  const int32_t magnitude = std::abs(bias);
  // A negative bias means local time is ahead of UTC.
  return Format(u"%s%s%.2d:%.2d", text, bias <= 0 ? u"+" : u"-", magnitude / 60, magnitude % 60);
}

TDateTime gXml::XMLTimeToDateTime(UnicodeStringView XMLDateTime, bool AsUTCTime) {
  const size_t timeMark = XMLDateTime.find(u'T');
  const TCalendarDate date = ScanDate(XMLDateTime.substr(0, timeMark));
  const TTimeOfDay time =
      timeMark == UnicodeStringView::npos ? TTimeOfDay{} : ScanTime(XMLDateTime.substr(timeMark + 1));
  const TDateTime value =
      RtlDateTime::EncodeDateTime(date.Year, date.Month, date.Day, time.Hour, time.Minute, time.Second, 0);
  if (AsUTCTime) return ShiftBack(value, time.ZoneOffset);
  // Text without a zone counts as UTC, like "Z".
  return ShiftBack(value, DateTime::gTime::GetTimeZoneBias() + time.ZoneOffset);
}

}  // namespace Quorvex::Utils::Xml
