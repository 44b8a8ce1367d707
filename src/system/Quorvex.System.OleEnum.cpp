#include "Quorvex.System.OleEnum.hpp"

namespace Quorvex::System::OleEnum {

// Nothing to set up: the unit only takes part in start-up and shut-down.
QX_UNIT(OleEnumUnit, u"Quorvex.System.OleEnum", nullptr, nullptr);

}  // namespace Quorvex::System::OleEnum
