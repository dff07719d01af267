#pragma once

#include <boost/core/noncopyable.hpp>
#include <boost/optional.hpp>

namespace DAX::Platform {

// The implementation behind IFactorySettings. Any thread may call.
class IFactorySettingsAPIImpl : private boost::noncopyable {
public:
    virtual ~IFactorySettingsAPIImpl() = default;

    // Each does what the operation of IFactorySettings with its name is documented to do.
    virtual bool isRetailTvOtnEnabled() = 0;
    virtual bool isB2BTvOtnEnabled() = 0;
    virtual boost::optional<char> getOTNZone() = 0;
    virtual bool isDAXFailTestActive() = 0;
    virtual int getOTNServerType() = 0;
    virtual bool useShortOTATransactionTimeout() = 0;
    virtual bool isOTAEnabled() = 0;
    virtual void factoryReset() = 0;
    virtual void prepareOsUpgrade() = 0;
    virtual bool isFastBootInProductionMode() = 0;
    virtual int getModelEnum() = 0;
    virtual int getLocalsetEnum() = 0;
};

} // namespace DAX::Platform
