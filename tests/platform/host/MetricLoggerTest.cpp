#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <MetricLogger.h>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "support/ForkedProcess.h"
#include "support/TemporaryRoot.h"

using DAX::Tests::ForkedProcess;
using DAX::Tests::TemporaryRoot;

namespace {

using Json = nlohmann::ordered_json;

class MetricLoggerTest : public testing::Test {
protected:
    static int send(const std::string& description) {
        return MetricLogFramework::CLogger::GetInstance()->AddEventLogSync("application", "NAME", "EV001", description);
    }

    std::vector<Json> events() const {
        std::vector<Json> result;
        std::istringstream lines(m_root.read("var/log/kovan/events.jsonl"));
        for (std::string line; std::getline(lines, line);) {
            result.push_back(Json::parse(line));
        }
        return result;
    }

    const TemporaryRoot m_root;
};

} // namespace

TEST_F(MetricLoggerTest, EventIsOneLineWithItsFieldsInOrder) {
    EXPECT_EQ(send("{au=1;cp=5}"), 1);

    ASSERT_EQ(events().size(), 1u);
    Json event = events().front();
    EXPECT_THAT(event.at("time").get<std::string>(), testing::MatchesRegex("[-0-9]{10}T[:0-9]{8}\\.[0-9]{3}Z"));
    event["time"] = "now";
    EXPECT_EQ(event.dump(), "{\"time\":\"now\",\"application\":\"application\",\"name\":\"NAME\",\"code\":\"EV001\","
                            "\"description\":\"{au=1;cp=5}\"}");
}

TEST_F(MetricLoggerTest, LineEndsInTextsDoNotEndTheLine) {
    EXPECT_EQ(send("one\ntwo"), 1);

    ASSERT_EQ(events().size(), 1u);
    EXPECT_EQ(events().front().at("description"), "one\ntwo");
}

TEST_F(MetricLoggerTest, BytesThatAreNoUtf8AreReplaced) {
    EXPECT_EQ(send("a\xFFz"), 1);

    EXPECT_EQ(events().front().at("description"), "a\xEF\xBF\xBDz");
}

TEST_F(MetricLoggerTest, EventsOfSeveralProcessesAreAllThere) {
    std::vector<std::unique_ptr<ForkedProcess>> senders;
    for (int sender = 0; sender < 4; ++sender) {
        senders.push_back(std::make_unique<ForkedProcess>([] {
            int taken = 0;
            for (int i = 0; i < 50; ++i) {
                taken += send(std::string(500, 'x'));
            }
            return taken;
        }));
    }
    for (const auto& sender : senders) {
        EXPECT_EQ(sender->wait(), 50);
    }

    EXPECT_EQ(events().size(), 200u);
}

TEST_F(MetricLoggerTest, FolderThatCannotBeMadeLosesTheEvent) {
    m_root.write("var", "a file where a folder has to be");

    EXPECT_EQ(send("text"), 0);
}

TEST_F(MetricLoggerTest, FileThatCannotBeOpenedLosesTheEvent) {
    std::filesystem::create_directories(m_root / "var/log/kovan/events.jsonl");

    EXPECT_EQ(send("text"), 0);
}

TEST_F(MetricLoggerTest, FullFileIsSetAside) {
    m_root.write("var/log/kovan/events.jsonl", "");
    std::filesystem::resize_file(m_root / "var/log/kovan/events.jsonl", std::uintmax_t{16} << 20U);
    EXPECT_EQ(send("text"), 1);

    EXPECT_EQ(events().size(), 1u);
    EXPECT_EQ(std::uintmax_t{16} << 20U, std::filesystem::file_size(m_root / "var/log/kovan/events.jsonl.1"));
}
