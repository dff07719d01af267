#pragma once

#include <memory>

#include <boost/optional.hpp>

namespace DAX::Platform {

class IFactorySettingsAPIImpl;

// The switches of the device's factory menu that govern updates, as they are at each call. A switch that the device
// does not tell has its default. Debug parameters, by the names given here, override two of them; an operation that
// looks at the debug parameters throws GenericException before they are loaded. Any thread may call.
class IFactorySettings {
public:
    // What each number selects lies with those who ask; the second is what the debug parameters want for the test
    // server.
    enum OTNServerType : int { OTN_SERVER_0 = 0, OTN_SERVER_1 = 1, OTN_SERVER_2 = 2 };

    // Whether updates over the network are on, for a television at home and for one of a business; on by default.
    // "IFactorySettings::overrideOTNEnabled" overrides both.
    static bool isRetailTvOtnEnabled();
    static bool isB2BTvOtnEnabled();

    // The letter of the update zone, "A" to "Z" without "T"; nothing when the device is in none, the default.
    static boost::optional<char> getOTNZone();

    // Off by default. "IFactorySettings::overrideDAXFailTestActive" overrides it.
    static bool isDAXFailTestActive();

    // Which server network updates come from: 0, the default, 1, or 2. 1 exactly with the debug parameter
    // useOTNTestServer.
    static int getOTNServerType();

    // Off by default.
    static bool useShortOTATransactionTimeout();

    // Whether the device can take updates over the air; false when it does not tell.
    static bool isOTAEnabled();

    // Puts the factory values back. GenericException, with the device's result as errinfo_errorcode, when it fails.
    static void factoryReset();

    // Does nothing.
    static void prepareOsUpgrade();

    // Off by default.
    static bool isFastBootInProductionMode();

    // The numbers of the device's model and of its local set. Failures as those of factoryReset().
    static int getModelEnum();
    static int getLocalsetEnum();
};

namespace FactorySystemAPI::Details {

// Puts another implementation in place of the device's own; null brings that back.
void setImplementationSingleton(std::unique_ptr<IFactorySettingsAPIImpl> implementation);

} // namespace FactorySystemAPI::Details

} // namespace DAX::Platform
