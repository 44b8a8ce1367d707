// One shared instance of a type.
#pragma once

namespace Quorvex::System::Singleton {

// The process-wide instance of T, made by T() on first use (concurrent
// first calls wait for the one construction) and destroyed at exit. If the
// constructor raises, the exception passes on and the next call tries
// again.
template <typename T>
struct Singleton {
  Singleton() = delete;

  static T& Instance() {
    static T instance;
    return instance;
  }
};

}  // namespace Quorvex::System::Singleton
