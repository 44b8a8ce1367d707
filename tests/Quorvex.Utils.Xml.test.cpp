#include "Quorvex.Utils.Xml.hpp"

#include <cstdlib>
#include <ctime>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Quorvex.Rtl.DateTime.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Utils.DateTime.hpp"

namespace Quorvex::Utils::Xml {
namespace {

using Rtl::DateTime::TTimeZoneOverride;
using Rtl::Strings::Utf16ToUtf8;
using testing::StrEq;
using testing::ThrowsMessage;

const TDateTime kSample = Rtl::DateTime::EncodeDateTime(2015, 3, 1, 14, 5, 9, 7);

// The text read back as "yyyy-mm-dd hh:nn:ss", readable in failures.
std::string Read(UnicodeStringView text, bool asUtc) {
  return Utf16ToUtf8(Rtl::DateTime::FormatDateTime(u"yyyy-mm-dd hh:nn:ss", gXml::XMLTimeToDateTime(text, asUtc)));
}

TEST(UtilsXmlTest, WritesTheLocalOffsetOrZ) {
  struct Case {
    int32_t offset;
    bool applyLocalBias;
    const char16_t* expected;
  };
  const Case cases[] = {
      {120, true, u"2015-03-01T14:05:09.007+02:00"},  {120, false, u"2015-03-01T14:05:09.007Z"},
      {-300, true, u"2015-03-01T14:05:09.007-05:00"}, {330, true, u"2015-03-01T14:05:09.007+05:30"},
      {-570, true, u"2015-03-01T14:05:09.007-09:30"}, {0, true, u"2015-03-01T14:05:09.007Z"},
  };
  for (const Case& c : cases) {
    TTimeZoneOverride zone(c.offset);
    EXPECT_EQ(gXml::DateTimeToXMLTime(kSample, c.applyLocalBias), c.expected) << c.offset;
  }
}

TEST(UtilsXmlTest, ReadsAndShiftsByZone) {
  struct Case {
    int32_t localOffset;
    const char16_t* text;
    bool asUtc;
    const char* expected;
  };
  const Case cases[] = {
      {120, u"2015-03-01T10:00:00Z", true, "2015-03-01 10:00:00"},
      {120, u"2015-03-01T10:00:00Z", false, "2015-03-01 12:00:00"},
      {-300, u"2015-03-01T10:00:00Z", false, "2015-03-01 05:00:00"},
      {330, u"2015-03-01T23:00:00Z", false, "2015-03-02 04:30:00"},
      {120, u"2015-03-01T10:00:00+02:00", false, "2015-03-01 10:00:00"},
      {120, u"2015-03-01T01:00:00+05:30", true, "2015-02-28 19:30:00"},
      // The zone's sign is not kept: "-02:00" reads like "+02:00".
      {0, u"2015-03-01T10:00:00-02:00", true, "2015-03-01 08:00:00"},
      // Text without a zone counts as UTC.
      {-300, u"2015-03-01", false, "2015-02-28 19:00:00"},
      // Lenient scanning, read as written.
      {0, u"15-3-1", true, "0015-03-01 00:00:00"},
      {0, u"-2015-03-01x", true, "2015-03-01 00:00:00"},
      {0, u"2015-03-01T10.30", true, "2015-03-01 10:30:00"},
      {0, u"2015-03-01T10+02:00", true, "2015-03-01 10:02:00"},  // any character introduces the minutes
      {0, u"2015-03-01T1:2:3.99999999999999999999Zjunk", true, "2015-03-01 01:02:03"},
      // A separator as the last character is not one.
      {0, u"2015-03-01T10:", true, "2015-03-01 10:00:00"},
      {0, u"2015-03-01T10:00:00.", true, "2015-03-01 10:00:00"},
      {0, u"2015-03-01T10:00:00+", true, "2015-03-01 10:00:00"},
      {0, u"2015-03-01T10:00:00+02:", true, "2015-03-01 08:00:00"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << Utf16ToUtf8(c.text) << " at " << c.localOffset << (c.asUtc ? " utc" : ""));
    TTimeZoneOverride zone(c.localOffset);
    EXPECT_EQ(Read(c.text, c.asUtc), c.expected);
  }
}

TEST(UtilsXmlTest, RoundTripDropsMillisecondsAndDoublesWestOffsets) {
  TTimeZoneOverride east(120);
  EXPECT_EQ(Read(gXml::DateTimeToXMLTime(kSample, true), false), "2015-03-01 14:05:09");
  EXPECT_EQ(gXml::XMLTimeToDateTime(gXml::DateTimeToXMLTime(kSample, false), true),
            Rtl::DateTime::EncodeDateTime(2015, 3, 1, 14, 5, 9, 0));
  TTimeZoneOverride west(-300);
  EXPECT_EQ(Read(gXml::DateTimeToXMLTime(kSample, true), false), "2015-03-01 04:05:09");
}

TEST(UtilsXmlTest, MalformedTextRaises) {
  const char* const kIncorrect = "Incorrect XML";
  const std::pair<const char16_t*, const char*> malformed[] = {
      {u"201", "Invalid date string: 201"},
      {u"-201", "Invalid date string: 201"},
      {u"T10:00", "Invalid date string: "},
      {u"abcd", kIncorrect},
      {u"2015-x3-01", kIncorrect},
      {u"2015-03-x1", kIncorrect},
      {u"2015-03-01T", kIncorrect},
      {u"2015-03-01T10:x0", kIncorrect},
      {u"2015-03-01T10:00:x0", kIncorrect},
      {u"2015-03-01T10:00:00.x", kIncorrect},
      {u"2015-03-01T10:00:00+x2", kIncorrect},
      {u"2015-03-01T10:00:00+02:x0", kIncorrect},
  };
  for (const auto& [text, message] : malformed) {
    SCOPED_TRACE(Utf16ToUtf8(text));
    EXPECT_THAT([&] { gXml::XMLTimeToDateTime(text, true); }, ThrowsMessage<EXmlError>(StrEq(message)));
  }

  const char* const kDate = "Invalid argument to date encode";
  const char* const kTime = "Invalid argument to time encode";
  const std::pair<const char16_t*, const char*> impossible[] = {
      {u"2015", kDate},          {u"2015-03-", kDate},
      {u"2015-02-29", kDate},    {u"65535-01-01", kDate},
      {u"2015-03-01T24", kTime}, {u"2015-03-01T10:00:00+24:00", kTime},  // the shift must be under a day
  };
  TTimeZoneOverride zone(0);
  for (const auto& [text, message] : impossible) {
    SCOPED_TRACE(Utf16ToUtf8(text));
    EXPECT_THAT([&] { gXml::XMLTimeToDateTime(text, true); },
                ThrowsMessage<Rtl::Exceptions::EConvertError>(StrEq(message)));
  }

  for (const char16_t* text :
       {u"65536-01-01", u"99999999999999999999999", u"2015-03-01T10:00:65536", u"2015-03-01T10:00:00+65536"}) {
    SCOPED_TRACE(Utf16ToUtf8(text));
    EXPECT_THAT([&] { gXml::XMLTimeToDateTime(text, true); },
                ThrowsMessage<Rtl::Exceptions::ERangeError>(StrEq("Range check error")));
  }
}

#if defined(__linux__)
// The machine's own zone, driven through TZ (rules without daylight saving).
TEST(UtilsXmlTest, RealZoneFollowsTz) {
  const char* saved = std::getenv("TZ");
  const std::string previous = saved ? saved : "";
  const std::pair<const char*, const char16_t*> cases[] = {{"QXA-2", u"2015-03-01T14:05:09.007+02:00"},
                                                           {"QXB5", u"2015-03-01T14:05:09.007-05:00"},
                                                           {"QXC-5:30", u"2015-03-01T14:05:09.007+05:30"},
                                                           {"UTC0", u"2015-03-01T14:05:09.007Z"}};
  for (const auto& [tz, written] : cases) {
    setenv("TZ", tz, 1);
    tzset();
    EXPECT_EQ(gXml::DateTimeToXMLTime(kSample, true), written) << tz;
  }
  setenv("TZ", "QXB5", 1);
  tzset();
  EXPECT_EQ(DateTime::gTime::GetTimeZoneBias(), 300);
  if (saved)
    setenv("TZ", previous.c_str(), 1);
  else
    unsetenv("TZ");
  tzset();
}
#endif

}  // namespace
}  // namespace Quorvex::Utils::Xml
