// Windows only: the user's collation through CompareStringW and the sort
// keys of LCMapStringW, which order texts the same way.
#include <algorithm>
#include <climits>

#include "Quorvex.Platform.Collation.hpp"
#include "Quorvex.Platform.Win32.hpp"

namespace Quorvex::Platform {

struct CollatorData {
  DWORD Flags;
};

namespace {

// A length as the API takes it. Only a text past two billion units is cut,
// and then it orders by its first two billion.
int ApiLength(size_t length) { return static_cast<int>(std::min<size_t>(length, INT_MAX)); }

const wchar_t* ApiText(std::u16string_view text) { return reinterpret_cast<const wchar_t*>(text.data()); }

}  // namespace

Collator UserCollator(bool ignoreCase) {
  // The system reads the user's locale on every call, so two shared,
  // unchanging collators serve every thread.
  static const Collator byCase = std::make_shared<const CollatorData>(CollatorData{0});
  static const Collator ignoringCase = std::make_shared<const CollatorData>(CollatorData{NORM_IGNORECASE});
  return ignoreCase ? ignoringCase : byCase;
}

int Collate(const Collator& collator, std::u16string_view a, std::u16string_view b) {
  const int result = CompareStringW(LOCALE_USER_DEFAULT, collator->Flags, ApiText(a), ApiLength(a.size()), ApiText(b),
                                    ApiLength(b.size()));
  // CSTR_LESS_THAN, CSTR_EQUAL and CSTR_GREATER are 1, 2 and 3.
  return result - CSTR_EQUAL;
}

void AppendCollationKey(const Collator& collator, std::u16string_view text, std::string& keys) {
  const DWORD flags = LCMAP_SORTKEY | collator->Flags;
  // An empty text has an empty key; the API would refuse a zero length.
  if (text.empty()) return;
  const int length = LCMapStringW(LOCALE_USER_DEFAULT, flags, ApiText(text), ApiLength(text.size()), nullptr, 0);
  if (length <= 0) return;
  const size_t start = keys.size();
  keys.resize(start + static_cast<size_t>(length));
  LCMapStringW(LOCALE_USER_DEFAULT, flags, ApiText(text), ApiLength(text.size()),
               reinterpret_cast<wchar_t*>(keys.data() + start), length);
  // The length counts the key's terminating zero, which orders nothing.
  keys.resize(start + static_cast<size_t>(length) - 1);
}

}  // namespace Quorvex::Platform
