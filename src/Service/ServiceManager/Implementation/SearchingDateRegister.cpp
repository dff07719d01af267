#include "Service/ServiceManager/Implementation/SearchingDateRegister.h"

#include <cstdint>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

#include <boost/date_time/posix_time/time_formatters.hpp>
#include <boost/date_time/time_parsing.hpp>
#include <boost/exception/diagnostic_information.hpp>
#include <boost/exception/get_error_info.hpp>
#include <boost/filesystem/operations.hpp>

#include "Common/IO/FileExceptions.h"
#include "Common/IO/FileReplacement.h"
#include "Common/IO/RegularFile.h"
#include "Common/Logging/LoggingStream.h"
#include "Platform/ProductPaths/IProductPaths.h"
#include "Platform/SystemAPI/TimerUtilsSystemAPI/ITimeUtil.h"
#include "Platform/SystemAPI/TimerUtilsSystemAPI/TimeConversions.h"
#include "Utility/Utils/ThrowLogged.h"

namespace DAX::Service::ServiceManager {

using boost::filesystem::path;
using boost::posix_time::ptime;
using Common::IO::FileReplacement;
using Common::IO::FileSinkIOException;
using Common::IO::FileStreamIOException;
using Common::IO::RegularFile;
using Common::Utils::errinfo_description;
using Common::Utils::errinfo_path;
using Common::Utils::throwLogged;
using Platform::IProductPaths;

namespace {

// Earlier dates were written before the clock was set.
const int FIRST_YEAR_SHOWN = 2015;

// No date needs more.
const std::size_t MOST_BYTES = std::size_t{64} * 1024;

// A failure shows when the file is opened.
void createFolderOf(const path& file) {
    boost::system::error_code ignored;
    boost::filesystem::create_directories(file.parent_path(), ignored);
}

std::unique_ptr<FileReplacement> openForWriting(const path& file) {
    try {
        return std::make_unique<FileReplacement>(file);
    } catch (const FileSinkIOException&) {
        throwLogged(SearchingDateRegister::FailToOpenExistingFileException() << errinfo_path(file),
                    "Unable to open date register file: " + file.string(), BOOST_CURRENT_LOCATION);
    }
}

bool isReadable(const path& file) {
    boost::system::error_code ignored; // a file that cannot be looked at cannot be opened either
    if (boost::filesystem::status(file, ignored).type() == boost::filesystem::file_not_found) {
        DAX_LOG(ERR) << "There is no file :" << file.string();
        return false;
    }
    if (boost::filesystem::is_symlink(boost::filesystem::symlink_status(file, ignored))) {
        DAX_LOG(ERR) << "Reading from symbolic link file is security violation : " << file.string();
        return false;
    }
    return true;
}

// Null when it cannot be opened. It is opened for writing as well: this register did not write a file that it may not
// write.
std::unique_ptr<RegularFile> openForReading(const path& file) {
    try {
        return std::make_unique<RegularFile>(file, RegularFile::FOR_READING_AND_WRITING);
    } catch (const FileStreamIOException&) {
        DAX_LOG(ERR) << "SearchingDateRegister::getDate cannot open the file: " << file.string();
        return nullptr;
    }
}

// Throws std::exception for a text that is not a date. The parser takes more than dates: the names of special values,
// and years that do not exist, which show only when the year is asked for.
ptime dateOf(const std::string& token) {
    const ptime date = boost::date_time::parse_iso_time<ptime>(token, 'T');
    if (date.is_special()) {
        throw std::out_of_range("Not a point in time");
    }
    static_cast<void>(date.date().year_month_day()); // throws for a year that does not exist
    return date;
}

boost::optional<ptime> noDate(const std::string& reason) {
    DAX_LOG(ERR) << "SearchingDateRegister::getDate File with date data is probably corrupted. Exception occurred: "
                 << reason;
    return boost::none;
}

boost::optional<ptime> readDate(RegularFile& opened, const path& file) {
    try {
        std::istringstream text(opened.readText(MOST_BYTES));
        std::string token;
        text >> token;
        const ptime date = dateOf(token);
        DAX_LOG(INF) << "Date: " << token << " got from file: " << file.string();
        return date;
    } catch (const FileStreamIOException& exception) {
        const std::string* const description = boost::get_error_info<errinfo_description>(exception);
        return noDate(description != nullptr ? *description : exception.what());
    } catch (const std::exception& exception) {
        return noDate(exception.what());
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
    const std::uint64_t now = Platform::ITimeUtil::getCurrentLocalTime();
    const path file = IProductPaths::getLastSearchingDateFilePath();
    createFolderOf(file);
    const std::unique_ptr<FileReplacement> replacement = openForWriting(file);
    std::string date = std::to_string(now);
    try {
        date = to_iso_string(Platform::TimeConversions::uint64_t_to_ptime(now));
        replacement->write(date);
        replacement->commit();
        DAX_LOG(INF) << "Date: " << date << " will be saved in file: " << file.string();
    } catch (const std::exception&) {
        DAX_LOG(ERR) << "Date: " << date << " could not be saved in file: " << file.string()
                     << ". Exception occurred: " << boost::current_exception_diagnostic_information(true);
    }
}

boost::optional<ptime> SearchingDateRegister::getDate() {
    const std::lock_guard<std::mutex> lock(m_rwMutex);
    const path file = IProductPaths::getLastSearchingDateFilePath();
    if (!isReadable(file)) {
        return boost::none;
    }
    const std::unique_ptr<RegularFile> opened = openForReading(file);
    if (!opened) {
        return boost::none;
    }
    boost::optional<ptime> date = readDate(*opened, file);
    if (date && date->date().year() < FIRST_YEAR_SHOWN) {
        DAX_LOG(WRN) << "Last searching date is too early and it should not be displayed.";
        return boost::none;
    }
    return date;
}

} // namespace DAX::Service::ServiceManager
