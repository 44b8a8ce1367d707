#include "Quorvex.System.Events.hpp"

#include "Quorvex.Rtl.Units.hpp"

namespace Quorvex::System::Events {

// The unit keeps no state; it is registered so that it takes part in the
// library's start-up and shut-down like every other unit.
QX_UNIT(EventsUnit, u"Quorvex.System.Events", nullptr, nullptr);

}  // namespace Quorvex::System::Events
