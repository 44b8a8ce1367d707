// Reference-counted sequences and lists. IList<T> is what registries and
// applications hold; TList<T> is the list behind it. Every TList<T> also
// answers the untyped collection and list interfaces, through which code
// that knows no element type (a document reader) enumerates, clears and
// fills any list as TValues.
#pragma once

#include <cstddef>
#include <iterator>
#include <vector>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Objects.hpp"
#include "Quorvex.Rtl.TypInfo.hpp"

namespace Quorvex::Rtl::Collections {

using Objects::IInterface;
using Objects::IntfPtr;
using TypInfo::PTypeInfo;
using TypInfo::TValue;

// Walks a sequence once: MoveNext() before the first element and before
// each further one; Current() is the element moved to.
template <typename T>
class IEnumerator : public virtual IInterface {
 public:
  virtual bool MoveNext() = 0;
  virtual T Current() const = 0;
};

// A sequence that can be walked any number of times.
template <typename T>
class IEnumerable : public virtual IInterface {
 public:
  virtual IntfPtr<IEnumerator<T>> GetEnumerator() = 0;
};

// An ordered, indexable, growable sequence. Indexes are 0-based; an index
// outside the list raises EListError "List index out of bounds (%d)".
template <typename T>
class IList : public virtual IEnumerable<T> {
 public:
  virtual int Count() const = 0;
  virtual T Item(int index) const = 0;
  virtual void SetItem(int index, const T& value) = 0;
  // Appends `value` and returns its index.
  virtual int Add(const T& value) = 0;
  // Puts `value` at `index` (0..Count()), moving the later ones up.
  virtual void Insert(int index, const T& value) = 0;
  virtual void Delete(int index) = 0;
  virtual void Clear() = 0;
  // The first index holding `value`, or -1.
  virtual int IndexOf(const T& value) const = 0;

  // Range-for over the elements by index.
  class TIterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = T;

    TIterator(const IList* list, int index) : FList(list), FIndex(index) {}
    T operator*() const { return FList->Item(FIndex); }
    TIterator& operator++() {
      ++FIndex;
      return *this;
    }
    TIterator operator++(int) { return TIterator(FList, FIndex++); }
    friend bool operator==(const TIterator&, const TIterator&) = default;

   private:
    const IList* FList;
    int FIndex;
  };
  TIterator begin() const { return TIterator(this, 0); }
  TIterator end() const { return TIterator(this, Count()); }
};

// Any collection, its element type unknown to the caller.
class IUntypedCollection : public virtual IInterface {
 public:
  static constexpr Objects::TGUID IID = Objects::TGUID::Parse("{AC8A0302-C530-46A0-83FC-D88302ECCE3D}");

  // The type of the elements.
  virtual PTypeInfo ElementType() const = 0;
  virtual int Count() const = 0;
  // The elements from the first, each with the element type.
  virtual IntfPtr<IEnumerator<TValue>> GetValues() = 0;
  virtual void Clear() = 0;
  // Appends `value` converted to the element type; raises EInvalidCast or
  // ERangeError when it cannot be.
  virtual void AddValue(const TValue& value) = 0;
};

// Any list, its element type unknown to the caller.
class IUntypedList : public virtual IUntypedCollection {
 public:
  static constexpr Objects::TGUID IID = Objects::TGUID::Parse("{43FF6143-3B87-4298-B48C-2ABB9353BF68}");

  // The element at `index` with the element type.
  virtual TValue ItemValue(int index) const = 0;
};

// The list behind IList<T>: elements in a vector, counted like any
// interfaced object. Create it with CreateObject<TList<T>>().
template <typename T>
class TList : public Objects::TInterfacedObject, public IList<T>, public IUntypedList {
  QX_CLASS(TList, TInterfacedObject, "Quorvex.Rtl.Collections")
  QX_INTERFACES(IUntypedList, IUntypedCollection)

 public:
  int Count() const override { return static_cast<int>(FItems.size()); }
  T Item(int index) const override { return FItems[Checked(index, Count() - 1)]; }
  void SetItem(int index, const T& value) override { FItems[Checked(index, Count() - 1)] = value; }
  int Add(const T& value) override {
    FItems.push_back(value);
    return Count() - 1;
  }
  void Insert(int index, const T& value) override {
    FItems.insert(FItems.begin() + static_cast<std::ptrdiff_t>(Checked(index, Count())), value);
  }
  void Delete(int index) override { FItems.erase(FItems.begin() + static_cast<std::ptrdiff_t>(Checked(index, Count() - 1))); }
  void Clear() override { FItems.clear(); }
  int IndexOf(const T& value) const override {
    for (size_t i = 0; i < FItems.size(); ++i)
      if (FItems[i] == value) return static_cast<int>(i);
    return -1;
  }
  IntfPtr<IEnumerator<T>> GetEnumerator() override {
    return Objects::CreateObject<TEnumerator<T>>(this, [](const T& item) { return item; });
  }

  PTypeInfo ElementType() const override { return TypInfo::TypeInfo<T>(); }
  IntfPtr<IEnumerator<TValue>> GetValues() override {
    return Objects::CreateObject<TEnumerator<TValue>>(this, [](const T& item) { return TValue::From<T>(item); });
  }
  void AddValue(const TValue& value) override { Add(value.AsType<T>()); }
  TValue ItemValue(int index) const override { return TValue::From<T>(Item(index)); }

 private:
  // Walks the list, holding a reference to it.
  template <typename E>
  class TEnumerator : public Objects::TInterfacedObject, public IEnumerator<E> {
   public:
    using TMap = E (*)(const T&);
    TEnumerator(TList* list, TMap map) : FList(static_cast<IList<T>*>(list)), FMap(map) {}
    bool MoveNext() override { return ++FIndex < FList->Count(); }
    E Current() const override { return FMap(FList->Item(FIndex)); }

   private:
    IntfPtr<IList<T>> FList;
    TMap FMap;
    int FIndex = -1;
  };

  static size_t Checked(int index, int high) {
    if (index < 0 || index > high) Exceptions::RaiseListIndexError(index);
    return static_cast<size_t>(index);
  }

  std::vector<T> FItems;
};

// A new, empty list.
template <typename T>
IntfPtr<IList<T>> NewList() {
  return Objects::CreateObject<TList<T>>();
}

}  // namespace Quorvex::Rtl::Collections
