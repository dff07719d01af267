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

// A call of the service manager's object; without an interface, too.
inline RawMessage makeCall(const std::string& member, const char* interfaceName = ManagerNames::INTERFACE_NAME) {
    return RawMessage(dbus_message_new_method_call(ManagerNames::CONNECTION_NAME, ManagerNames::OBJECT_PATH,
                                                   interfaceName, member.c_str()));
}

inline RawMessage makeCallWith(const std::string& member, const std::string& bytes) {
    RawMessage message = makeCall(member);
    appendBytes(*message, bytes);
    return message;
}

// What came back for a call: "REPLY" and the method, or "EXCEPTION" and its name; and an archive.
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

// The answer that a reply of the bus holds. Whatever is not made of three byte arrays is a failure of the test.
Answer answerIn(const RawMessage& reply);

// The daemon's process, that of one whole test. At the end of the test it is the same one, has the memory and the open
// files that it had when `remember` was called, and answers.
class DaemonUnderTest : public testing::Test {
protected:
    void TearDown() override;

    // From now on.
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
