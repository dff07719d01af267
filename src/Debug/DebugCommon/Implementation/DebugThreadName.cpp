#include "Debug/DebugCommon/DebugThreadName.h"

#include <boost/xpressive/xpressive_static.hpp>
#include <pthread.h>
#include <sys/prctl.h>

#include "Common/Logging/LoggingStream.h"
#include "Utility/Utils/DAXAssert.h"

namespace DAX::Common::Debug {
namespace {

void logChangedName(boost::thread::id id, const std::string& name) {
    DAX_LOG(INF) << "Changed name of thread " << id << " to " << name << ".";
}

void logMainThreadName(const char* name) {
    DAX_LOG(WRN) << "Main thread name: " << name << ".";
}

} // namespace

boost::thread::id ThreadDebug::m_mainThreadId;

void ThreadDebug::registerMainThreadId(boost::thread::id id) {
    BOOST_ASSERT(m_mainThreadId == boost::thread::id());
    DAX_LOG(INF) << "Registering main thread id " << id << " named " << GetThreadName() << ".";
    m_mainThreadId = id;
}

void ThreadDebug::SetThreadName(const char* name) {
    const boost::thread::id id = boost::this_thread::get_id();
    if (id == m_mainThreadId) {
        logMainThreadName(name);
        return;
    }
    const std::string sanitized = sanitizeThreadName(name);
    if (prctl(PR_SET_NAME, sanitized.c_str()) != 0) {
        DAX_LOG(ERR) << "prctl Failed to give the name to thread: " << sanitized;
        return;
    }
    logChangedName(id, sanitized);
}

void ThreadDebug::SetThreadName(boost::thread& thread, const char* name) {
    if (thread.get_id() == m_mainThreadId) {
        logMainThreadName(name);
        return;
    }
    const std::string sanitized = sanitizeThreadName(name);
    if (pthread_setname_np(thread.native_handle(), sanitized.c_str()) != 0) {
        DAX_LOG(ERR) << "pthread_setname_np Failed to give the name to thread: " << sanitized;
        return;
    }
    logChangedName(thread.get_id(), sanitized);
}

std::string ThreadDebug::GetThreadName() {
    char name[16] = "";
    if (prctl(PR_GET_NAME, name) != 0) {
        DAX_LOG(ERR) << "prctl Failed to get the name of current thread";
    }
    return name;
}

std::string ThreadDebug::sanitizeThreadName(const char* name) {
    using namespace boost::xpressive;
    static const sregex unusable = ~set[range('a', 'z') | range('A', 'Z') | range('0', '9') | '_'];
    return regex_replace(std::string(name), unusable, std::string("_"));
}

} // namespace DAX::Common::Debug
