#include <gtest/gtest.h>

#include <string>

#include "Quorvex.Rtl.Units.hpp"

namespace Quorvex::Rtl::Units {
namespace {

// What the test units did, in order: "+A" for A's initialisation, "-A" for
// its finalisation.
std::string& Journal() {
  static std::string journal;
  return journal;
}

void InitA() { Journal() += "+A"; }
void FinA() { Journal() += "-A"; }
void InitB() { Journal() += "+B"; }
void FinB() { Journal() += "-B"; }

extern TUnit UnitA;
// B is declared first but needs A, so loading B must load A before it.
QX_UNIT(UnitB, u"Tests.B", &InitB, &FinB, &UnitA);
QX_UNIT(UnitA, u"Tests.A", &InitA, &FinA);
// The journal as loading left it, before any test changed it (the tests
// may run repeatedly and in any order).
const std::string kJournalAtLoad = Journal();

TEST(RtlUnitsTest, LoadedDependenciesFirstExactlyOnce) {
  // Both were loaded with the test binary; whichever static ran first, A
  // came before B and neither ran twice.
  EXPECT_EQ(kJournalAtLoad.substr(0, 4), "+A+B");
  EXPECT_TRUE(UnitA.Initialized());
  EXPECT_TRUE(UnitB.Initialized());
  EXPECT_EQ(std::u16string(UnitB.Name()), u"Tests.B");
}

TEST(RtlUnitsTest, NestingCounterUndoesOnlyAtTheOutermostFinalize) {
  Journal().clear();
  UnitB.Initialize();  // second entry: no work
  EXPECT_EQ(Journal(), "");
  UnitB.Finalize();  // back to one level: still initialised
  EXPECT_EQ(Journal(), "");
  EXPECT_TRUE(UnitB.Initialized());
  UnitB.Finalize();
  EXPECT_EQ(Journal(), "-B");
  EXPECT_FALSE(UnitB.Initialized());
  UnitB.Finalize();  // one more finalisation than initialisations does nothing
  EXPECT_EQ(Journal(), "-B");
  UnitB.Initialize();  // back to the start: works again (A is still up)
  EXPECT_EQ(Journal(), "-B");
  EXPECT_FALSE(UnitB.Initialized());
  UnitB.Initialize();
  EXPECT_EQ(Journal(), "-B+B");
}

TEST(RtlUnitsTest, InitializeAllRestoresFinalizedUnits) {
  UnitA.Finalize();
  UnitB.Finalize();
  Journal().clear();
  InitializeAll();
  // B's registration may come first; A must still run before it.
  EXPECT_EQ(Journal(), "+A+B");
  EXPECT_TRUE(UnitA.Initialized() && UnitB.Initialized());
}

}  // namespace
}  // namespace Quorvex::Rtl::Units
