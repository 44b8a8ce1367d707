// Helpers shared by the test files.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

// Expects `statement` to raise `ExceptionType` with exactly `message`.
#define EXPECT_RAISES(ExceptionType, statement, message)               \
  do {                                                                 \
    try {                                                              \
      statement;                                                       \
      ADD_FAILURE() << "expected " #ExceptionType " from " #statement; \
    } catch (const ExceptionType& raised) {                            \
      EXPECT_EQ(raised.Message(), ::std::u16string_view(message));     \
    }                                                                  \
  } while (0)

#if !defined(_WIN32)
// Sets (nullopt: removes) an environment variable until the scope ends.
struct TScopedEnv {
  using TValue = std::optional<std::string>;
  TScopedEnv(const char* name, const TValue& value) : Name(name), Saved(Get(name)) { Set(value); }
  ~TScopedEnv() { Set(Saved); }
  static TValue Get(const char* name) { return std::getenv(name) ? TValue(std::getenv(name)) : std::nullopt; }
  void Set(const TValue& value) { value ? setenv(Name.c_str(), value->c_str(), 1) : unsetenv(Name.c_str()); }
  std::string Name;
  TValue Saved;
};
#endif

// German collation for one scope: on Linux through LC_ALL; on Windows the
// user's default locale, English or German on test machines, orders the
// tests' texts alike.
struct TGermanCollation {
#if !defined(_WIN32)
  TScopedEnv All{"LC_ALL", "de_DE.UTF-8"};
#endif
};
