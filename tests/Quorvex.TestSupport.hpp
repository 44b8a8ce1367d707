// Helpers shared by the test files.
#pragma once

#include <gtest/gtest.h>

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
