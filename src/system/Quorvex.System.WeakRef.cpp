#include "Quorvex.System.WeakRef.hpp"

#include <cstdint>

#include "Quorvex.Rtl.Checked.hpp"

namespace Quorvex::System::WeakRef {

namespace Checked = Rtl::Checked;
using Rtl::Objects::TMonitorGuard;

void TWeakReferencedObject::AddWeakRef(void* p) {
  TMonitorGuard guard(*this);
  // The list is a dynamic array with a 32-bit length, grown by one per
  // registration; the vector keeps spare capacity so that many
  // registrations stay linear.
  const int32_t length = Checked::Add(Checked::Narrow<int32_t>(FWeakReferences.size()), int32_t{1});
  FWeakReferences.resize(static_cast<size_t>(length));
  FWeakReferences.back() = p;
}

void TWeakReferencedObject::RemoveWeakRef(void* p) {
  TMonitorGuard guard(*this);
  if (FWeakReferences.empty()) return;
  // Shift everything after the first match one place left, then drop the
  // last slot whether or not `p` was found. Kept exactly so on purpose:
  // a wrong removal loses the newest registration rather than raising.
  int64_t found = -1;
  for (size_t i = 0; i < FWeakReferences.size(); ++i) {
    if (found >= 0) FWeakReferences[i - 1] = FWeakReferences[i];
    if (FWeakReferences[i] == p) found = static_cast<int64_t>(i);
  }
  FWeakReferences.pop_back();
}

void TWeakReferencedObject::BeforeDestruction() {
  // No lock: once the last reference is gone nobody may still register.
  for (void* variable : FWeakReferences) *static_cast<void**>(variable) = nullptr;
  inherited::BeforeDestruction();
}

}  // namespace Quorvex::System::WeakRef
