#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <string>
#include <utility>

#include "Quorvex.Rtl.DateTime.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.TestSupport.hpp"
#include "Quorvex.Utils.Xml.hpp"

namespace Quorvex::Utils::Xml {
namespace {

using Rtl::DateTime::TTimeZoneOverride;
using Rtl::Strings::Utf16ToUtf8;

const TDateTime kSample = Rtl::DateTime::EncodeDateTime(2015, 3, 1, 14, 5, 9, 7);

// The text read back as "yyyy-mm-dd hh:nn:ss", readable in failures.
std::string Read(UnicodeStringView text, bool asUtc) {
  return Utf16ToUtf8(Rtl::DateTime::FormatDateTime(u"yyyy-mm-dd hh:nn:ss", gXml::XMLTimeToDateTime(text, asUtc)));
}

TEST(UtilsXmlTest, WritesTheLocalOffsetOrZAndReadsItBack) {
  for (const auto& [offset, zone] : {std::pair{120, u"+02:00"}, {-300, u"-05:00"}, {330, u"+05:30"}, {0, u"Z"}}) {
    TTimeZoneOverride local(offset);
    EXPECT_EQ(gXml::DateTimeToXMLTime(kSample, true), u"2015-03-01T14:05:09.007" + UnicodeString(zone)) << offset;
  }
  TTimeZoneOverride east(120);
  const UnicodeString utc = gXml::DateTimeToXMLTime(kSample, false);
  EXPECT_EQ(utc, u"2015-03-01T14:05:09.007Z");
  // Read back, the milliseconds are gone, and a west offset counts twice since its sign is dropped.
  EXPECT_EQ(gXml::XMLTimeToDateTime(utc, true), Rtl::DateTime::EncodeDateTime(2015, 3, 1, 14, 5, 9, 0));
  EXPECT_EQ(Read(gXml::DateTimeToXMLTime(kSample, true), false), "2015-03-01 14:05:09");
  TTimeZoneOverride west(-300);
  EXPECT_EQ(Read(gXml::DateTimeToXMLTime(kSample, true), false), "2015-03-01 04:05:09");
}

TEST(UtilsXmlTest, ReadsAndShiftsByZone) {
  const std::pair<const char16_t*, const char*> asUtc[] = {
      {u"2015-03-01T01:00:00+05:30", "2015-02-28 19:30:00"},
      // The zone's sign is not kept: "-02:00" reads like "+02:00".
      {u"2015-03-01T10:00:00-02:00", "2015-03-01 08:00:00"},
      // Lenient scanning, read as written; any character introduces the minutes.
      {u"15-3-1", "0015-03-01 00:00:00"},
      {u"-2015-03-01x", "2015-03-01 00:00:00"},
      {u"2015-03-01T10+02:00", "2015-03-01 10:02:00"},
      {u"2015-03-01T1:2:3.99999999999999999999Zjunk", "2015-03-01 01:02:03"},
      // A separator as the last character is not one.
      {u"2015-03-01T10:", "2015-03-01 10:00:00"},
      {u"2015-03-01T10:00:00+02:", "2015-03-01 08:00:00"},
  };
  TTimeZoneOverride local(330);  // ignored when reading as UTC
  for (const auto& [text, expected] : asUtc) EXPECT_EQ(Read(text, true), expected) << Utf16ToUtf8(text);
  // Read as local time; text without a zone counts as UTC.
  EXPECT_EQ(Read(u"2015-03-01T23:00:00Z", false), "2015-03-02 04:30:00");
  EXPECT_EQ(Read(u"2015-03-01T10:00:00+05:30", false), "2015-03-01 10:00:00");
  EXPECT_EQ(Read(u"2015-03-01", false), "2015-03-01 05:30:00");
}

template <typename E>
void ExpectReadRaises(const char16_t* text, const char16_t* message) {
  SCOPED_TRACE(Utf16ToUtf8(text));
  EXPECT_RAISES(E, gXml::XMLTimeToDateTime(text, true), message);
}

TEST(UtilsXmlTest, MalformedTextRaises) {
  ExpectReadRaises<EXmlError>(u"-201", u"Invalid date string: 201");  // the sign goes before the length check
  ExpectReadRaises<EXmlError>(u"T10:00", u"Invalid date string: ");
  for (const char16_t* text :
       {u"abcd", u"2015-03-x1", u"2015-03-01T", u"2015-03-01T10:00:00.x", u"2015-03-01T10:00:00+02:x0",
        u"2015-03-01T70000:00:00.Z"})  // the time is scanned in full before its range check
    ExpectReadRaises<EXmlError>(text, u"Incorrect XML");
  for (const char16_t* text : {u"2015", u"65535-01-01"})
    ExpectReadRaises<Rtl::Exceptions::EConvertError>(text, u"Invalid argument to date encode");
  // The zone shift goes through the time encoding too, so it must stay under a day.
  for (const char16_t* text : {u"2015-03-01T24", u"2015-03-01T10:00:00+24:00"})
    ExpectReadRaises<Rtl::Exceptions::EConvertError>(text, u"Invalid argument to time encode");
  for (const char16_t* text :
       {u"65536-01-01", u"99999999999999999999999", u"2015-03-01T10:00:00+65536", u"2015-03-01T10:65536"})
    ExpectReadRaises<Rtl::Exceptions::ERangeError>(text, u"Range check error");
}

// The writer rounds to the millisecond: the values that round into year
// 10000 are out of range like those beyond, and the one before them is the
// last millisecond that reads back.
TEST(UtilsXmlTest, WritingRejectsValuesThatRoundPastTheLastDay) {
  const TDateTime end = Rtl::DateTime::MaxDateTime + 1;
  TDateTime value = end;
  for (int step = 0; step <= 12; ++step) {
    SCOPED_TRACE(step);
    EXPECT_RAISES(Rtl::Exceptions::ERangeError, gXml::DateTimeToXMLTime(value, false), u"Range check error");
    value = std::nextafter(value, 0.0);
  }
  const UnicodeString last = gXml::DateTimeToXMLTime(value, false);
  EXPECT_EQ(last, u"9999-12-31T23:59:59.999Z");
  EXPECT_EQ(Read(last, true), "9999-12-31 23:59:59");
}

#if defined(__linux__)
// The machine's own zone, driven through TZ (rules without daylight saving).
TEST(UtilsXmlTest, RealZoneFollowsTz) {
  const char* saved = std::getenv("TZ");
  const std::string previous = saved ? saved : "";
  for (const auto& [tz, written] :
       {std::pair{"QXB5", u"2015-03-01T14:05:09.007-05:00"}, std::pair{"QXC-5:30", u"2015-03-01T14:05:09.007+05:30"}}) {
    setenv("TZ", tz, 1);
    tzset();
    EXPECT_EQ(gXml::DateTimeToXMLTime(kSample, true), written) << tz;
  }
  if (saved)
    setenv("TZ", previous.c_str(), 1);
  else
    unsetenv("TZ");
  tzset();
}
#endif

}  // namespace
}  // namespace Quorvex::Utils::Xml
