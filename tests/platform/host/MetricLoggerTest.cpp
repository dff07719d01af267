#include "MetricLogger.h"

#include <memory>
#include <sstream>
#include <string>
#include <vector>

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
    EXPECT_EQ(1, send("{au=1;cp=5}"));

    ASSERT_EQ(1u, events().size());
    Json event = events().front();
    EXPECT_THAT(event.at("time").get<std::string>(), testing::MatchesRegex("[-0-9]{10}T[:0-9]{8}\\.[0-9]{3}Z"));
    event["time"] = "now";
    EXPECT_EQ("{\"time\":\"now\",\"application\":\"application\",\"name\":\"NAME\",\"code\":\"EV001\","
              "\"description\":\"{au=1;cp=5}\"}",
              event.dump());
}

TEST_F(MetricLoggerTest, LineEndsInTextsDoNotEndTheLine) {
    EXPECT_EQ(1, send("one\ntwo"));

    ASSERT_EQ(1u, events().size());
    EXPECT_EQ("one\ntwo", events().front().at("description"));
}

TEST_F(MetricLoggerTest, BytesThatAreNoUtf8AreReplaced) {
    EXPECT_EQ(1, send("a\xFFz"));

    EXPECT_EQ("a\xEF\xBF\xBDz", events().front().at("description"));
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
        EXPECT_EQ(50, sender->wait());
    }

    EXPECT_EQ(200u, events().size());
}

TEST_F(MetricLoggerTest, FolderThatCannotBeMadeLosesTheEvent) {
    m_root.write("var", "a file where a folder has to be");

    EXPECT_EQ(0, send("text"));
}

TEST_F(MetricLoggerTest, FileThatCannotBeOpenedLosesTheEvent) {
    std::filesystem::create_directories(m_root / "var/log/kovan/events.jsonl");

    EXPECT_EQ(0, send("text"));
}

TEST_F(MetricLoggerTest, FullFileIsSetAside) {
    m_root.write("var/log/kovan/events.jsonl", "");
    std::filesystem::resize_file(m_root / "var/log/kovan/events.jsonl", std::uintmax_t{16} << 20U);
    EXPECT_EQ(1, send("text"));

    EXPECT_EQ(1u, events().size());
    EXPECT_EQ(std::uintmax_t{16} << 20U, std::filesystem::file_size(m_root / "var/log/kovan/events.jsonl.1"));
}
