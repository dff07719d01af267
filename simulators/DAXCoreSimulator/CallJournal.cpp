#include "DAXCoreSimulator/CallJournal.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/date_time/posix_time/time_formatters.hpp>
#include <boost/filesystem/operations.hpp>
#include <fcntl.h>
#include <unistd.h>

namespace DAXCoreSimulator {

CallJournal::CallJournal(std::string path) : m_path(std::move(path)) {
    boost::filesystem::create_directories(boost::filesystem::path(m_path).parent_path());
}

void CallJournal::record(const std::string& method, const std::string& sender,
                         const nlohmann::ordered_json& arguments) const {
    const nlohmann::ordered_json call = {
        {"time", boost::posix_time::to_iso_extended_string(boost::posix_time::microsec_clock::universal_time()) + "Z"},
        {"method", method},
        {"sender", sender},
        {"arguments", arguments}};
    const std::string line = call.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
    const int file = open(m_path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    const bool written = file >= 0 && write(file, line.data(), line.size()) == static_cast<ssize_t>(line.size());
    const int error = errno;
    if (file >= 0) {
        close(file);
    }
    if (!written) {
        throw std::runtime_error(m_path + ": " + std::strerror(error));
    }
}

} // namespace DAXCoreSimulator
