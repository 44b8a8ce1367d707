// POSIX only: the user's collation through ICU, for the locale named by the
// environment the way the C library picks LC_COLLATE.
#include <unicode/ucol.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>

#include "Quorvex.Platform.Collation.hpp"

namespace Quorvex::Platform {

struct CollatorData {
  explicit CollatorData(UCollator* handle) : Handle(handle) {}
  ~CollatorData() { ucol_close(Handle); }
  CollatorData(const CollatorData&) = delete;
  CollatorData& operator=(const CollatorData&) = delete;

  UCollator* Handle;
};

namespace {

// The locale that decides collation: the first of LC_ALL, LC_COLLATE and
// LANG that is set and not empty, "" when none is.
std::string_view CollationLocaleVariable() {
  for (const char* name : {"LC_ALL", "LC_COLLATE", "LANG"}) {
    const char* value = std::getenv(name);
    if (value != nullptr && *value != '\0') return value;
  }
  return {};
}

// The ICU locale for a POSIX locale name: "de_DE.UTF-8@euro" is "de_DE";
// "C" and "POSIX" (with any code set) have no language and get the root
// order, "".
std::string IcuLocale(std::string_view posixName) {
  const std::string_view language = posixName.substr(0, posixName.find_first_of(".@"));
  if (language == "C" || language == "POSIX") return {};
  return std::string(language);
}

// A collator for `locale`. ICU answers an unknown locale with the root order
// and carries its data with it, so opening fails only when memory runs out.
Collator OpenCollator(const std::string& locale, bool ignoreCase) {
  UErrorCode status = U_ZERO_ERROR;
  UCollator* handle = ucol_open(locale.c_str(), &status);
  if (U_FAILURE(status)) throw std::bad_alloc();
  auto collator = std::make_shared<const CollatorData>(handle);
  // Secondary strength still tells accents apart but not case; tertiary
  // tells both.
  ucol_setStrength(handle, ignoreCase ? UCOL_SECONDARY : UCOL_TERTIARY);
  return collator;
}

// A length as ICU takes it. Only a text past two billion units is cut,
// and then it orders by its first two billion.
int32_t IcuLength(size_t length) {
  return static_cast<int32_t>(std::min<size_t>(length, std::numeric_limits<int32_t>::max()));
}

// The collators of one thread for the locale they were made for, one per
// case rule, each made on first use. A UCollator is not shared between
// threads, so no lock is needed.
struct ThreadCollators {
  std::string Locale;
  Collator ByCase[2];
};

}  // namespace

Collator UserCollator(bool ignoreCase) {
  thread_local ThreadCollators cache;
  const std::string_view locale = CollationLocaleVariable();
  if (locale != cache.Locale) cache = {std::string(locale), {}};
  Collator& collator = cache.ByCase[ignoreCase ? 1 : 0];
  if (!collator) collator = OpenCollator(IcuLocale(locale), ignoreCase);
  return collator;
}

int Collate(const Collator& collator, std::u16string_view a, std::u16string_view b) {
  // UChar is char16_t, so the texts go to ICU as they are.
  return ucol_strcoll(collator->Handle, a.data(), IcuLength(a.size()), b.data(), IcuLength(b.size()));
}

void AppendCollationKey(const Collator& collator, std::u16string_view text, std::string& keys) {
  const size_t start = keys.size();
  // Most keys of short lines fit a first guess; a longer one is asked again.
  int32_t room = IcuLength(text.size() * 4 + 16);
  for (;;) {
    keys.resize(start + static_cast<size_t>(room));
    auto* out = reinterpret_cast<uint8_t*>(keys.data() + start);
    const int32_t length = ucol_getSortKey(collator->Handle, text.data(), IcuLength(text.size()), out, room);
    if (length <= room) {
      // The length counts the key's terminating zero, which orders nothing.
      keys.resize(start + static_cast<size_t>(std::max(length - 1, 0)));
      return;
    }
    room = length;
  }
}

}  // namespace Quorvex::Platform
