#include "DAXCoreSimulator/CallJournal.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/date_time/posix_time/time_formatters.hpp>
#include <boost/filesystem/path.hpp>
#include <nlohmann/json.hpp>

#include "host/AppendFile.h"
#include "host/OwnFiles.h"

namespace DAXCoreSimulator {

CallJournal::CallJournal(std::string path) : m_path(std::move(path)) {
    const std::string folder = boost::filesystem::path(m_path).parent_path().string();
    if (const int error = KovanHost::makeFolders(folder)) {
        throw std::runtime_error(folder + ": " + std::strerror(error));
    }
}

void CallJournal::record(const std::string& method, const std::string& sender,
                         const nlohmann::ordered_json& arguments) const {
    const nlohmann::ordered_json call = {
        {"time", boost::posix_time::to_iso_extended_string(boost::posix_time::microsec_clock::universal_time()) + "Z"},
        {"method", method},
        {"sender", sender},
        {"arguments", arguments}};
    if (!KovanHost::appendToLog(m_path, call.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace))) {
        throw std::runtime_error(m_path + ": " + std::strerror(errno));
    }
}

} // namespace DAXCoreSimulator
