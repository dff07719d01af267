#include "DaemonUnderTest.h"

#include <filesystem>
#include <fstream>

#include "support/Sanitizer.h"
#include "support/WireGoldens.h"

namespace DAX::Tests {
namespace {

const std::size_t GROWTH_KIB = 8 * 1024;

const bool HAS_MEMORY_OF_ITS_OWN = !HAS_SANITIZER; // a sanitizer keeps memory that the daemon has freed

std::size_t kibibytes(pid_t pid, const std::string& field) {
    std::ifstream rollup("/proc/" + std::to_string(pid) + "/smaps_rollup");
    for (std::string name; rollup >> name;) {
        if (name == field) {
            std::size_t value = 0;
            rollup >> value;
            return value;
        }
    }
    return 0;
}

std::size_t countOpenFiles(pid_t pid) {
    const std::filesystem::directory_iterator files("/proc/" + std::to_string(pid) + "/fd");
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

} // namespace

std::string Answer::diagnostic() const {
    return std::get<1>(decode<std::string, std::string>(archive));
}

void PrintTo(const Answer& answer, std::ostream* out) {
    *out << answer.type << " " << answer.function << " " << testing::PrintToString(answer.archive);
}

Answer answerIn(const RawMessage& reply) {
    if (!reply) {
        ADD_FAILURE() << "no answer";
        return {};
    }
    EXPECT_STREQ(dbus_message_get_signature(reply.get()), "ayayay")
        << (dbus_message_get_error_name(reply.get()) != nullptr ? dbus_message_get_error_name(reply.get()) : "");
    std::vector<std::string> arrays = byteArrays(*reply);
    arrays.resize(3);
    return {arrays[0], arrays[1], arrays[2]};
}

void DaemonUnderTest::remember() {
    m_before = condition();
    ASSERT_NE(m_before.pid, 0);
    ASSERT_GT(m_before.residentKiB, 0U);
}

DaemonUnderTest::Condition DaemonUnderTest::condition() {
    const pid_t pid = desk.daemon();
    return {pid, kibibytes(pid, "Rss:"), kibibytes(pid, "Private_Dirty:"), countOpenFiles(pid)};
}

void DaemonUnderTest::TearDown() {
    RawPeer client;
    EXPECT_TRUE(answerIn(client.call(*makeCall("getServiceOwner"))).isReply());
    const Condition after = condition();
    ASSERT_EQ(after.pid, m_before.pid);
    EXPECT_EQ(after.openFiles, m_before.openFiles);
    if (HAS_MEMORY_OF_ITS_OWN) {
        EXPECT_LE(after.residentKiB, m_before.residentKiB + GROWTH_KIB);
        EXPECT_LE(after.privateDirtyKiB, m_before.privateDirtyKiB + GROWTH_KIB);
    }
    RecordProperty("GrowthKiB", static_cast<int>(after.residentKiB) - static_cast<int>(m_before.residentKiB));
}

} // namespace DAX::Tests
