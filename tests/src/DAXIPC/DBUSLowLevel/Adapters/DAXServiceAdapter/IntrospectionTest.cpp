#include "src/DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/AdapterOverMocks.h"

namespace DAX::Tests {
namespace {

using namespace testing;

class Introspection : public AdapterOverMocks {
protected:
    std::string document() {
        std::stringstream out;
        adapter->introspect(out);
        return out.str();
    }

    static std::string method(const std::string& name) {
        return "    <method name=\"" + name +
               "\">\n"
               "      <arg type=\"ay\" name=\"serialized_params_in\" direction=\"in\"/>\n"
               "      <arg type=\"ay\" name=\"type_out\" direction=\"out\"/>\n"
               "      <arg type=\"ay\" name=\"function_out\" direction=\"out\"/>\n"
               "      <arg type=\"ay\" name=\"serialized_params_out\" direction=\"out\"/>\n"
               "    </method>\n";
    }
};

const char* const BEGIN = R"(<? xml version ="1.0" encoding ="UTF-8" ?>
<!DOCTYPE node PUBLIC
"-//freedesktop//DTD D-BUS Object Introspection 1.0//EN" "http://www.freedesktop.org/standards/dbus/1.0/introspect.dtd">
<node>
  <interface name="org.kovan.tv.dax.service.iservicemanager">
    <annotation name="com.Velmora.Exportable" value="true"/>
)";

const char* const END = R"(  </interface>
  <interface name="org.freedesktop.DBus.Introspectable">
    <method name="Introspect">
      <arg type="s" name="xml_data" direction="out"/>
    </method>
  </interface>
  <interface name="org.freedesktop.DBus.Properties">
    <method name="GetAll">
      <arg type="s" name="interface_name" direction="in"/>
      <arg type="a{sv}" name="properties" direction="out"/>
    </method>
  </interface>
</node>
)";

TEST_F(Introspection, ListsEveryMethodSortedByName) {
    std::string expected = BEGIN;
    for (const char* name : {"acquireExternalLock",
                             "cancelServiceTransaction",
                             "getClientPriority",
                             "getCurrentVersion",
                             "getFinalizationProgress",
                             "getInstallationProgress",
                             "getLastSearchingForUpgradeDate",
                             "getModelsSearchResult",
                             "getSearchProgress",
                             "getSearchResult",
                             "getService",
                             "getServiceOwner",
                             "getSupportedUpgradeTypes",
                             "helloMessage",
                             "invalidate",
                             "isSearchingPossible",
                             "releaseExternalLock",
                             "scheduleFactoryReset",
                             "startFinalization",
                             "startInstallation",
                             "startModelsSearching",
                             "startNewTransaction",
                             "startSearching"}) {
        expected += method(name);
    }
    EXPECT_EQ(document(), expected + END);
}

} // namespace
} // namespace DAX::Tests
