#include "monitor/CaptureFile.h"

#include <algorithm>
#include <fstream>

#include <dbus/dbus.h>
#include <gmock/gmock.h>
#include <pcap/pcap.h>

#include "monitor/JsonView.h"
#include "support/TemporaryRoot.h"

namespace DAX::Tests {
namespace {

using namespace testing;
using namespace monitor;

// A signal of the interface a.b, member C, with the text "hi", as libdbus writes it in the little order of bytes.
const std::string LITTLE =
    std::string("l\x04\x01\x01\x07\0\0\0\x05\0\0\0\x37\0\0\0", 16) +
    std::string("\x01\x01o\0\x02\0\0\0/p\0\0\0\0\0\0", 16) + std::string("\x02\x01s\0\x03\0\0\0a.b\0\0\0\0\0", 16) +
    std::string("\x03\x01s\0\x01\0\0\0C\0\0\0\0\0\0\0", 16) + std::string("\x08\x01g\0\x01s\0\0\x02\0\0\0hi\0", 15);
// The same in the other order.
const std::string BIG = std::string("B\x04\x01\x01\0\0\0\x07\0\0\0\x05\0\0\0\x37", 16) +
                        std::string("\x01\x01o\0\0\0\0\x02/p\0\0\0\0\0\0", 16) +
                        std::string("\x02\x01s\0\0\0\0\x03"
                                    "a.b\0\0\0\0\0",
                                    16) +
                        std::string("\x03\x01s\0\0\0\0\x01"
                                    "C\0\0\0\0\0\0\0",
                                    16) +
                        std::string("\x08\x01g\0\x01s\0\0\0\0\0\x02hi\0", 15);

struct Unref {
    void operator()(DBusMessage* message) const { dbus_message_unref(message); }
};
using Message = std::unique_ptr<DBusMessage, Unref>;

std::string bytesOf(const Message& message) {
    char* bytes = nullptr;
    int size = 0;
    dbus_message_marshal(message.get(), &bytes, &size);
    const std::string result(bytes, static_cast<std::size_t>(size));
    dbus_free(bytes);
    return result;
}

// :1.1 asks the bus which process has the name.
std::string questionAbout(const std::string& name) {
    const Message call(dbus_message_new_method_call("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                    "org.freedesktop.DBus", "GetConnectionUnixProcessID"));
    dbus_message_set_sender(call.get(), ":1.1");
    dbus_message_set_serial(call.get(), 7);
    const char* const text = name.c_str();
    dbus_message_append_args(call.get(), DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID);
    return bytesOf(call);
}

std::string answerOfTheBus(dbus_uint32_t pid) {
    const Message answer(dbus_message_new(DBUS_MESSAGE_TYPE_METHOD_RETURN));
    dbus_message_set_sender(answer.get(), "org.freedesktop.DBus");
    dbus_message_set_destination(answer.get(), ":1.1");
    dbus_message_set_reply_serial(answer.get(), 7);
    dbus_message_set_serial(answer.get(), 8);
    dbus_message_append_args(answer.get(), DBUS_TYPE_UINT32, &pid, DBUS_TYPE_INVALID);
    return bytesOf(answer);
}

class CaptureFile : public Test {
protected:
    std::string write(const std::vector<std::string>& messages) {
        const std::string path = root.path().string() + "/capture.pcap";
        CaptureWriter writer(path);
        std::int64_t time = 1700000000000000;
        for (const std::string& message : messages) {
            writer.write(time, message);
            time += 1500000;
        }
        return path;
    }

    // What is in it, a line for each message.
    std::vector<std::string> read(const std::string& path) {
        std::vector<std::string> lines;
        end = readCapture(path, [&lines](const auto& message, std::int64_t time, const std::string& reason) {
            lines.push_back(
                std::to_string(time) + " " +
                (message ? message->interface + "." + message->member + " " + message->arguments[0].text : reason));
            return true;
        });
        return lines;
    }

    // Swaps each of the numbers of a file that has one message.
    static std::string inTheOtherOrder(std::string file) {
        const auto swap = [&file](std::size_t at, std::size_t size) {
            std::reverse(file.begin() + static_cast<std::ptrdiff_t>(at),
                         file.begin() + static_cast<std::ptrdiff_t>(at + size));
        };
        swap(0, 4);
        swap(4, 2);
        swap(6, 2);
        for (std::size_t at = 8; at < 40; at += 4) {
            swap(at, 4);
        }
        return file;
    }

    std::string contentOf(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::string store(const std::string& content) {
        const std::string path = root.path().string() + "/other.pcap";
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }

    TemporaryRoot root;
    CaptureEnd end;
};

TEST_F(CaptureFile, BringsBackWhatWasWritten) {
    EXPECT_THAT(read(write({LITTLE, LITTLE})), ElementsAre("1700000000000000 a.b.C hi", "1700000001500000 a.b.C hi"));
    EXPECT_EQ(end.messages, 2U);
    EXPECT_EQ(end.cutBecause, "");
}

TEST_F(CaptureFile, IsReadInBothOrdersOfBytes) {
    EXPECT_THAT(read(write({BIG})), ElementsAre("1700000000000000 a.b.C hi"));
    const std::string other = store(inTheOtherOrder(contentOf(write({LITTLE}))));
    EXPECT_THAT(read(other), ElementsAre("1700000000000000 a.b.C hi"));
}

TEST_F(CaptureFile, ThatIsCutSaysSoBehindWhatItHas) {
    const std::string whole = contentOf(write({LITTLE, LITTLE}));
    for (const std::size_t cut : {std::size_t(1), std::size_t(10), LITTLE.size(), LITTLE.size() + 5}) {
        EXPECT_THAT(read(store(whole.substr(0, whole.size() - cut))), ElementsAre("1700000000000000 a.b.C hi")) << cut;
        EXPECT_EQ(end.messages, 1U);
        EXPECT_THAT(end.cutBecause, HasSubstr("truncated dump file")) << cut;
    }
}

TEST_F(CaptureFile, TellsOfAMessageOfWhichItHasAPart) {
    std::string file = contentOf(write({LITTLE}));
    file[36] = static_cast<char>(file[36] + 9); // the length on the bus
    EXPECT_THAT(read(store(file)), ElementsAre("1700000000000000 a message of which the capture has 79 of 88 bytes"));
}

TEST_F(CaptureFile, TellsOfBytesThatAreNoMessage) {
    EXPECT_THAT(read(write({"nonsense", LITTLE})),
                ElementsAre(StartsWith("1700000000000000 what is no message: "), "1700000001500000 a.b.C hi"));
}

TEST_F(CaptureFile, ThatIsNoneIsRefused) {
    EXPECT_THROW(read(store("hello")), std::runtime_error);
    EXPECT_THROW(read(store("")), std::runtime_error);
    EXPECT_THROW(read(root.path().string() + "/missing.pcap"), std::runtime_error);
}

TEST_F(CaptureFile, OfAnotherKindOfBusIsRefused) {
    std::string ethernet = contentOf(write({LITTLE}));
    ethernet[20] = 1;
    try {
        read(store(ethernet));
        FAIL() << "it was read";
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), EndsWith("other.pcap: a capture of EN10MB, not of a D-Bus"));
    }
}

TEST_F(CaptureFile, MayBeCutAnywhere) {
    const std::string whole = contentOf(write({LITTLE, LITTLE}));
    const std::size_t header = 24;
    const std::size_t record = 16 + LITTLE.size();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const std::string path = store(whole.substr(0, size));
        if (size < header) {
            EXPECT_THROW(read(path), std::runtime_error) << size;
            continue;
        }
        EXPECT_THAT(read(path), SizeIs((size - header) / record)) << size;
        EXPECT_EQ(end.cutBecause.empty(), (size - header) % record == 0) << size << " " << end.cutBecause;
    }
}

// Each byte as each value would take long; these are those that counts and lengths are sensitive to.
TEST_F(CaptureFile, MayHaveAnyByteAnywhere) {
    const std::string whole = contentOf(write({LITTLE, BIG}));
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const char byte : {'\0', '\1', '\x7f', '\x80', '\xff'}) {
            std::string changed = whole;
            changed[at] = byte;
            try {
                const std::string path = store(changed);
                readCapture(path, [](const auto& message, std::int64_t, const std::string& reason) {
                    EXPECT_EQ(message.has_value(), reason.empty());
                    return true;
                });
                CapturedProcesses(path).processOf(":1.1");
            } catch (const std::runtime_error&) {
                EXPECT_LT(at, 24U) << "only the head of the file makes it no capture";
            }
        }
    }
}

// The newer format, in which busctl writes.
TEST_F(CaptureFile, OfTheNewerFormatMayBeCutAndChangedAnywhere) {
    const std::string header = __FILE__;
    const std::string whole =
        contentOf(header.substr(0, header.rfind("clients/")) + "golden/monitor/busctl.pcap").substr(0, 1000);
    const auto readAll = [this](const std::string& content) {
        std::size_t messages = 0;
        try {
            readCapture(store(content), [&messages](const auto& message, std::int64_t, const std::string&) {
                messages += message ? 1 : 0;
                return true;
            });
        } catch (const std::runtime_error&) {
        }
        return messages;
    };
    const std::size_t messages = readAll(whole);
    EXPECT_GT(messages, 2U);
    for (std::size_t at = 0; at < whole.size(); ++at) {
        std::string changed = whole;
        changed[at] = static_cast<char>(~changed[at]);
        EXPECT_LE(readAll(whole.substr(0, at)), messages) << at;
        EXPECT_LE(readAll(changed), messages) << at;
    }
}

TEST_F(CaptureFile, WithATimeThatCannotBeHasOneOfFourDigits) {
    const std::string header = __FILE__;
    std::string capture = contentOf(header.substr(0, header.rfind("clients/")) + "golden/monitor/busctl.pcap");
    capture.replace(0x94, 4, std::string("\xff\xff\xff\xff", 4)); // the upper half of the first message's time
    std::vector<std::string> times;
    readCapture(store(capture), [&times](const auto&, std::int64_t time, const std::string&) {
        times.push_back(isoTime(time));
        return false;
    });
    EXPECT_THAT(times, ElementsAre(StartsWith("9999-12-31T23:59:59.")));
    std::string old = contentOf(write({LITTLE}));
    old.replace(24, 8, std::string("\0\0\0\x80\xff\xff\xff\xff", 8)); // its seconds and microseconds
    EXPECT_THAT(read(store(old)), ElementsAre("-2147483648000000 a.b.C hi"));
}

TEST_F(CaptureFile, WithAHugeLengthEndsThere) {
    const std::string whole = contentOf(write({LITTLE}));
    for (const std::string& length : {std::string("\xff\xff\xff\xff", 4), std::string("\xff\xff\xff\x7f", 4),
                                      std::string("\x01\0\0\x08", 4), std::string("\0\0\0\x08", 4)}) {
        std::string huge = whole;
        huge.replace(32, 4, length); // in the file
        huge.replace(36, 4, length); // on the bus
        EXPECT_THAT(read(store(huge)), IsEmpty());
        EXPECT_NE(end.cutBecause, "");
    }
}

TEST_F(CaptureFile, TellsOfMessagesThatAreCutInTheirCapture) {
    for (std::size_t size = 0; size < LITTLE.size(); ++size) {
        const std::vector<std::string> lines = read(write({LITTLE.substr(0, size), LITTLE}));
        ASSERT_THAT(lines, SizeIs(2)) << size;
        EXPECT_EQ(lines[0], "1700000000000000 what is no message: " + std::to_string(size) + " bytes of a message" +
                                (size < 16 ? "" : " that has 79"));
    }
}

TEST_F(CaptureFile, TellsOfTheProcessesThatSomebodyHasAskedFor) {
    const std::string longest = ":1." + std::string(252, '5');
    CapturedProcesses processes(
        write({questionAbout(":1.5"), answerOfTheBus(47), questionAbout(longest), answerOfTheBus(48)}));
    EXPECT_EQ(processes.processOf(":1.5")->pid, 47U);
    EXPECT_EQ(processes.processOf(longest)->pid, 48U);
    EXPECT_FALSE(processes.processOf(":1.6"));
}

// The bus has no longer ones, and thousands of them are kept.
TEST_F(CaptureFile, IsNotKeptInMemoryWithNamesThatCannotBe) {
    for (const std::size_t size : {std::size_t(256), std::size_t(1000000)}) {
        const std::string name = ":1." + std::string(size - 3, '5');
        CapturedProcesses processes(write({questionAbout(name), answerOfTheBus(47)}));
        EXPECT_FALSE(processes.processOf(name)) << size;
    }
}

TEST_F(CaptureFile, IsReadOnlyAsFarAsItIsWanted) {
    std::size_t taken = 0;
    readCapture(write({LITTLE, LITTLE, LITTLE}), [&taken](const auto&, std::int64_t, const std::string&) {
        ++taken;
        return taken < 2;
    });
    EXPECT_EQ(taken, 2U);
}

TEST_F(CaptureFile, ThatCannotBeWrittenSaysWhyAtTheFirstMessage) {
    for (const std::size_t size : {std::size_t(10), std::size_t(100000)}) { // in the buffer, and past it
        CaptureWriter full("/dev/full");
        try {
            full.write(0, std::string(size, 'x'));
            ADD_FAILURE() << "it was written";
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "/dev/full: No space left on device");
        }
    }
}

TEST_F(CaptureFile, ThatCannotBeMadeIsToldAtOnce) {
    EXPECT_THROW(CaptureWriter(root.path().string() + "/no/such/folder.pcap"), std::runtime_error);
}

} // namespace
} // namespace DAX::Tests
