#include "Quorvex.Rtl.Units.hpp"

#include <algorithm>
#include <vector>

namespace Quorvex::Rtl::Units {

namespace {

// The registered units and the order in which their work was done.
struct TUnitTable {
  std::vector<TUnit*> Registered;
  std::vector<TUnit*> InitOrder;
};

// Finalises every unit when the module unloads.
struct TUnloader {
  ~TUnloader() { FinalizeAll(); }
};

TUnitTable& Table() {
  // Never destroyed: a unit reached from some late static destructor after
  // the unload may still register and initialise safely.
  static TUnitTable* const table = new TUnitTable();
  // Built on the first registration, so it is destroyed after the statics
  // that came later and finalisation runs while they still exist.
  static TUnloader unloader;
  return *table;
}

}  // namespace

TUnitLoader::TUnitLoader(TUnit& unit) {
  Table().Registered.push_back(&unit);
  // A unit that a dependant already loaded is not entered a second time.
  if (!unit.Initialized()) unit.Initialize();
}

void TUnit::Initialize() {
  if (FCounter-- != 0) return;
  for (int i = 0; i < FDependencyCount; ++i)
    if (!FDependencies[i]->Initialized()) FDependencies[i]->Initialize();
  if (FInitialization) FInitialization();
  Table().InitOrder.push_back(this);
}

void TUnit::Finalize() {
  if (++FCounter != 0) return;
  auto& order = Table().InitOrder;
  order.erase(std::remove(order.begin(), order.end(), this), order.end());
  if (FFinalization) FFinalization();
}

void InitializeAll() {
  for (TUnit* unit : Table().Registered)
    if (!unit->Initialized()) unit->Initialize();
}

void FinalizeAll() {
  auto& order = Table().InitOrder;
  while (!order.empty()) {
    TUnit* last = order.back();
    // A unit initialised several times is finalised as many times.
    while (last->Initialized()) last->Finalize();
  }
}

}  // namespace Quorvex::Rtl::Units
