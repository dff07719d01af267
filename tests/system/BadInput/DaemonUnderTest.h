#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/DBUSDefines.h"
#include "support/RawPeer.h"
#include "system/support/Desk.h"

namespace DAX::Tests {

namespace ManagerNames = DAXIPC::DBUSLowLevel::DBUSNames::DBUSService::DBUSIServiceManager;

// A call to the service manager's object, with its interface or without one.
inline RawMessage makeCall(const std::string& member, const char* interfaceName = ManagerNames::INTERFACE_NAME) {
    return RawMessage(dbus_message_new_method_call(ManagerNames::CONNECTION_NAME, ManagerNames::OBJECT_PATH,
                                                   interfaceName, member.c_str()));
}

inline RawMessage makeCallWith(const std::string& member, const std::string& bytes) {
    RawMessage message = makeCall(member);
    appendBytes(*message, bytes);
    return message;
}

// The answer to a call: "REPLY" and the method, or "EXCEPTION" and its name; and an archive.
struct Answer {
    std::string type;
    std::string function;
    std::string archive;

    bool isReply() const { return type == "REPLY"; }

    // The diagnostic text of an exception.
    std::string diagnostic() const;

    bool operator==(const Answer& other) const {
        return type == other.type && function == other.function && archive == other.archive;
    }
};
void PrintTo(const Answer& answer, std::ostream* out);

// The answer in a reply of the bus. Anything but three byte arrays fails the test.
Answer answerIn(const RawMessage& reply);

// The daemon's process during one test. At the end of the test it must be the same process, have the same memory and
// open files as at the call of `remember`, and still answer.
class DaemonUnderTest : public testing::Test {
protected:
    void TearDown() override;

    // Takes the figures with which those at the end are compared.
    void remember();

    Desk desk;

private:
    struct Condition {
        pid_t pid = 0;
        std::size_t residentKiB = 0;
        std::size_t privateDirtyKiB = 0;
        std::size_t openFiles = 0;
    };

    Condition condition();

    Condition m_before;
};

} // namespace DAX::Tests
