#include "Quorvex.System.Actions.hpp"

#include "Quorvex.Rtl.Units.hpp"

namespace Quorvex::System::Actions {

// The unit keeps no state; it is registered so that it takes part in the
// library's start-up and shut-down like every other unit.
QX_UNIT(ActionsUnit, u"Quorvex.System.Actions", nullptr, nullptr);

}  // namespace Quorvex::System::Actions
