#include "Quorvex.System.Singleton.hpp"

#include "Quorvex.Rtl.Units.hpp"

namespace Quorvex::System::Singleton {

// The unit keeps no state; it is registered so that it takes part in the
// library's start-up and shut-down like every other unit.
QX_UNIT(SingletonUnit, u"Quorvex.System.Singleton", nullptr, nullptr);

}  // namespace Quorvex::System::Singleton
