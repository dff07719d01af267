#pragma once

#include <string>

#include <boost/thread/thread.hpp>

namespace DAX::Common::Debug {

// Names threads, so that a log line tells which thread wrote it.
class ThreadDebug {
public:
    // Once, at the start of main and before other threads exist; a second call is an assertion failure.
    static void registerMainThreadId(boost::thread::id id);

    // Names the current thread. The main thread keeps its name. Characters outside letters, digits and "_" become "_".
    static void SetThreadName(const char* name);

    // Names another thread; a name of 16 characters or more is refused by the system and logged.
    static void SetThreadName(boost::thread& thread, const char* name);

    // The current thread's name.
    static std::string GetThreadName();

    static std::string sanitizeThreadName(const char* name);

private:
    static boost::thread::id m_mainThreadId;
};

} // namespace DAX::Common::Debug
