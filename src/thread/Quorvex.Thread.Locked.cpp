#include "Quorvex.Thread.Locked.hpp"

#include "Quorvex.Rtl.Units.hpp"

namespace Quorvex::Thread::Locked {

// The unit keeps no state; it is registered so that it takes part in the
// library's start-up and shut-down like every other unit.
QX_UNIT(LockedUnit, u"Quorvex.Thread.Locked", nullptr, nullptr);

}  // namespace Quorvex::Thread::Locked
