#pragma once

#include <memory>

#include <boost/optional.hpp>

namespace DAX::Platform {

class IFactorySettingsAPIImpl;

// The switches of the device's factory menu that govern updates. Nothing is cached. A switch that the device does not
// tell has its default. An operation whose comment names no failure has none. Any thread may call.
//
// "Before the debug parameters are loaded" means before DebugAndTestParameters::loadDebugAndTestParameters has run in
// this process, or after a reload() of a file that it could open but not read. On production software this never holds:
// the defaults are always there.
class IFactorySettings {
public:
    // Which server each number selects is up to the programs that ask.
    enum OTNServerType : int { OTN_SERVER_0 = 0, OTN_SERVER_1 = 1, OTN_SERVER_2 = 2 };

    // Whether updates over the network are on, for a television at home or for one of a business. True by default. The
    // debug parameter "IFactorySettings::overrideOTNEnabled" overrides both. Each throws GenericException before the
    // debug parameters are loaded.
    static bool isRetailTvOtnEnabled();
    static bool isB2BTvOtnEnabled();

    // The letter of the update zone, 'A' to 'Z' without 'T'. Empty when the device is in no zone, which is the default,
    // or in one that has no letter.
    static boost::optional<char> getOTNZone();

    // False by default. The debug parameter "IFactorySettings::overrideDAXFailTestActive" overrides it. Throws
    // GenericException before the debug parameters are loaded.
    static bool isDAXFailTestActive();

    // Which server updates over the network come from, an OTNServerType; OTN_SERVER_0 by default. It is OTN_SERVER_1
    // if, and only if, the debug parameter useOTNTestServer is set. Throws GenericException before the debug parameters
    // are loaded.
    static int getOTNServerType();

    // False by default.
    static bool useShortOTATransactionTimeout();

    // Whether the device can take updates over the air. False when it cannot tell.
    static bool isOTAEnabled();

    // Restores the factory values. Throws GenericException, with the device's result as errinfo_errorcode, when the
    // device fails.
    static void factoryReset();

    // Does nothing.
    static void prepareOsUpgrade();

    // False by default.
    static bool isFastBootInProductionMode();

    // The device's numbers for its model and for its local set. Failures as for factoryReset().
    static int getModelEnum();
    static int getLocalsetEnum();
};

namespace FactorySystemAPI::Details {

// Puts another implementation in place of the device's own; null brings that back. Any thread may call; calls that are
// under way end on the earlier implementation.
void setImplementationSingleton(std::unique_ptr<IFactorySettingsAPIImpl> implementation);

} // namespace FactorySystemAPI::Details

} // namespace DAX::Platform
