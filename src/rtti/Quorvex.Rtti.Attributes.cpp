#include "Quorvex.Rtti.Attributes.hpp"

namespace Quorvex::Rtti::Attributes {

TValue FactoryAttribute::New(UnicodeStringView, TObject*) { Rtl::Exceptions::RaiseAbstractError(); }

UnicodeString FactoryAttribute::GetName(const TValue&) { return UnicodeString(); }

TValue ItemFactoryAttribute::New(UnicodeStringView, const TValue&) { Rtl::Exceptions::RaiseAbstractError(); }

UnicodeString ItemFactoryAttribute::GetName(const TValue&) { return UnicodeString(); }

}  // namespace Quorvex::Rtti::Attributes
