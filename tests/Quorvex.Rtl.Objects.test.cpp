#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Objects.hpp"
#include "Quorvex.TestSupport.hpp"

namespace Quorvex::Rtl::Objects {
namespace {

using Strings::UnicodeString;

class IGreeter : public virtual IInterface {
 public:
  static constexpr TGUID IID = TGUID::Parse("{1407E475-A5E9-436B-A59B-CDCDA5027376}");
  virtual UnicodeString Greet() = 0;
};

class ICounter : public virtual IInterface {
 public:
  static constexpr TGUID IID = TGUID::Parse("{6A1B2C3D-0000-4000-8000-00000000ABCD}");
  virtual int Next() = 0;
};

class IUnused : public virtual IInterface {
 public:
  static constexpr TGUID IID = TGUID::Parse("{00000001-0002-0003-0405-060708090A0B}");
};

// Counts its own destructions so tests see exactly when it is freed.
class TGreeter : public TInterfacedObject, public IGreeter {
  QX_CLASS(TGreeter, TInterfacedObject, "Quorvex.Tests")
  QX_INTERFACES(IGreeter)
 public:
  explicit TGreeter(int* destroyed = nullptr) : FDestroyed(destroyed) {}
  ~TGreeter() override {
    if (FDestroyed) ++*FDestroyed;
  }
  UnicodeString Greet() override { return u"hello"; }

 private:
  int* FDestroyed;
};

class TCountingGreeter : public TGreeter, public ICounter {
  QX_CLASS(TCountingGreeter, TGreeter, "Quorvex.Tests.Sub")
  QX_INTERFACES(ICounter)
 public:
  using TGreeter::TGreeter;
  int Next() override { return ++FCount; }

 private:
  int FCount = 0;
};

class TAbstractThing : public TObject {
  QX_CLASS(TAbstractThing, TObject, "Quorvex.Tests")
 public:
  virtual void Run() = 0;
};

TEST(RtlObjectsTest, GuidsAndClassInformation) {
  constexpr TGUID guid = TGUID::Parse("{1407e475-A5E9-436B-A59B-CDCDA5027376}");
  EXPECT_EQ(guid.D1, 0x1407E475u);
  EXPECT_EQ(guid.D4[7], 0x76);
  EXPECT_EQ(guid.ToString(), u"{1407E475-A5E9-436B-A59B-CDCDA5027376}");
  EXPECT_THROW(TGUID::Parse("{1407E475-A5E9-436B-A59B-CDCDA502737}"), Exceptions::EConvertError);
  EXPECT_THROW(TGUID::Parse("{1407E475-A5E9-436B-A59B-CDCDA502737G}"), Exceptions::EConvertError);

  TCountingGreeter obj;
  EXPECT_EQ(obj.ClassName(), u"TCountingGreeter");
  EXPECT_EQ(obj.UnitName(), u"Quorvex.Tests.Sub");
  EXPECT_EQ(obj.QualifiedClassName(), u"Quorvex.Tests.Sub.TCountingGreeter");
  EXPECT_EQ(obj.ClassParent(), TGreeter::StaticClass());
  EXPECT_TRUE(obj.InheritsFrom(TInterfacedObject::StaticClass()));
  EXPECT_FALSE(TGreeter::StaticClass()->InheritsFrom(TCountingGreeter::StaticClass()));
  EXPECT_FALSE(TGreeter::StaticClass()->InheritsFrom(nullptr));
  // Another module's record of a class is the same class; the unit name counts.
  const TClassInfo twin(u"TGreeter", u"Quorvex.Tests", TInterfacedObject::StaticClass(), nullptr);
  const TClassInfo stranger(u"TGreeter", u"Quorvex.Elsewhere", TInterfacedObject::StaticClass(), nullptr);
  EXPECT_TRUE(obj.InheritsFrom(&twin));
  EXPECT_FALSE(obj.InheritsFrom(&stranger));
  EXPECT_EQ(TObject::StaticClass()->ClassParent(), nullptr);
  EXPECT_EQ(obj.ToString(), u"TCountingGreeter");

  TObject* made = TGreeter::StaticClass()->Create();
  EXPECT_EQ(made->ClassType(), TGreeter::StaticClass());
  EXPECT_EQ(ObjectCast<TGreeter>(made), made);
  EXPECT_EQ(ObjectCast<TGreeter>(nullptr), nullptr);
  EXPECT_RAISES(Exceptions::EInvalidCast, ObjectCast<TCountingGreeter>(made), u"Invalid class typecast");
  delete made;
  EXPECT_FALSE(TAbstractThing::StaticClass()->CanCreate());
  EXPECT_RAISES(Exceptions::EAbstractError, TAbstractThing::StaticClass()->Create(), u"Abstract Error");
}

TEST(RtlObjectsTest, QueryInterfaceAnswersAndTheLastReferenceFrees) {
  int destroyed = 0;
  IntfPtr<IGreeter> greeter(CreateObject<TCountingGreeter>(&destroyed));
  EXPECT_EQ(greeter->Greet(), u"hello");
  void* raw = reinterpret_cast<void*>(1);
  EXPECT_EQ(greeter->QueryInterface(IUnused::IID, &raw), HResult::NoInterface);
  EXPECT_EQ(raw, nullptr);
  EXPECT_EQ(HResult::NoInterface, static_cast<int32_t>(0x80004002u));
  ASSERT_EQ(greeter->QueryInterface(ICounter::IID, &raw), HResult::Ok);
  IntfPtr<ICounter> adopted = IntfPtr<ICounter>::Adopt(static_cast<ICounter*>(raw));
  EXPECT_EQ(adopted->Next(), 1);

  IntfPtr<ICounter> counter = greeter.As<ICounter>();  // interface of the derived class
  ASSERT_TRUE(counter);
  EXPECT_EQ(counter->Next(), 2);
  EXPECT_TRUE(greeter.As<IGreeter>());  // interface of the parent class
  EXPECT_TRUE(greeter.As<IInterface>());
  EXPECT_FALSE(greeter.As<IUnused>());

  IntfPtr<IUnused> none;
  EXPECT_FALSE(Supports(greeter, none));
  IntfPtr<IInterface> base = greeter;  // an upcast shares the count
  greeter.Reset();
  adopted.Reset();
  counter.Reset();
  EXPECT_EQ(destroyed, 0);
  base.Reset();
  EXPECT_EQ(destroyed, 1);
}

TEST(RtlObjectsTest, SupportsOnObjectsLeavesLifetimeAlone) {
  int destroyed = 0;
  auto* obj = CreateObject<TGreeter>(&destroyed);
  EXPECT_TRUE(Supports<IGreeter>(obj));
  EXPECT_FALSE(Supports<ICounter>(obj));
  EXPECT_EQ(obj->RefCount(), 0);
  EXPECT_EQ(destroyed, 0);
  IntfPtr<IGreeter> held;
  EXPECT_TRUE(Supports(obj, held));  // now the reference owns the object
  EXPECT_EQ(ObjectOf(held.Get()), obj);
  held.Reset();
  EXPECT_EQ(destroyed, 1);
}

TEST(RtlObjectsTest, CountIsAtomicAcrossThreads) {
  int destroyed = 0;
  IntfPtr<IGreeter> shared(CreateObject<TGreeter>(&destroyed));
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([shared] {
      for (int i = 0; i < 10000; ++i) IntfPtr<IGreeter> copy = shared;
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(static_cast<TGreeter*>(shared.Get())->RefCount(), 1);
  shared.Reset();
  EXPECT_EQ(destroyed, 1);
}

TEST(RtlObjectsTest, MonitorIsReentrantExclusiveAndLeftOnRaise) {
  TObject obj;
  int counter = 0;  // guarded by obj's monitor only
  auto work = [&obj, &counter] {
    for (int i = 0; i < 2000; ++i) {
      TMonitorGuard outer(obj), inner(obj);  // the same thread enters again
      ++counter;
    }
  };
  std::thread other(work);
  work();
  other.join();
  EXPECT_EQ(counter, 4000);
  EXPECT_THROW((TMonitorGuard(obj), throw std::runtime_error("raised")), std::runtime_error);
  std::thread([&obj] { TMonitorGuard free(obj); }).join();  // would hang if still held
}

// Logs the steps of its teardown.
class TLogged : public TGreeter {
  QX_CLASS(TLogged, TGreeter, "Quorvex.Tests")
 public:
  explicit TLogged(std::string& log) : FLog(log) {}
  ~TLogged() override { FLog += "destroyed;"; }
  void BeforeDestruction() override {
    FLog += "before;";
    inherited::BeforeDestruction();
  }

 private:
  std::string& FLog;
};

TEST(RtlObjectsTest, BeforeDestructionPrecedesTheDestructors) {
  std::string log;
  auto* logged = CreateObject<TLogged>(log);
  IntfPtr<IGreeter> held(logged);
  EXPECT_RAISES(Exceptions::EInvalidPointer, FreeObject(logged), u"Invalid pointer operation");
  EXPECT_EQ(log, "");  // refused while referenced before anything ran: still whole
  held.Reset();
  EXPECT_EQ(log, "before;destroyed;");
}

// Takes a reference to itself (and drops it at once) in the steps named by
// `Steps`, the way objects register with observers or use a temporary
// interface variable. Its constructor may also hand itself to `keeper`.
class TSelfReferencing : public TGreeter {
  QX_CLASS(TSelfReferencing, TGreeter, "Quorvex.Tests")
 public:
  enum TStep { kConstructor = 1, kBeforeDestruction = 2, kDestructor = 4 };

  explicit TSelfReferencing(int steps = kConstructor | kBeforeDestruction, int* destroyed = nullptr,
                            IntfPtr<IGreeter>* keeper = nullptr)
      : TGreeter(destroyed), FSteps(steps) {
    TakeReferenceIf(kConstructor);
    if (keeper) *keeper = this;
  }
  ~TSelfReferencing() override { TakeReferenceIf(kDestructor); }
  void BeforeDestruction() override {
    TakeReferenceIf(kBeforeDestruction);
    inherited::BeforeDestruction();
  }

 private:
  void TakeReferenceIf(TStep step) {
    if ((FSteps & step) == 0) return;
    IntfPtr<IGreeter> self(this);
    EXPECT_EQ(self->Greet(), u"hello");
  }

  int FSteps;
};

TEST(RtlObjectsTest, ReferencesTakenWhileMadeOrDestroyedNeverFree) {
  using enum TSelfReferencing::TStep;
  for (const int steps :
       {0, +kConstructor, +kBeforeDestruction, +kDestructor, kConstructor | kBeforeDestruction | kDestructor}) {
    SCOPED_TRACE(steps);
    int destroyed = 0;
    auto* obj = CreateObject<TSelfReferencing>(steps, &destroyed);
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(obj->RefCount(), 0);  // made, not yet referenced
    IntfPtr<IGreeter> held(obj);
    EXPECT_EQ(obj->RefCount(), 1);
    held.Reset();
    EXPECT_EQ(destroyed, 1);

    // Never referenced from outside: its owner frees it explicitly.
    obj = CreateObject<TSelfReferencing>(steps, &destroyed);
    FreeObject(obj);
    EXPECT_EQ(destroyed, 2);
  }
}

TEST(RtlObjectsTest, ConstructorMayHandItselfToAKeeper) {
  int destroyed = 0;
  IntfPtr<IGreeter> keeper;
  auto* obj = CreateObject<TSelfReferencing>(+TSelfReferencing::kConstructor, &destroyed, &keeper);
  EXPECT_EQ(obj->RefCount(), 1);  // the keeper's reference only
  EXPECT_RAISES(Exceptions::EInvalidPointer, FreeObject(obj), u"Invalid pointer operation");
  keeper.Reset();
  EXPECT_EQ(destroyed, 1);

  TObject* made = TSelfReferencing::StaticClass()->Create();  // made by class: construction ends the same way
  EXPECT_EQ(ObjectCast<TInterfacedObject>(made)->RefCount(), 0);
  FreeObject(made);
}

}  // namespace
}  // namespace Quorvex::Rtl::Objects
