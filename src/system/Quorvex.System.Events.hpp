// Multicast events: a list of handlers called in order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace Quorvex::System::Events {

// Identifies one added handler, for removing it later (closures cannot be
// compared, so a handler is removed by the token Add returned).
using TEventToken = uint64_t;

// Handlers taking Args, called in the order they were added. Handlers may
// add or remove handlers while the event runs: each Invoke walks the list
// as it stood when the call began, so changes apply from the next Invoke.
// Not locked: one thread changes and invokes an event at a time.
template <typename... Args>
class Event {
 public:
  using THandler = std::function<void(Args...)>;

  // Appends `handler` and returns its token.
  TEventToken Add(THandler handler) {
    const TEventToken token = ++FLastToken;
    auto changed = Copy();
    changed->push_back({token, std::move(handler)});
    FHandlers = std::move(changed);
    return token;
  }

  // Removes the handler added under `token`; false when there is none.
  bool Remove(TEventToken token) {
    auto changed = Copy();
    const auto erased = std::erase_if(*changed, [token](const TEntry& entry) { return entry.Token == token; });
    if (erased == 0) return false;
    FHandlers = std::move(changed);
    return true;
  }

  void Clear() { FHandlers.reset(); }
  size_t Count() const { return FHandlers ? FHandlers->size() : 0; }
  bool IsEmpty() const { return Count() == 0; }

  // Calls every handler with `args`; an exception from a handler stops the
  // walk and passes on to the caller.
  void Invoke(Args... args) const {
    // The snapshot keeps the list alive even if a handler replaces it.
    const std::shared_ptr<const TList> snapshot = FHandlers;
    if (!snapshot) return;
    for (const TEntry& entry : *snapshot) entry.Handler(args...);
  }
  void operator()(Args... args) const { Invoke(args...); }

 private:
  struct TEntry {
    TEventToken Token;
    THandler Handler;
  };
  using TList = std::vector<TEntry>;

  // The list is copied on change rather than on every Invoke: events are
  // raised far more often than their handlers change.
  std::shared_ptr<TList> Copy() const {
    return FHandlers ? std::make_shared<TList>(*FHandlers) : std::make_shared<TList>();
  }

  std::shared_ptr<const TList> FHandlers;
  TEventToken FLastToken = 0;
};

}  // namespace Quorvex::System::Events
