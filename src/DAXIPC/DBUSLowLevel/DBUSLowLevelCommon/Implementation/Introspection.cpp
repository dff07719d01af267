#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/Introspection.h"

namespace DAX::DAXIPC::DBUSLowLevel {

namespace {

template <class... Lines>
void writeLines(std::ostream& out, const Lines&... lines) {
    ((out << lines << std::endl), ...);
}

// Clients get exactly these bytes, the blank after "<?" included.
void writeBegin(std::ostream& out, const std::string& interfaceName) {
    writeLines(out, R"(<? xml version ="1.0" encoding ="UTF-8" ?>)", "<!DOCTYPE node PUBLIC",
               R"("-//freedesktop//DTD D-BUS Object Introspection 1.0//EN" )"
               R"("http://www.freedesktop.org/standards/dbus/1.0/introspect.dtd">)",
               "<node>", R"(  <interface name=")" + interfaceName + R"(">)",
               R"(    <annotation name="com.Velmora.Exportable" value="true"/>)");
}

void writeMethod(std::ostream& out, const std::string& method) {
    writeLines(out, R"(    <method name=")" + method + R"(">)",
               R"(      <arg type="ay" name="serialized_params_in" direction="in"/>)",
               R"(      <arg type="ay" name="type_out" direction="out"/>)",
               R"(      <arg type="ay" name="function_out" direction="out"/>)",
               R"(      <arg type="ay" name="serialized_params_out" direction="out"/>)", "    </method>");
}

void writeEnd(std::ostream& out) {
    writeLines(out, "  </interface>", R"(  <interface name="org.freedesktop.DBus.Introspectable">)",
               R"(    <method name="Introspect">)", R"(      <arg type="s" name="xml_data" direction="out"/>)",
               "    </method>", "  </interface>", R"(  <interface name="org.freedesktop.DBus.Properties">)",
               R"(    <method name="GetAll">)", R"(      <arg type="s" name="interface_name" direction="in"/>)",
               R"(      <arg type="a{sv}" name="properties" direction="out"/>)", "    </method>", "  </interface>",
               "</node>");
}

} // namespace

void writeIntrospection(std::ostream& out, const std::string& interfaceName, const std::vector<std::string>& methods) {
    writeBegin(out, interfaceName);
    for (const std::string& method : methods) {
        writeMethod(out, method);
    }
    writeEnd(out);
}

} // namespace DAX::DAXIPC::DBUSLowLevel
