#pragma once

#include <memory>
#include <mutex>

#include <boost/core/noncopyable.hpp>
#include <boost/date_time/posix_time/ptime.hpp>
#include <boost/optional.hpp>

#include "Utility/Utils/GenericException.h"

namespace DAX::Service::ServiceManager {

// Remembers over restarts when the device last searched for an upgrade, in a file with one timestamp in local time. Any
// thread may call.
class SearchingDateRegister : private boost::noncopyable {
public:
    class FailToOpenExistingFileException : public Common::Utils::GenericException {};

    static std::shared_ptr<SearchingDateRegister> getInstance();

    // Writes the current date in one step: whatever happens, the file has its earlier content or the new date, never a
    // part of it. Throws FailToOpenExistingFileException when the new file cannot be opened, for example when the old
    // one is read-only. Any later failure is only logged. The old date then stays, with one exception: when only the
    // folder cannot be synchronized, the new date is in place, but a power cut may undo it.
    void registerCurrentDate();

    // The date, or empty, with a log line, when the file does not exist, is a symbolic link or no regular file, may not
    // be read and written, holds no date, or holds one before 2015, which was written before the clock was set. No
    // state of the file makes it throw.
    boost::optional<boost::posix_time::ptime> getDate();

private:
    SearchingDateRegister() = default;

    static std::shared_ptr<SearchingDateRegister> m_Instance; // guarded by m_singletonMutex
    static std::mutex m_singletonMutex;
    static std::mutex m_rwMutex; // guards the file
};

} // namespace DAX::Service::ServiceManager
