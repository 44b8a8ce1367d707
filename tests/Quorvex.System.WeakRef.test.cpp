#include <gtest/gtest.h>

#include <array>
#include <string>
#include <thread>
#include <vector>

#include "Quorvex.System.WeakRef.hpp"

namespace Quorvex::System::WeakRef {
namespace {

using Rtl::Objects::IntfPtr;

TEST(SystemWeakRefTest, RegistrationsFromManyThreadsAreNilledAtDestruction) {
  IntfPtr<IWeakReferenceableObject> strong(Rtl::Objects::CreateObject<TWeakReferencedObject>());
  std::array<void*, 200> variables;
  variables.fill(strong.Get());
  std::vector<std::thread> threads;
  for (size_t t = 0; t < 4; ++t)
    threads.emplace_back([&, t] {
      for (size_t i = t; i < variables.size(); i += 4) strong->AddWeakRef(&variables[i]);
    });
  for (auto& thread : threads) thread.join();
  // Freeing it while it is still referenced is refused before anything is nilled.
  EXPECT_THROW(Rtl::Objects::FreeObject(Rtl::Objects::ObjectOf(strong.Get())), Rtl::Exceptions::EInvalidPointer);
  EXPECT_EQ(variables.front(), strong.Get());
  strong.Reset();
  for (void* variable : variables) EXPECT_EQ(variable, nullptr);
}

TEST(SystemWeakRefTest, RemoveDropsTheFirstMatchOrElseTheLastRegistration) {
  // Variables a, b, c and d are named by letter; the result lists the ones
  // nilled at destruction.
  const struct {
    std::string added, removed, nilled;
  } cases[] = {
      {"", "a", ""}, {"abc", "b", "ac"}, {"aa", "a", "a"}, {"abc", "d", "ab"}, {"ab", "ba", ""},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.added + "-" + test.removed);
    std::array<void*, 4> variables;
    variables.fill(&variables);
    {
      IntfPtr<IWeakReferenceableObject> strong(Rtl::Objects::CreateObject<TWeakReferencedObject>());
      for (char name : test.added) strong->AddWeakRef(&variables[name - 'a']);
      for (char name : test.removed) strong->RemoveWeakRef(&variables[name - 'a']);
    }
    std::string nilled;
    for (char name = 'a'; name <= 'd'; ++name)
      if (variables[name - 'a'] == nullptr) nilled += name;
    EXPECT_EQ(nilled, test.nilled);
  }
}

}  // namespace
}  // namespace Quorvex::System::WeakRef
