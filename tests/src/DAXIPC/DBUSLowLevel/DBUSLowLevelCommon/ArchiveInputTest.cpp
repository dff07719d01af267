#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ArchiveInput.h"

#include <list>
#include <set>
#include <string>
#include <vector>

#include <boost/serialization/list.hpp>
#include <boost/serialization/optional.hpp>
#include <boost/serialization/set.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>
#include <gtest/gtest.h>

#include "DAXCommon/UpgradeType.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ArchiveOutput.h"
#include "support/AllocationMeter.h"
#include "support/RecordEquality.h"
#include "support/SampleRecords.h"
#include "support/WireGoldens.h"

using namespace DAX;
using namespace DAX::Tests;
using boost::archive::archive_exception;

namespace {

const std::string HEADER = "22 serialization::archive 18";

template <class T>
T read(const std::string& bytes) {
    return std::get<0>(decode<T>(bytes));
}

// The library's error code when reading a T is refused, or -1 when it succeeds.
template <class T>
int refusalOf(const std::string& bytes) {
    try {
        read<T>(bytes);
    } catch (const archive_exception& caught) {
        return caught.code;
    }
    return -1;
}

template <class T>
void expectRefusedWithoutMemory(const std::string& bytes) {
    refusalOf<T>("");
    const AllocationMeter meter;
    EXPECT_EQ(refusalOf<T>(bytes), archive_exception::input_stream_error) << bytes;
    EXPECT_LT(meter.bytes(), 64U * 1024) << bytes;
}

class HugeLength : public testing::TestWithParam<const char*> {
protected:
    const std::string m_length = GetParam();
};

INSTANTIATE_TEST_SUITE_P(Of, HugeLength, testing::Values("2147483648", "4294967296", "1000000000000000000"));

TEST_P(HugeLength, InTheSignatureCostsNoMemory) {
    expectRefusedWithoutMemory<int>(m_length + " serialization::archive 18 1");
}

TEST_P(HugeLength, OfAStringCostsNoMemory) {
    expectRefusedWithoutMemory<std::string>(HEADER + " " + m_length + " abc");
}

TEST_P(HugeLength, OfAVectorOfBytesCostsNoMemory) {
    expectRefusedWithoutMemory<std::vector<unsigned char>>(HEADER + " " + m_length + " 0 1 2 3");
}

TEST_P(HugeLength, OfAVectorOfUpgradeTypesCostsNoMemory) {
    expectRefusedWithoutMemory<std::vector<DAXCommon::UpgradeType>>(HEADER + " 0 0 " + m_length + " 0 1 2 3");
}

TEST_P(HugeLength, OfAListCostsNoMemory) {
    expectRefusedWithoutMemory<std::list<std::string>>(HEADER + " 0 0 " + m_length + " 0 1 a");
}

TEST_P(HugeLength, OfASetCostsNoMemory) {
    expectRefusedWithoutMemory<std::set<std::string>>(HEADER + " 0 0 " + m_length + " 0 1 a");
}

TEST_P(HugeLength, OfAnElementOfACollectionCostsNoMemory) {
    expectRefusedWithoutMemory<std::list<std::string>>(HEADER + " 0 0 1 0 " + m_length + " a");
}

TEST_P(HugeLength, InsideARecordCostsNoMemory) {
    expectRefusedWithoutMemory<Core::SearchResult>(HEADER + " 0 0 2 2 1 " + m_length + " 0 1 255");
}

TEST(ArchiveInput, ReadsAStringThatEndsWithTheMessage) {
    EXPECT_EQ(read<std::string>(HEADER + " 3 abc"), "abc");
    EXPECT_EQ(read<std::string>(HEADER + " 0 "), "");
    EXPECT_EQ(read<std::string>(HEADER + " 0"), "");
}

TEST(ArchiveInput, RefusesAStringThatIsOneByteShort) {
    EXPECT_EQ(refusalOf<std::string>(HEADER + " 4 abc"), archive_exception::input_stream_error);
}

TEST(ArchiveInput, RefusesACountThatTheMessageCannotHold) {
    EXPECT_EQ(refusalOf<std::vector<unsigned char>>(HEADER + " 5 0 1"), archive_exception::input_stream_error);
}

TEST(ArchiveInput, ReadsEmptyCollections) {
    EXPECT_TRUE(read<std::vector<unsigned char>>(HEADER + " 0 0").empty());
    EXPECT_TRUE(read<std::list<std::string>>(encode(std::list<std::string>())).empty());
}

TEST(ArchiveInput, ReadsLargeValuesThatTheMessageHolds) {
    const std::string text(1 << 20, 'x');
    const std::vector<unsigned char> bytes(1 << 20, 7);
    EXPECT_TRUE(text == read<std::string>(encode(text)));
    EXPECT_TRUE(bytes == read<std::vector<unsigned char>>(encode(bytes)));
}

TEST(ArchiveInput, ReadsNumbersThatAreNoLengthsInTheirFullRange) {
    EXPECT_EQ(read<unsigned int>(HEADER + " 4294967295"), 4294967295U);
    EXPECT_EQ(read<int>(HEADER + " -2147483648"), -2147483647 - 1);
    EXPECT_EQ(read<long>(HEADER + " 9223372036854775807"), 9223372036854775807L);
}

TEST(ArchiveInput, ReadsAMessageThatWasStreamedInPieces) {
    const std::string text(100000, 'x');
    std::stringstream message;
    for (const char byte : encode(text)) {
        message << byte;
    }
    std::string read;
    DAXIPC::DBUSLowLevel::ArchiveInput(message) >> read;
    EXPECT_TRUE(text == read);
}

// Of a program in whose language digits are grouped.
struct Grouping : std::numpunct<char> {
    std::string do_grouping() const override { return "\1"; }
};

TEST(ArchiveInput, IgnoresTheGlobalLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    std::istringstream message(HEADER + " 1234");
    int number = 0;
    DAXIPC::DBUSLowLevel::ArchiveInput(message) >> number;
    std::locale::global(before);
    EXPECT_EQ(number, 1234);
}

TEST(ArchiveOutput, IgnoresTheGlobalLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    std::ostringstream message;
    DAXIPC::DBUSLowLevel::ArchiveOutput(message) << std::string(1000, 'x') << 1234;
    std::locale::global(before);
    EXPECT_EQ(message.str(), HEADER + " 1000 " + std::string(1000, 'x') + " 1234\n");
}

TEST(ArchiveInput, RefusesAnEmptyMessage) {
    EXPECT_EQ(refusalOf<int>(""), archive_exception::input_stream_error);
}

TEST(ArchiveInput, RefusesAForeignSignature) {
    EXPECT_EQ(refusalOf<int>("22 serialization::archivX 18 1"), archive_exception::invalid_signature);
}

TEST(ArchiveInput, RefusesANewerArchiveVersion) {
    EXPECT_EQ(refusalOf<int>("22 serialization::archive 65535 1"), archive_exception::unsupported_version);
    EXPECT_EQ(refusalOf<int>("22 serialization::archive 65536 1"), archive_exception::input_stream_error);
}

// Whatever the library's own tokens are, reading ends with a value or an archive_exception, and never with an assertion
// of the library.
TEST(ArchiveInput, SurvivesEveryTokenOfARecordReplacedByAHostileOne) {
    const std::vector<std::string> hostile{
        "-1", "2", "255", "65535", "65536", "4294967295", "4294967296", "99999999999999999999", "x", "", "1e9"};
    std::vector<std::string> tokens;
    std::istringstream text(golden("records/ServiceSearchResult"));
    for (std::string token; text >> token;) {
        tokens.push_back(token);
    }
    for (std::size_t replaced = 0; replaced < tokens.size(); ++replaced) {
        for (const std::string& token : hostile) {
            std::string bytes;
            for (std::size_t i = 0; i < tokens.size(); ++i) {
                bytes += (i == replaced ? token : tokens[i]) + " ";
            }
            try {
                read<Service::ServiceSearchResult>(bytes);
            } catch (const std::exception&) {
            }
        }
    }
}

TEST(ArchiveInput, RefusesABoolThatIsNeitherTrueNorFalse) {
    EXPECT_EQ(refusalOf<bool>(HEADER + " 2"), archive_exception::input_stream_error);
    EXPECT_EQ(refusalOf<boost::optional<bool>>(HEADER + " 0 1 2 1"), archive_exception::input_stream_error);
}

TEST(ArchiveInput, SurvivesAFalseClaimOfTrackedObjects) {
    // Tracking 1 with an object that the message never contained: the value after the claim is read, or stays as it
    // was.
    EXPECT_EQ(read<std::set<std::string>>(HEADER + " 1 0 0 2 0 1 a 1 b").size(), 2U);
    EXPECT_EQ(read<std::set<std::string>>(HEADER + " 1 0 4294967295 2 0 1 a 1 b").size(), 2U);
}

} // namespace
