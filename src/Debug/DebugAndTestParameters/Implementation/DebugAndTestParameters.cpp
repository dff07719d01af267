#include "Debug/DebugAndTestParameters/DebugAndTestParameters.h"

#include <exception>
#include <fstream>
#include <memory>
#include <sstream>

#include <DAXProductionConfig.h>
#include <boost/filesystem/operations.hpp>

#include "Common/IO/FileExceptions.h"
#include "Common/IO/RegularFile.h"
#include "Common/Logging/LoggingStream.h"
#include "Debug/DebugAndTestParameters/Implementation/DebugFile.h"
#include "Platform/ProductPaths/IProductPaths.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::DAXCommon {

using Common::Debug::isProduction;
using Common::IO::RegularFile;
using Common::Utils::errinfo_description;
using Common::Utils::GenericException;

namespace {

// More than any record needs.
const std::size_t MOST_BYTES = std::size_t{4} * 1024 * 1024;

// Null when the file cannot be opened. A folder counts as opened and then fails to be read, as it would with
// std::ifstream alone.
std::unique_ptr<std::istream> openForReading(const std::string& path) {
    DAX_LOG(INF) << "Opening config from " << path;
    boost::system::error_code ignored;
    if (boost::filesystem::is_directory(path, ignored)) {
        return std::make_unique<std::ifstream>(path);
    }
    try {
        RegularFile file(path, RegularFile::FOR_READING, RegularFile::FOLLOWED);
        return std::make_unique<std::istringstream>(file.readText(MOST_BYTES));
    } catch (const Common::IO::FileStreamIOException&) {
        DAX_LOG(WRN) << "Failed to open DebugAndTestParameters from " << path;
        return nullptr;
    }
}

bool read(std::istream& file, const std::string& path, DebugAndTestParameters& parameters) {
    try {
        readDebugFile(file, parameters);
        return true;
    } catch (const std::exception& exception) {
        DAX_LOG(WRN) << "Failed to load DebugAndTestParameters from " << path << ": " << exception.what();
        return false;
    }
}

} // namespace

DebugAndTestParameters DebugAndTestParameters::instance;
bool DebugAndTestParameters::isLoaded = false;

void DebugAndTestParameters::loadDebugAndTestParameters() {
    if (isLoaded) {
        DAX_LOG(WRN) << "DebugAndTestParameters were already loaded.";
        return;
    }
    if (isProduction()) {
        DAX_LOG(INF) << "We are in production mode. Will not load DebugAndTestParameters.";
        return;
    }
    DAX_LOG(DBG) << "Loading DebugAndTestParameters.";
    // The result does not matter: a device without the file keeps all defaults.
    instance.load();
    isLoaded = true;
}

DebugAndTestParameters& DebugAndTestParameters::getDebugAndTestParameters() {
    if (isProduction() || isLoaded) {
        return instance;
    }
    DAX_THROW(GenericException(), errinfo_description("DebugAndTestParameters were not loaded."));
}

bool DebugAndTestParameters::loaded() {
    return isLoaded;
}

bool DebugAndTestParameters::reload() {
    if (!isLoaded) {
        DAX_LOG(ERR) << "DebugAndTestParameters not yet loaded - use loadDebugAndTestParameters() first";
        DAX_THROW(GenericException(), errinfo_description("load DebugAndTestParameters before reload"));
    }
    const std::string path = getConfigFilePath();
    const std::unique_ptr<std::istream> file = openForReading(path);
    if (!file) {
        return false;
    }
    isLoaded = false;
    isLoaded = read(*file, path, instance);
    return isLoaded;
}

bool DebugAndTestParameters::load() {
    const std::string path = getConfigFilePath();
    const std::unique_ptr<std::istream> file = openForReading(path);
    return file && read(*file, path, *this);
}

bool DebugAndTestParameters::save() const {
    const std::string path = getConfigFilePath();
    try {
        std::ofstream file(path);
        writeDebugFile(file, *this);
        return true;
    } catch (const std::exception& exception) {
        DAX_LOG(WRN) << "Failed to save DebugAndTestParameters to " << path << ": " << exception.what();
        return false;
    }
}

std::string DebugAndTestParameters::getConfigFilePath() {
    return (Platform::IProductPaths::getDAXPartitionPath() / "DebugAndTestParameters.xml").string();
}

} // namespace DAX::DAXCommon

namespace DAX::Common {

DAXCommon::DebugAndTestParameters& getDebugAndTestParameters() {
    return DAXCommon::DebugAndTestParameters::getDebugAndTestParameters();
}

} // namespace DAX::Common
