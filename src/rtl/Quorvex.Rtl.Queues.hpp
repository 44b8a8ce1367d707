// A first-in first-out queue object: the owned, uncounted counterpart of
// the lists, for work that is handed on in the order it arrived.
#pragma once

#include <cstdint>
#include <deque>
#include <utility>

#include "Quorvex.Rtl.Checked.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Objects.hpp"

namespace Quorvex::Rtl::Queues {

// Items leave in the order they were put in. The queue is a plain object:
// whoever makes it frees it (FreeObject), and the items still queued go
// with it (counted references among them are released). It takes no lock.
template <typename T>
class TQueue : public Objects::TObject {
  QX_CLASS(TQueue, TObject, "Quorvex.Rtl.Queues")
 public:
  // Puts `value` at the tail.
  void Enqueue(T value) { FItems.push_back(std::move(value)); }

  // Takes the head off and returns it; raises EInvalidOperation "Queue is
  // empty" when there is none, leaving the queue as it was.
  T Dequeue() {
    if (FItems.empty()) throw Exceptions::EInvalidOperation(u"Queue is empty");
    T head = std::move(FItems.front());
    FItems.pop_front();
    return head;
  }

  // Moves the head into `value` and answers true, or answers false and
  // leaves `value` alone when the queue is empty.
  bool TryDequeue(T& value) {
    if (FItems.empty()) return false;
    value = Dequeue();
    return true;
  }

  // The number of items waiting; raises ERangeError past 2^31 - 1.
  int32_t Count() const { return Checked::Narrow<int32_t>(FItems.size()); }

  // Drops every item.
  void Clear() { FItems.clear(); }

 private:
  std::deque<T> FItems;
};

}  // namespace Quorvex::Rtl::Queues
