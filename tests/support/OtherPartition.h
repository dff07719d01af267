#pragma once

#include <memory>
#include <string>
#include <utility>

#include "Platform/ProductPaths/IProductPaths.h"
#include "Platform/ProductPaths/Implementation/CProductPaths.h"

namespace DAX::Tests {

// While the object lives, the persistent and the temporary data of the product are in another directory.
class OtherPartition {
public:
    explicit OtherPartition(const std::string& directory) {
        Platform::ProductPaths::Details::setImplementationSingleton(std::make_unique<Paths>(directory));
    }
    ~OtherPartition() { Platform::ProductPaths::Details::setImplementationSingleton(nullptr); }
    OtherPartition(const OtherPartition&) = delete;
    OtherPartition& operator=(const OtherPartition&) = delete;

private:
    class Paths : public Platform::CProductPaths {
    public:
        explicit Paths(boost::filesystem::path directory) : m_directory(std::move(directory)) {}
        boost::filesystem::path m_getDAXPartitionPath() override { return m_directory; }
        boost::filesystem::path m_getDAXBigTempPath() override { return m_directory; }

    private:
        const boost::filesystem::path m_directory;
    };
};

} // namespace DAX::Tests
