// Ordering text the way the user's locale orders it, for sorting and
// searching string lists. Like the rest of the platform layer, nothing here
// raises except std::bad_alloc when memory runs out.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace Quorvex::Platform {

// One platform's collation rules for a locale and a strength.
struct CollatorData;
// Shared, so that an operation holding one keeps it valid when its thread
// meets another locale meanwhile.
using Collator = std::shared_ptr<const CollatorData>;

// The calling thread's collator for the user's locale; with `ignoreCase`
// letters that differ only in case are equal (accents still count). On
// Windows the user's default locale; elsewhere the locale named by LC_ALL,
// LC_COLLATE or LANG, the first one set, and the root order when none is
// set or it names "C" or "POSIX". Made once per thread and locale, and a
// change of those variables is seen by the next call (Windows reads the
// user's locale on every comparison, so there one serves all threads).
Collator UserCollator(bool ignoreCase);

// Orders `a` and `b` under `collator`: <0, 0 or >0.
int Collate(const Collator& collator, std::u16string_view a, std::u16string_view b);

// Appends the sort key of `text` to `keys`: keys of two texts compare as
// unsigned bytes (std::string_view order) the way Collate orders the texts.
void AppendCollationKey(const Collator& collator, std::u16string_view text, std::string& keys);

}  // namespace Quorvex::Platform
