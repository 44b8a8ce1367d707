// The library's XML date-time text: "2015-03-01T14:05:09.007+02:00" or
// "...Z". The XML serializer stores every date-time value in this form.
#pragma once

#include "Quorvex.Rtl.DateTime.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Strings.hpp"
#include "Quorvex.Rtl.Xml.hpp"

namespace Quorvex::Utils::Xml {

using Rtl::DateTime::TDateTime;
using Rtl::Strings::UnicodeString;
using Rtl::Strings::UnicodeStringView;

// Malformed XML date-time text raises the library's one XML exception, the
// same that reports malformed documents.
using Rtl::Xml::EXmlError;

struct QXRTL_API gXml {
  gXml() = delete;

  // `Value` as "yyyy-mm-ddThh:nn:ss.zzz" followed by the current local
  // offset ("+02:00", "-05:00") when `ApplyLocalBias` is set and the
  // offset is not zero, else by "Z". The value itself is never converted.
  // Raises ERangeError for a value outside the years 1..9999 once rounded
  // to the millisecond.
  static UnicodeString DateTimeToXMLTime(TDateTime Value, bool ApplyLocalBias);

  // Reads the text back as UTC (`AsUTCTime`) or as local time. Lenient by
  // design: the zone's sign is ignored, the fraction of a second dropped,
  // and text without a zone counts as UTC. Raises EXmlError
  // "Invalid date string: %s" for a date under four characters and
  // "Incorrect XML" for missing digits, ERangeError for a number above
  // 65535, and EConvertError for a date or time that does not exist.
  static TDateTime XMLTimeToDateTime(UnicodeStringView XMLDateTime, bool AsUTCTime);
};

}  // namespace Quorvex::Utils::Xml
