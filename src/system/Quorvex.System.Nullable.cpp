#include "Quorvex.System.Nullable.hpp"

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Units.hpp"

namespace Quorvex::System::Nullable {

void Detail::RaiseNoValue() { throw Rtl::Exceptions::EInvalidOperation(u"Nullable value is empty"); }

// The unit keeps no state; it is registered so that it takes part in the
// library's start-up and shut-down like every other unit.
QX_UNIT(NullableUnit, u"Quorvex.System.Nullable", nullptr, nullptr);

}  // namespace Quorvex::System::Nullable
