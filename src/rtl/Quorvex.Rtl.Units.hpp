// Start-up and shut-down of the library's units. Each unit that keeps state
// declares one TUnit with an initialisation and a finalisation routine and
// the units it needs. Units initialise when the module loads, dependencies
// first, and finalise in reverse order when it unloads.
//
// Every unit keeps a nesting counter: Initialize decrements it and does the
// work only on the first entry; Finalize increments it and undoes the work
// only when the counter returns to zero, so initialising twice is harmless.
#pragma once

#include <initializer_list>

#include "Quorvex.Rtl.Export.hpp"

namespace Quorvex::Rtl::Units {

class QXRTL_API TUnit {
 public:
  using TRoutine = void (*)();

  // `dependencies` are initialised before this unit. Units are built at
  // compile time (see QX_UNIT), so a unit is valid before any other
  // static initialisation runs and may be named as a dependency from
  // anywhere in the library.
  constexpr TUnit(const char16_t* name, TRoutine initialization, TRoutine finalization,
                  std::initializer_list<TUnit*> dependencies = {})
      : FName(name), FInitialization(initialization), FFinalization(finalization) {
    for (TUnit* dependency : dependencies)
      if (FDependencyCount < kMaxDependencies) FDependencies[FDependencyCount++] = dependency;
  }
  TUnit(const TUnit&) = delete;
  TUnit& operator=(const TUnit&) = delete;

  const char16_t* Name() const { return FName; }
  // True between the first Initialize and the matching last Finalize.
  bool Initialized() const { return FCounter < 0; }

  // Initialises the dependencies, then this unit (work on first entry only).
  void Initialize();
  // Undoes this unit's work when the counter returns to zero.
  void Finalize();

 private:
  static constexpr int kMaxDependencies = 8;
  const char16_t* FName;
  TRoutine FInitialization;
  TRoutine FFinalization;
  TUnit* FDependencies[kMaxDependencies] = {};
  int FDependencyCount = 0;
  int FCounter = 0;
};

// Registers a unit and initialises it while the module loads.
class QXRTL_API TUnitLoader {
 public:
  explicit TUnitLoader(TUnit& unit);
};

// Declares a unit at namespace scope and loads it with the module:
//   QX_UNIT(StringsUnit, u"Quorvex.Utils.Strings", &Init, &Fin, &OtherUnit);
// Name the variable in a header (extern TUnit StringsUnit;) when another
// unit depends on it.
#define QX_UNIT(Variable, Name, Initialization, Finalization, ...)                                    \
  constinit ::Quorvex::Rtl::Units::TUnit Variable(Name, Initialization, Finalization, {__VA_ARGS__}); \
  static const ::Quorvex::Rtl::Units::TUnitLoader Variable##Loader(Variable)

// Initialises every registered unit that is not yet (dependencies first).
QXRTL_API void InitializeAll();

// Finalises the units in the reverse order of their initialisation. Runs
// by itself when the process or module unloads; calling it earlier is
// allowed, and a later InitializeAll starts them again.
QXRTL_API void FinalizeAll();

}  // namespace Quorvex::Rtl::Units
