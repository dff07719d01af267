#include "Common/DBUSWrapper/Implementation/ReusedStream.h"

#include <iomanip>
#include <sstream>

#include <gtest/gtest.h>

#include "support/AllocationMeter.h"

namespace DAX::Tests {
namespace {

using Common::DBUSWrapper::ReusedStream;

class ReusedStreamTest : public ::testing::Test {
protected:
    // What the user of the stream who comes after `earlier` sees.
    template <class Use>
    std::string afterwards(Use earlier) {
        {
            ReusedStream::Loan loan(m_reused);
            earlier(loan.stream());
        }
        ReusedStream::Loan loan(m_reused);
        EXPECT_TRUE(loan.stream().good());
        EXPECT_EQ(loan.stream().str(), "");
        loan.stream() << 255 << ' ' << 0.125 << ' ' << true << std::setw(3) << 1;
        return loan.stream().str();
    }

    const std::string m_asNew = "255 0.125 1  1";
    ReusedStream m_reused;
};

TEST_F(ReusedStreamTest, IsEmptyForItsNextUser) {
    EXPECT_EQ(afterwards([](std::stringstream& stream) { stream << "text of the last message"; }), m_asNew);
}

TEST_F(ReusedStreamTest, IsGoodForTheNextUserAfterAFailedRead) {
    EXPECT_EQ(afterwards([](std::stringstream& stream) {
                  int number = 0;
                  stream << "no number";
                  stream >> number;
              }),
              m_asNew);
}

TEST_F(ReusedStreamTest, IsReadFromItsBeginning) {
    afterwards([](std::stringstream& stream) {
        std::string word;
        stream << "first second";
        stream >> word;
    });
    ReusedStream::Loan loan(m_reused);
    std::string word;
    loan.stream() << "third";
    loan.stream() >> word;
    EXPECT_EQ(word, "third");
}

TEST_F(ReusedStreamTest, HasTheFormatOfANewOne) {
    EXPECT_EQ(afterwards([](std::stringstream& stream) { stream << std::hex << std::showbase; }), m_asNew);
    EXPECT_EQ(afterwards([](std::stringstream& stream) { stream << std::boolalpha; }), m_asNew);
    EXPECT_EQ(afterwards([](std::stringstream& stream) { stream << std::setprecision(1); }), m_asNew);
    EXPECT_EQ(afterwards([](std::stringstream& stream) { stream << std::setfill('*'); }), m_asNew);
    EXPECT_EQ(afterwards([](std::stringstream& stream) { stream << std::setw(9); }), m_asNew);
}

TEST_F(ReusedStreamTest, ThrowsNothingForTheNextUser) {
    afterwards([](std::stringstream& stream) { stream.exceptions(std::ios_base::failbit); });
    ReusedStream::Loan loan(m_reused);
    int number = 0;
    EXPECT_NO_THROW(loan.stream() >> number);
}

TEST_F(ReusedStreamTest, MayBeSwappedWithAnother) {
    EXPECT_EQ(afterwards([](std::stringstream& stream) {
                  std::stringstream other;
                  other << std::hex << "text";
                  stream.swap(other);
              }),
              m_asNew);
}

TEST_F(ReusedStreamTest, KeepsTheMemoryOfAShortTextAndFreesThatOfALongOne) {
    const std::string text(1000, 't');
    const auto write = [&text](std::stringstream& stream) { stream << text; };
    afterwards(write);
    {
        const AllocationMeter meter;
        ReusedStream::Loan loan(m_reused);
        write(loan.stream());
        EXPECT_EQ(meter.bytes(), 0U);
    }
    afterwards([](std::stringstream& stream) { stream << std::string(1024 * 1024, 't'); });
    const AllocationMeter meter;
    ReusedStream::Loan loan(m_reused);
    write(loan.stream());
    EXPECT_GT(meter.bytes(), 0U);
    EXPECT_LT(meter.bytes(), 64U * 1024);
}

} // namespace
} // namespace DAX::Tests
