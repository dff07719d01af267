#pragma once

#include <memory>
#include <mutex>

#include <boost/core/noncopyable.hpp>
#include <boost/date_time/posix_time/ptime.hpp>
#include <boost/optional.hpp>

#include "Utility/Utils/GenericException.h"

namespace DAX::Service::ServiceManager {

// Remembers over restarts when the device last searched for an upgrade, in a file of one timestamp in local time. Any
// thread may call.
class SearchingDateRegister : private boost::noncopyable {
public:
    class FailToOpenExistingFileException : public Common::Utils::GenericException {};

    static std::shared_ptr<SearchingDateRegister> getInstance();

    // Writes the date of now, in one step: the file has the old date or the new one, whatever happens. Throws
    // FailToOpenExistingFileException when it cannot be opened for writing. A later failure is logged, and the old date
    // stays. When only the folder cannot be synchronized, the new date is in place already, but a power cut may take it
    // back.
    void registerCurrentDate();

    // Empty when there is no date, when it cannot be read, and when it was written before the clock was set. Never
    // throws for the file's sake.
    boost::optional<boost::posix_time::ptime> getDate();

private:
    SearchingDateRegister() = default;

    static std::shared_ptr<SearchingDateRegister> m_Instance; // guarded by m_singletonMutex
    static std::mutex m_singletonMutex;
    static std::mutex m_rwMutex; // guards the file
};

} // namespace DAX::Service::ServiceManager
