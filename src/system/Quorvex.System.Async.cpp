#include "Quorvex.System.Async.hpp"

#include "Quorvex.Rtl.Units.hpp"

namespace Quorvex::System::Async {

// The unit declares interfaces only; it is registered so that it takes part
// in the library's start-up and shut-down like every other unit.
QX_UNIT(AsyncUnit, u"Quorvex.System.Async", nullptr, nullptr);

}  // namespace Quorvex::System::Async
