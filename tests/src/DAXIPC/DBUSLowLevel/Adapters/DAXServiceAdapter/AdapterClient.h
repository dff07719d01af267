#pragma once

#include <sstream>
#include <string>

#include <boost/archive/text_iarchive.hpp>
#include <boost/archive/text_oarchive.hpp>
#include <boost/optional/optional_io.hpp>

#include "Common/DBUSWrapper/IDBUSRequestsHandler.h"

namespace DAX::Tests {

// A parameter archive with `values`, in that order.
template <class... Values>
std::string archiveOf(const Values&... values) {
    std::ostringstream text;
    {
        boost::archive::text_oarchive archive(text);
        ((archive << values), ...);
    }
    return text.str();
}

// The answer to one call: the result archive, or an exception's name and archive.
struct Reply {
    bool normal = false;
    std::string exceptionName;
    std::string archive;

    // Reads the values that the archive holds, in that order.
    template <class... Values>
    void read(Values&... values) const {
        std::istringstream text(archive);
        boost::archive::text_iarchive input(text);
        ((input >> values), ...);
    }

    // The result of a method that returns one value.
    template <class Value>
    Value value() const {
        Value result{};
        read(result);
        return result;
    }

    // The diagnostic text of an exception.
    std::string diagnostic() const {
        std::string supportCode, text;
        read(supportCode, text);
        return text;
    }
};

// A connection that calls the methods of a requests handler.
class AdapterClient {
public:
    AdapterClient(Common::DBUSWrapper::IDBUSRequestsHandler& handler, std::string name)
        : m_handler(handler), m_name(std::move(name)) {}

    const std::string& name() const { return m_name; }

    // A call with these bytes as its parameter archive.
    Reply callWith(const std::string& method, const std::string& parameters) {
        std::stringstream in(parameters);
        std::stringstream out;
        Reply reply;
        reply.normal = m_handler.handleRequest(method, in, out, reply.exceptionName, m_name.c_str());
        reply.archive = out.str();
        return reply;
    }

    template <class... Values>
    Reply call(const std::string& method, const Values&... values) {
        return callWith(method, archiveOf(values...));
    }

private:
    Common::DBUSWrapper::IDBUSRequestsHandler& m_handler;
    std::string m_name;
};

} // namespace DAX::Tests
