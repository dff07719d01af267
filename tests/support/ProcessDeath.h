#pragma once

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/FakeKovan.h"

// Tests of what ends a process, or must not be done in the process of the other tests.

// The statement fails an assertion whose expression has this very text: EXPECT_ASSERTION(watchdog.arm(), "!m_armed").
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

// The same for one that has none.
#define EXPECT_ASSERTION_WITHOUT_MSG(STATEMENT, EXPRESSION)                                                            \
    EXPECT_EXIT(                                                                                                       \
        {                                                                                                              \
            ::FakeKovan::echoLogToStderr(true);                                                                        \
            STATEMENT;                                                                                                 \
        },                                                                                                             \
        ::testing::KilledBySignal(SIGABRT),                                                                            \
        ::testing::AllOf(::testing::HasSubstr(std::string(">ASSERTION FAILED: ") + (EXPRESSION) + ", "),               \
                         ::testing::Not(::testing::HasSubstr("\nMESSAGE: "))))

// Runs the statement, with its own expectations, in a child process: for what leaves a mark on the process it runs in.
// The child ends without static destructors: the objects of the test around it are still there.
#define EXPECT_IN_CHILD(STATEMENT)                                                                                     \
    EXPECT_EXIT(                                                                                                       \
        {                                                                                                              \
            STATEMENT;                                                                                                 \
            std::fflush(nullptr);                                                                                      \
            std::_Exit(::testing::Test::HasFailure() ? 1 : 0);                                                         \
        },                                                                                                             \
        ::testing::ExitedWithCode(0), "")
