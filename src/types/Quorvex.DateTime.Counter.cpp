#include "Quorvex.DateTime.Counter.hpp"

#include "Quorvex.Platform.Module.hpp"
#include "Quorvex.Rtl.Checked.hpp"

namespace Quorvex::DateTime::Counter {

namespace {

uint64_t Now() { return Platform::TickCount32(); }

// Completed periods plus the one begun at `startTicks`, added before the
// start is taken away: a wrapped tick count then overflows instead of
// giving a huge value, unless `elapsed` covers the difference.
uint64_t WithCurrentPeriod(uint64_t elapsed, uint64_t startTicks) {
  return Rtl::Checked::Sub(Rtl::Checked::Add(elapsed, Now()), startTicks);
}

}  // namespace

bool TTimeCounter::GetSuspended() const { return FStartTicks == 0; }

uint64_t TTimeCounter::GetElapsed() const {
  return GetSuspended() ? FElapsed : WithCurrentPeriod(FElapsed, FStartTicks);
}

void TTimeCounter::SetElapsed(uint64_t Value) {
  FElapsed = Value;
  if (!GetSuspended()) Resume();
}

void TTimeCounter::Suspend() {
  if (!GetSuspended()) FElapsed = WithCurrentPeriod(FElapsed, FStartTicks);
  FStartTicks = 0;
}

// A tick count of exactly 0 leaves the counter suspended; with a
// millisecond clock that is a one-in-four-billion chance, accepted.
void TTimeCounter::Resume() { FStartTicks = Now(); }

void TTimeCounter::Reset() { SetElapsed(0); }

}  // namespace Quorvex::DateTime::Counter
