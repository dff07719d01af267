#pragma once

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/FakeKovan.h"

// For tests of what ends a process, or what must not be done in the process of the other tests.

// Expects that the statement fails an assertion whose expression has exactly this text:
// EXPECT_ASSERTION(watchdog.arm(), "!m_armed").
#define EXPECT_ASSERTION(STATEMENT, EXPRESSION)                                                                        \
    EXPECT_EXIT(                                                                                                       \
        {                                                                                                              \
            ::FakeKovan::echoLogToStderr(true);                                                                        \
            STATEMENT;                                                                                                 \
        },                                                                                                             \
        ::testing::KilledBySignal(SIGABRT),                                                                            \
        ::testing::HasSubstr(std::string(">ASSERTION FAILED: ") + (EXPRESSION) + ", "))

// The same for an assertion with a message.
#define EXPECT_ASSERTION_MSG(STATEMENT, EXPRESSION, MESSAGE)                                                           \
    EXPECT_EXIT(                                                                                                       \
        {                                                                                                              \
            ::FakeKovan::echoLogToStderr(true);                                                                        \
            STATEMENT;                                                                                                 \
        },                                                                                                             \
        ::testing::KilledBySignal(SIGABRT),                                                                            \
        ::testing::AllOf(::testing::HasSubstr(std::string(">ASSERTION FAILED: ") + (EXPRESSION) + ", "),               \
                         ::testing::HasSubstr(std::string("\nMESSAGE: ") + (MESSAGE) + "\n")))

// The same for an assertion that has no message.
#define EXPECT_ASSERTION_WITHOUT_MSG(STATEMENT, EXPRESSION)                                                            \
    EXPECT_EXIT(                                                                                                       \
        {                                                                                                              \
            ::FakeKovan::echoLogToStderr(true);                                                                        \
            STATEMENT;                                                                                                 \
        },                                                                                                             \
        ::testing::KilledBySignal(SIGABRT),                                                                            \
        ::testing::AllOf(::testing::HasSubstr(std::string(">ASSERTION FAILED: ") + (EXPRESSION) + ", "),               \
                         ::testing::Not(::testing::HasSubstr("\nMESSAGE: "))))

// Runs the statement, with its own expectations, in a child process, for what would leave a mark on the process. The
// child ends without static destructors, since the objects of the surrounding test still exist.
#define EXPECT_IN_CHILD(STATEMENT)                                                                                     \
    EXPECT_EXIT(                                                                                                       \
        {                                                                                                              \
            STATEMENT;                                                                                                 \
            std::fflush(nullptr);                                                                                      \
            std::_Exit(::testing::Test::HasFailure() ? 1 : 0);                                                         \
        },                                                                                                             \
        ::testing::ExitedWithCode(0), "")
