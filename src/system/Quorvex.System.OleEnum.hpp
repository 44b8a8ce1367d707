// The unit of enumerators over COM collections. It declares nothing of its
// own here; its registration is exported so that units built on it can
// name it as a dependency.
#pragma once

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Units.hpp"

namespace Quorvex::System::OleEnum {

extern QXRTL_API Rtl::Units::TUnit OleEnumUnit;

}  // namespace Quorvex::System::OleEnum
