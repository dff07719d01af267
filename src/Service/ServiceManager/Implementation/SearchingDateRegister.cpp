#include "Service/ServiceManager/Implementation/SearchingDateRegister.h"

#include <ctime>
#include <fstream>
#include <string>

#include <boost/date_time/posix_time/conversion.hpp>
#include <boost/date_time/posix_time/time_formatters.hpp>
#include <boost/date_time/time_parsing.hpp>
#include <boost/filesystem/operations.hpp>

#include "Common/Logging/LoggingStream.h"
#include "Platform/Product/IProductPaths.h"
#include "Platform/SystemAPI/TimerUtilsSystemAPI/ITimeUtil.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX {
namespace Service {
namespace ServiceManager {

using boost::filesystem::path;
using boost::posix_time::ptime;
using Common::Utils::errinfo_path;
using Platform::IProductPaths;

namespace {

// Whatever is older was written while the clock was not yet set.
const int FIRST_YEAR_SHOWN = 2015;

void createFolderOf(const path& file) {
    const path folder = file.parent_path();
    if (!folder.empty() && !boost::filesystem::exists(folder)) {
        boost::filesystem::create_directories(folder);
    }
}

bool isReadable(const path& file) {
    if (!boost::filesystem::exists(file)) {
        DAX_LOG(ERR) << "There is no file :" << file.string();
        return false;
    }
    if (boost::filesystem::is_symlink(boost::filesystem::symlink_status(file))) {
        DAX_LOG(ERR) << "Reading from symbolic link file is security violation : " << file.string();
        return false;
    }
    return true;
}

boost::optional<ptime> readDate(std::istream& stream, const path& file) {
    try {
        std::string token;
        stream >> token;
        const ptime date = boost::date_time::parse_iso_time<ptime>(token, 'T');
        DAX_LOG(INF) << "Date: " << token << " got from file: " << file.string();
        return date;
    } catch (const std::exception& exception) {
        DAX_LOG(ERR) << "SearchingDateRegister::getDate File with date data is probably corrupted. Exception occurred: "
                     << exception.what();
        return boost::none;
    }
}

} // namespace

std::shared_ptr<SearchingDateRegister> SearchingDateRegister::m_Instance;
std::mutex SearchingDateRegister::m_singletonMutex;
std::mutex SearchingDateRegister::m_rwMutex;

std::shared_ptr<SearchingDateRegister> SearchingDateRegister::getInstance() {
    const std::lock_guard<std::mutex> lock(m_singletonMutex);
    if (!m_Instance) {
        m_Instance.reset(new SearchingDateRegister());
    }
    return m_Instance;
}

void SearchingDateRegister::registerCurrentDate() {
    const std::lock_guard<std::mutex> lock(m_rwMutex);
    const auto now = static_cast<std::time_t>(Platform::ITimeUtil::getCurrentLocalTime());
    const std::string date = to_iso_string(boost::posix_time::from_time_t(now));
    const path file = IProductPaths::getLastSearchingDateFilePath();
    createFolderOf(file);
    std::ofstream stream(file.string(), std::ios::out | std::ios::trunc);
    if (!stream.is_open()) {
        const std::string failure = "Unable to open date register file: " + file.string();
        DAX_LOG(ERR) << failure;
        DAX_THROW(FailToOpenExistingFileException(), failure << errinfo_path(file));
    }
    stream << date;
    stream.close();
    DAX_LOG(INF) << "Date: " << date << " will be saved in file: " << file.string();
}

boost::optional<ptime> SearchingDateRegister::getDate() {
    const std::lock_guard<std::mutex> lock(m_rwMutex);
    const path file = IProductPaths::getLastSearchingDateFilePath();
    if (!isReadable(file)) {
        return boost::none;
    }
    std::fstream stream(file.string(), std::ios::in | std::ios::out);
    if (!stream.is_open()) {
        DAX_LOG(ERR) << "SearchingDateRegister::getDate cannot open the file: " << file.string();
        return boost::none;
    }
    const boost::optional<ptime> date = readDate(stream, file);
    if (date && date->date().year() < FIRST_YEAR_SHOWN) {
        DAX_LOG(WRN) << "Last searching date is too early and it should not be displayed.";
        return boost::none;
    }
    return date;
}

} // namespace ServiceManager
} // namespace Service
} // namespace DAX
