// TTimeCounter: elapsed wall time in milliseconds that can be suspended
// and resumed, summing only the running periods. A zero-filled counter is
// suspended with nothing elapsed, so it needs no constructor.
#pragma once

#include <cstdint>

#include "Quorvex.Rtl.Export.hpp"

namespace Quorvex::DateTime::Counter {

struct QXRTL_API TTimeCounter {
  // Milliseconds summed over the completed running periods.
  uint64_t FElapsed;
  // The tick count at which the current running period began; 0 while
  // suspended.
  uint64_t FStartTicks;

  // True while the counter is not running.
  bool GetSuspended() const;

  // The completed periods plus the current one. Raises EIntOverflow when
  // the 32-bit tick count has wrapped since the period began (unless the
  // completed periods absorb the difference).
  uint64_t GetElapsed() const;

  // Replaces the completed periods by `Value`; a running counter starts its
  // current period anew.
  void SetElapsed(uint64_t Value);

  // Adds the current period, if running, and stops. Raises EIntOverflow as
  // GetElapsed does.
  void Suspend();

  // Starts a new running period now, discarding the current one of a
  // counter that was already running.
  void Resume();

  // Clears the completed periods; a running counter starts its current
  // period anew, a suspended one stays suspended.
  void Reset();
};

}  // namespace Quorvex::DateTime::Counter
