// The root class with its class information and monitor lock,
// GUID-identified interfaces, the reference-counted object base and the one
// smart pointer used for interface references throughout the library.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <type_traits>
#include <utility>
#include <vector>

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Strings.hpp"

// The exceptions are objects too (Exception derives from TObject), so their
// header is included at the end of this one; until then these are enough.
namespace Quorvex::Rtl::Exceptions {
[[noreturn]] QXRTL_API void RaiseInvalidCast();
}  // namespace Quorvex::Rtl::Exceptions

namespace Quorvex::Rtl::Objects {

using Strings::UnicodeString;
using Strings::UnicodeStringView;

// A 128-bit interface identifier, written "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}".
struct QXRTL_API TGUID {
  uint32_t D1 = 0;
  uint16_t D2 = 0;
  uint16_t D3 = 0;
  uint8_t D4[8] = {};

  // Parses the braced text form at compile time; a malformed literal is a
  // compile-time error (and raises EConvertError at run time).
  static constexpr TGUID Parse(std::string_view text);

  UnicodeString ToString() const;
  friend constexpr bool operator==(const TGUID&, const TGUID&) = default;
};

namespace Detail {
[[noreturn]] QXRTL_API void RaiseBadGuid();
constexpr uint32_t HexValue(char c) {
  if (c >= '0' && c <= '9') return static_cast<uint32_t>(c - '0');
  if (c >= 'A' && c <= 'F') return static_cast<uint32_t>(c - 'A' + 10);
  if (c >= 'a' && c <= 'f') return static_cast<uint32_t>(c - 'a' + 10);
  RaiseBadGuid();
}
constexpr uint32_t HexField(std::string_view text, size_t at, size_t digits) {
  uint32_t value = 0;
  for (size_t i = 0; i < digits; ++i) value = value * 16 + HexValue(text[at + i]);
  return value;
}
}  // namespace Detail

constexpr TGUID TGUID::Parse(std::string_view text) {
  if (text.size() != 38 || text[0] != '{' || text[9] != '-' || text[14] != '-' || text[19] != '-' || text[24] != '-' ||
      text[37] != '}')
    Detail::RaiseBadGuid();
  TGUID g;
  g.D1 = Detail::HexField(text, 1, 8);
  g.D2 = static_cast<uint16_t>(Detail::HexField(text, 10, 4));
  g.D3 = static_cast<uint16_t>(Detail::HexField(text, 15, 4));
  g.D4[0] = static_cast<uint8_t>(Detail::HexField(text, 20, 2));
  g.D4[1] = static_cast<uint8_t>(Detail::HexField(text, 22, 2));
  for (size_t i = 0; i < 6; ++i) g.D4[2 + i] = static_cast<uint8_t>(Detail::HexField(text, 25 + 2 * i, 2));
  return g;
}

// Results of QueryInterface.
namespace HResult {
constexpr int32_t Ok = 0;                                           // S_OK
constexpr int32_t NoInterface = static_cast<int32_t>(0x80004002u);  // E_NOINTERFACE
}  // namespace HResult

class TObject;
class TClassInfo;

// The properties and markers a class declares, collected when its class
// information is built (see Quorvex.Rtl.TypInfo.hpp).
class TClassMembers;
}  // namespace Quorvex::Rtl::Objects

namespace Quorvex::Rtl::TypInfo {
class TRttiProperty;
class TCustomAttribute;
}  // namespace Quorvex::Rtl::TypInfo

namespace Quorvex::Rtl::Objects {

// A class reference: the class information of one class.
using TClass = const TClassInfo*;

// What the runtime knows of a class: its names, its parent, how to make
// an instance, and the properties and markers it declares. One record per
// class, built on first use and never freed.
class QXRTL_API TClassInfo {
 public:
  using TFactory = TObject* (*)();
  using TDescribe = void (*)(TClassMembers& members);
  using TProperties = std::vector<const TypInfo::TRttiProperty*>;
  using TAttributes = std::vector<TypInfo::TCustomAttribute*>;

  TClassInfo(UnicodeStringView className, UnicodeStringView unitName, TClass parent, TFactory factory,
             TDescribe describe = nullptr);
  ~TClassInfo();
  TClassInfo(const TClassInfo&) = delete;
  TClassInfo& operator=(const TClassInfo&) = delete;

  UnicodeString ClassName() const { return UnicodeString(FClassName); }
  UnicodeString UnitName() const { return UnicodeString(FUnitName); }
  // Unit name, ".", class name: "Quorvex.App.Settings.TAppSettings".
  UnicodeString QualifiedClassName() const;
  TClass ClassParent() const { return FParent; }
  // True when this class is `other` or derives from it; classes are the same
  // when their unit and class names are, whichever module made the record.
  bool InheritsFrom(TClass other) const;
  bool IsSameClass(const TClassInfo& other) const;
  // Makes a default instance; raises EAbstractError when the class has no
  // default constructor (abstract classes).
  TObject* Create() const;
  bool CanCreate() const { return FFactory != nullptr; }

  // The properties of the class: its own in declaration order, then those
  // of each ancestor up to the root.
  const TProperties& Properties() const { return FProperties; }
  // The markers declared on this class itself, in declaration order.
  const TAttributes& Attributes() const { return FAttributes; }

 private:
  UnicodeStringView FClassName;
  UnicodeStringView FUnitName;
  TClass FParent;
  TFactory FFactory;
  TProperties FProperties;
  TAttributes FAttributes;  // owned
  size_t FOwnPropertyCount = 0;  // the first ones of FProperties, owned
};
// Makes a T with `new` and then runs its AfterConstruction, which a class
// relies on to finish construction (a counted object drops the reference
// that kept it alive while its constructors ran). An exception from a
// constructor passes on and nothing is left allocated.
template <typename T, typename... Args>
T* CreateObject(Args&&... args);

namespace Detail {
// Property declarations count themselves through overloads ranked by
// inheritance: the call with the highest rank picks the last declaration.
template <int N>
struct TRank : TRank<N - 1> {};
template <>
struct TRank<0> {};
template <int N>
struct TIndex {
  static constexpr int Value = N;
};
constexpr int kMaxProperties = 128;

// Reaches the members QX_CLASS and QX_PROPERTY declare, whatever their access.
struct TMemberAccess;

// Collects the properties and markers of C into `members`.
template <typename C>
void DescribeMembers(TClassMembers& members);

template <typename T>
constexpr TClassInfo::TFactory DefaultFactory() {
  if constexpr (std::is_default_constructible_v<T> && !std::is_abstract_v<T>)
    return +[]() -> TObject* { return CreateObject<T>(); };
  else
    return nullptr;
}
}  // namespace Detail

// Gives a class its class information. Place at the top of the class body:
//   class TAppSettings : public TObject { QX_CLASS(TAppSettings, TObject, "Quorvex.App.Settings") ... };
// Properties (QX_PROPERTY) and class markers (QX_CLASS_ATTRIBUTES) may follow.
#define QX_CLASS(ThisClass, ParentClass, UnitName)                                                              \
 public:                                                                                                        \
  using inherited = ParentClass;                                                                                \
  using QxSelf = ThisClass;                                                                                     \
  static ::Quorvex::Rtl::Objects::TClass StaticClass() {                                                        \
    static const ::Quorvex::Rtl::Objects::TClassInfo info(                                                      \
        u"" #ThisClass, u"" UnitName, ParentClass::StaticClass(),                                               \
        ::Quorvex::Rtl::Objects::Detail::DefaultFactory<ThisClass>(),                                           \
        &::Quorvex::Rtl::Objects::Detail::DescribeMembers<ThisClass>);                                          \
    return &info;                                                                                               \
  }                                                                                                             \
  ::Quorvex::Rtl::Objects::TClass ClassType() const override { return StaticClass(); }                          \
                                                                                                                \
 private:                                                                                                       \
  friend struct ::Quorvex::Rtl::Objects::Detail::TMemberAccess;                                                 \
  static ::Quorvex::Rtl::Objects::Detail::TIndex<0> QxNextProperty(::Quorvex::Rtl::Objects::Detail::TRank<0>); \
  static void QxClassAttributes(::Quorvex::Rtl::Objects::Detail::TRank<0>, ::Quorvex::Rtl::Objects::TClassMembers&) {}

// The root of all classes.
class QXRTL_API TObject {
 public:
  TObject() = default;
  // A copy is a new object: it gets a monitor lock of its own when it needs one.
  TObject(const TObject&) noexcept {}
  TObject& operator=(const TObject&) noexcept { return *this; }
  virtual ~TObject();

  static TClass StaticClass();
  virtual TClass ClassType() const;

  UnicodeString ClassName() const { return ClassType()->ClassName(); }
  UnicodeString UnitName() const { return ClassType()->UnitName(); }
  UnicodeString QualifiedClassName() const { return ClassType()->QualifiedClassName(); }
  TClass ClassParent() const { return ClassType()->ClassParent(); }
  bool InheritsFrom(TClass cls) const { return ClassType()->InheritsFrom(cls); }

  // The raw pointer to interface `iid` implemented by this object, or
  // nullptr. Takes no reference; QueryInterface and Supports build on it.
  virtual void* FindInterface(const TGUID& iid);

  // The class name, unless a class has something better to say.
  virtual UnicodeString ToString() const;

  // Runs once the constructors of the whole object have, when it is made
  // through CreateObject (or its class's Create); overrides call the
  // inherited one and must not raise.
  virtual void AfterConstruction();

  // Runs just before the destructor chain when the object is freed through
  // FreeObject or its last interface reference; it may still call virtual
  // members of the whole object. Raising here leaves the object alive.
  virtual void BeforeDestruction();

 protected:
  // The first step of FreeObject, before BeforeDestruction: an object may
  // refuse to be freed here by raising, and nothing of it is touched then.
  virtual void BeginDestruction();

 private:
  friend QXRTL_API void FreeObject(TObject* obj);
  friend QXRTL_API void MonitorEnter(TObject& obj);
  friend QXRTL_API void MonitorExit(TObject& obj);

  std::recursive_mutex& Monitor();

  // Created by the first MonitorEnter, so objects that never lock pay for
  // this pointer only.
  std::atomic<std::recursive_mutex*> FMonitor{nullptr};
};

// Runs obj->BeforeDestruction(), then deletes it; nothing for nullptr. An
// exception from BeforeDestruction passes on and the object is not deleted.
QXRTL_API void FreeObject(TObject* obj);

template <typename T, typename... Args>
T* CreateObject(Args&&... args) {
  T* obj = new T(std::forward<Args>(args)...);
  obj->AfterConstruction();
  return obj;
}

// Enters the monitor lock of `obj`, waiting as long as it takes. The lock
// is re-entrant: a thread may enter it again and must leave it as often.
QXRTL_API void MonitorEnter(TObject& obj);

// Leaves the monitor lock of `obj`; the calling thread must hold it.
QXRTL_API void MonitorExit(TObject& obj);

// Holds the monitor lock of an object for the guard's scope, so the lock is
// left also when the guarded work raises.
class QXRTL_API TMonitorGuard {
 public:
  explicit TMonitorGuard(TObject& obj) : FObject(obj) { MonitorEnter(FObject); }
  ~TMonitorGuard() { MonitorExit(FObject); }
  TMonitorGuard(const TMonitorGuard&) = delete;
  TMonitorGuard& operator=(const TMonitorGuard&) = delete;

 private:
  TObject& FObject;
};

// `obj` as a T, or nullptr for nullptr; raises EInvalidCast when the object
// is of another class.
template <typename T>
T* ObjectCast(TObject* obj) {
  if (obj == nullptr) return nullptr;
  if (auto* result = dynamic_cast<T*>(obj)) return result;
  Exceptions::RaiseInvalidCast();
}

// The base of every interface. Interfaces derive from it virtually so that
// one object implementing several of them has a single reference count.
class IInterface {
 public:
  static constexpr TGUID IID = TGUID::Parse("{00000000-0000-0000-C000-000000000046}");

  // Stores a counted pointer to interface `iid` in *obj and answers
  // HResult::Ok, or stores nullptr and answers HResult::NoInterface.
  virtual int32_t QueryInterface(const TGUID& iid, void** obj) = 0;
  virtual int32_t _AddRef() = 0;
  virtual int32_t _Release() = 0;

 protected:
  ~IInterface() = default;
};

namespace Detail {
template <typename Self, typename... Interfaces>
void* FindInTable(Self* self, const TGUID& iid) {
  void* found = nullptr;
  ((found == nullptr && iid == Interfaces::IID ? (found = static_cast<Interfaces*>(self), 0) : 0), ...);
  return found;
}
}  // namespace Detail

// Lists the interfaces a class implements, on top of those of its parent:
//   QX_INTERFACES(IStrings)
#define QX_INTERFACES(...)                                                                                         \
 public:                                                                                                           \
  void* FindInterface(const ::Quorvex::Rtl::Objects::TGUID& iid) override {                                        \
    if (void* found =                                                                                              \
            ::Quorvex::Rtl::Objects::Detail::FindInTable<std::remove_pointer_t<decltype(this)>, __VA_ARGS__>(this, \
                                                                                                             iid)) \
      return found;                                                                                                \
    return inherited::FindInterface(iid);                                                                          \
  }                                                                                                                \
                                                                                                                   \
 private:

// A reference-counted object, made only by CreateObject: the first
// interface reference holds it, and it frees itself when the last goes.
// Its constructors run with a count of one, so handing `this` out as an
// interface there and dropping it again does not free a half-made object;
// the count drops to zero after construction without freeing. Once it is
// being destroyed, references taken and dropped (in BeforeDestruction or a
// destructor) never free it a second time.
class QXRTL_API TInterfacedObject : public TObject, public virtual IInterface {
  QX_CLASS(TInterfacedObject, TObject, "Quorvex.Rtl.Objects")
 public:
  int32_t QueryInterface(const TGUID& iid, void** obj) override;
  int32_t _AddRef() override;
  int32_t _Release() override;
  void* FindInterface(const TGUID& iid) override;

  // Drops the reference held during construction, leaving the count at zero.
  void AfterConstruction() override;

  // The number of interface references held now.
  int32_t RefCount() const { return FRefCount.load(std::memory_order_acquire) & ~kDestroying; }

  // Frees the memory of a destroyed object, or of one whose constructor raised.
  static void operator delete(void* memory) { ::operator delete(memory); }

 protected:
  // A plain `new` would leave the construction reference in place for
  // good, so counted objects are made through CreateObject only.
  static void* operator new(size_t size) { return ::operator new(size); }

  // Raises EInvalidPointer "Invalid pointer operation" while interface
  // references still hold the object (FreeObject on a counted object).
  void BeginDestruction() override;

 private:
  template <typename T, typename... Args>
  friend T* CreateObject(Args&&... args);

  // Set in the count while the object is being destroyed: references then
  // move the count around this mark and never bring it back to zero.
  static constexpr int32_t kDestroying = INT32_MIN;

  std::atomic<int32_t> FRefCount{1};
};

// Answers QueryInterface for `self` from its FindInterface, taking a
// reference on success. Shared by every IInterface implementation.
QXRTL_API int32_t QueryInterfaceOf(TObject* self, IInterface* asInterface, const TGUID& iid, void** obj);

// A counted reference to an interface: copying adds a reference, going
// out of scope releases it. The one smart pointer for interfaces.
template <typename T>
class IntfPtr {
 public:
  IntfPtr() = default;
  IntfPtr(std::nullptr_t) {}  // NOLINT(google-explicit-constructor)
  // Takes a new reference to `raw` (like assigning to an interface variable).
  template <typename U>
  requires std::is_convertible_v<U*, T*> IntfPtr(U* raw) : FPtr(raw) {  // NOLINT(google-explicit-constructor)
    if (FPtr) FPtr->_AddRef();
  }
  IntfPtr(const IntfPtr& other) : IntfPtr(other.FPtr) {}
  IntfPtr(IntfPtr&& other) noexcept : FPtr(std::exchange(other.FPtr, nullptr)) {}
  template <typename U>
  requires std::is_convertible_v<U*, T*> IntfPtr(const IntfPtr<U>& other)
      : IntfPtr(other.Get()) {}  // NOLINT(google-explicit-constructor)
  ~IntfPtr() { Reset(); }

  IntfPtr& operator=(IntfPtr other) noexcept {
    std::swap(FPtr, other.FPtr);
    return *this;
  }

  // Adopts a pointer that already carries a reference (QueryInterface's).
  static IntfPtr Adopt(T* counted) {
    IntfPtr result;
    result.FPtr = counted;
    return result;
  }

  void Reset() {
    if (T* old = std::exchange(FPtr, nullptr)) old->_Release();
  }

  T* Get() const { return FPtr; }
  T* operator->() const { return FPtr; }
  T& operator*() const { return *FPtr; }
  explicit operator bool() const { return FPtr != nullptr; }
  friend bool operator==(const IntfPtr& a, const IntfPtr& b) { return a.FPtr == b.FPtr; }
  friend bool operator==(const IntfPtr& a, std::nullptr_t) { return a.FPtr == nullptr; }

  // The same object through interface I, or null when it lacks it.
  template <typename I>
  IntfPtr<I> As() const {
    void* found = nullptr;
    if (FPtr && FPtr->QueryInterface(I::IID, &found) == HResult::Ok) return IntfPtr<I>::Adopt(static_cast<I*>(found));
    return nullptr;
  }

 private:
  T* FPtr = nullptr;
};

// True when `intf` offers interface I; stores a counted reference in `out`.
template <typename I, typename T>
bool Supports(const IntfPtr<T>& intf, IntfPtr<I>& out) {
  out = intf.template As<I>();
  return static_cast<bool>(out);
}

// True when `obj` implements interface I; stores a counted reference in
// `out`. Beware: for a fresh object with a count of zero, `out` is then
// its only owner.
template <typename I>
bool Supports(TObject* obj, IntfPtr<I>& out) {
  out = obj ? IntfPtr<I>(static_cast<I*>(obj->FindInterface(I::IID))) : nullptr;
  return static_cast<bool>(out);
}

// True when `obj` implements interface I; takes no reference, so the
// object's lifetime is not touched.
template <typename I>
bool Supports(TObject* obj) {
  return obj != nullptr && obj->FindInterface(I::IID) != nullptr;
}

// The object behind an interface reference (nullptr when the interface is
// not implemented by a TObject).
QXRTL_API TObject* ObjectOf(IInterface* intf);

}  // namespace Quorvex::Rtl::Objects

#include "Quorvex.Rtl.Exceptions.hpp"  // IWYU pragma: export
