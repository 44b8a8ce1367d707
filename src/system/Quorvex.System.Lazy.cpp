#include "Quorvex.System.Lazy.hpp"

#include "Quorvex.Rtl.Units.hpp"

namespace Quorvex::System::Lazy {

// The unit keeps no state; it is registered so that it takes part in the
// library's start-up and shut-down like every other unit.
QX_UNIT(LazyUnit, u"Quorvex.System.Lazy", nullptr, nullptr);

}  // namespace Quorvex::System::Lazy
