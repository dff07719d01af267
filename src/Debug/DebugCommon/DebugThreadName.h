#pragma once

#include <string>

#include <boost/thread/thread_only.hpp>

namespace DAX::Common::Debug {

// Names threads, so that a log line tells which thread wrote it. Any thread may call, after registerMainThreadId().
class ThreadDebug {
public:
    // Call it once, at the start of main and before other threads exist; a second call is an assertion failure.
    static void registerMainThreadId(boost::thread::id id);

    // Names the current thread. Characters other than letters, digits and "_" become "_", and the system cuts the name
    // to 15 characters. The main thread keeps its name, with a log line; so does a thread when the system refuses.
    static void SetThreadName(const char* name);

    // Names another thread in the same way, but the system refuses a name of 16 characters or more, which is logged.
    static void SetThreadName(boost::thread& thread, const char* name);

    // The current thread's name; empty, with a log line, when the system fails.
    static std::string GetThreadName();

    // The name with "_" for every character that is no letter, digit or "_"; not cut.
    static std::string sanitizeThreadName(const char* name);

private:
    static boost::thread::id m_mainThreadId;
};

} // namespace DAX::Common::Debug
