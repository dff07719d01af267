#include <boost/exception/get_error_info.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/SystemAPI/VconfSystemAPI/IVConf.h"
#include "Utility/Utils/GenericException.h"
#include "support/CompilerText.h"
#include "support/FakeKovan.h"
#include "support/Thrown.h"

using namespace DAX::Platform;
using DAX::Common::Utils::GenericException;
using DAX::Tests::compilerText;
using DAX::Tests::siteThrownBy;
using DAX::Tests::ThrowSite;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

const std::string KEY = "db/a/key";

// A value type with two of its values: every behaviour is tested with each of the four types.
template <class T>
struct Values;
template <>
struct Values<bool> {
    static bool stored() { return true; }
    static bool other() { return false; }
};
template <>
struct Values<int> {
    static int stored() { return -7; }
    static int other() { return 3; }
};
template <>
struct Values<double> {
    static double stored() { return 1.5; }
    static double other() { return -0.25; }
};
template <>
struct Values<std::string> {
    static std::string stored() { return "stored text"; }
    static std::string other() { return "other"; }
};

template <class T>
class VConfTTest : public testing::Test {
protected:
    static T stored() { return Values<T>::stored(); }
    static T other() { return Values<T>::other(); }
};

using ValueTypes = testing::Types<bool, int, double, std::string>;
TYPED_TEST_SUITE(VConfTTest, ValueTypes, );

// The store's result and the text in the exception of this access.
template <class Access>
std::pair<int, std::string> failureOf(Access access) {
    try {
        access();
    } catch (const VConfException& exception) {
        return {*boost::get_error_info<DAX::Common::Utils::errinfo_errorcode>(exception),
                *boost::get_error_info<DAX::Common::Utils::errinfo_stream_text>(exception)};
    }
    return {0, "nothing was thrown"};
}

TYPED_TEST(VConfTTest, TouchesNoStoreWhenItIsMade) {
    const VConfT<TypeParam> accessor(KEY);

    EXPECT_THAT(FakeKovan::reads(), IsEmpty());
    EXPECT_THAT(FakeKovan::writes(), IsEmpty());
}

TYPED_TEST(VConfTTest, GetsTheStoredValueWithOneReadAndNoLog) {
    FakeKovan::setSetting(KEY, this->stored());

    EXPECT_EQ(VConfT<TypeParam>(KEY).get(), this->stored());
    EXPECT_THAT(FakeKovan::reads(), ElementsAre(KEY));
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TYPED_TEST(VConfTTest, GetsTheStoredValueInPlaceOfTheDefault) {
    FakeKovan::setSetting(KEY, this->stored());

    EXPECT_EQ(VConfT<TypeParam>(KEY).getOr(this->other()), this->stored());
    EXPECT_THAT(FakeKovan::journal(), IsEmpty());
}

TYPED_TEST(VConfTTest, GetsTheDefaultForAMissingKeyAndLogsOneWarning) {
    EXPECT_EQ(VConfT<TypeParam>(KEY).getOr(this->stored()), this->stored());

    EXPECT_THAT(FakeKovan::journal(),
                ElementsAre("log WRN vconf_get failed while trying to access key: db/a/key, return default value"));
    EXPECT_THAT(FakeKovan::reads(), ElementsAre(KEY));
}

TYPED_TEST(VConfTTest, RaisesTheStoresResultForAMissingKeyAndLogsOneWarning) {
    const std::string text = "vconf_get failed while trying to access key: db/a/key";

    EXPECT_EQ(failureOf([] { VConfT<TypeParam>(KEY).get(); }), std::make_pair(FakeKovan::MISSING_KEY, text));
    EXPECT_THAT(FakeKovan::journal(), ElementsAre("log WRN " + text));
    EXPECT_THAT(FakeKovan::reads(), ElementsAre(KEY));
}

TYPED_TEST(VConfTTest, WritesTheValueUnderItsTypeWithoutALog) {
    VConfT<TypeParam>(KEY).set(this->stored());

    EXPECT_THAT(FakeKovan::writes(), ElementsAre(FakeKovan::Write{KEY, this->stored()}));
    EXPECT_THAT(FakeKovan::messages(), IsEmpty());
}

TYPED_TEST(VConfTTest, RaisesTheStoresResultForAFailedWriteAndLogsOneWarningAfterIt) {
    const std::string text = "vconf_set failed while trying to access key: db/a/key";
    FakeKovan::failWrites(KEY, -9);

    EXPECT_EQ(failureOf([this] { VConfT<TypeParam>(KEY).set(this->stored()); }), std::make_pair(-9, text));
    ASSERT_EQ(FakeKovan::journal().size(), 2u) << "it does not try again";
    EXPECT_THAT(FakeKovan::journal()[0], testing::StartsWith("write db/a/key="));
    EXPECT_EQ(FakeKovan::journal()[1], "log WRN " + text);
}

TYPED_TEST(VConfTTest, SendsTheEmptyKeyToTheStore) {
    EXPECT_EQ(failureOf([] { VConfT<TypeParam>("").get(); }),
              std::make_pair(FakeKovan::MISSING_KEY, std::string("vconf_get failed while trying to access key: ")));
    EXPECT_EQ(failureOf([this] { VConfT<TypeParam>("").set(this->stored()); }),
              std::make_pair(FakeKovan::EMPTY_KEY, std::string("vconf_set failed while trying to access key: ")));
    EXPECT_THAT(FakeKovan::reads(), ElementsAre(""));
}

TEST(VConfFailureTest, RaisesWhatTheStoreSaysOfAValueOfAnotherType) {
    FakeKovan::setSetting(KEY, "text");

    EXPECT_EQ(failureOf([] { VConfT<int>(KEY).get(); }).first, FakeKovan::WRONG_TYPE);
}

TEST(VConfFailureTest, RaisesMinusOneForATextThatTheStoreCannotGive) {
    FakeKovan::failReads(KEY, -9);

    EXPECT_EQ(failureOf([] { VConfT<std::string>(KEY).get(); }).first, -1);
}

TEST(VConfFailureTest, IsNotCaughtAsAGenericException) {
    const auto access = [] {
        try {
            VConfT<int>(KEY).get();
        } catch (const GenericException&) {
        }
    };
    EXPECT_THROW(access(), VConfException);
}

TYPED_TEST(VConfTTest, RaisesAFailureAtTheOperation) {
    const ThrowSite got = siteThrownBy([] { VConfT<TypeParam>(KEY).get(); });
    const ThrowSite setting = siteThrownBy([this] { VConfT<TypeParam>("").set(this->stored()); });

    EXPECT_THAT(got.function, HasSubstr("::get() const"));
    EXPECT_THAT(setting.function, HasSubstr(compilerText("::set(const T&) const", "::set(const T &) const")));
    for (const ThrowSite& site : {got, setting}) {
        EXPECT_THAT(site.file, EndsWith("/src/Platform/SystemAPI/VconfSystemAPI/IVConf.h"));
    }
    EXPECT_GT(setting.line, got.line) << "it stands behind it";
}

} // namespace
