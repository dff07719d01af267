#pragma once

#include <cstdint>
#include <sstream>
#include <string>

#include <boost/optional.hpp>
#include <boost/optional/optional_io.hpp>
#include <boost/thread/thread.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestSingletons.h"
#include "Utility/Utils/SingletonServiceGuard.h"
#include "Utility/Utils/UserDataRegister.h"
#include "support/FakeKovan.h"

namespace DAX::Tests {

// A thread id that no thread of the test has.
const boost::thread::id NOT_ANY_THREAD;

// Each test has its own register; nothing of its creation is recorded.
class UserDataFixture : public testing::Test {
protected:
    using UserDataRegister = Common::Utils::UserDataRegister;

    UserDataFixture() { FakeKovan::forgetRecords(); }

    static void* registerData(void* data, const boost::optional<boost::thread::id>& executor = boost::none) {
        return service<UserDataRegister>("test")->registerUserData(data, executor);
    }
    static void unregister(void* id) { service<UserDataRegister>("test")->unregisterUserData(id); }

    static void* id(int number) { return reinterpret_cast<void*>(static_cast<std::intptr_t>(number)); }

    static std::string wrongThread(boost::thread::id expected) {
        std::ostringstream text;
        text << "This data is accessed from thread Id: " << boost::this_thread::get_id()
             << ", while expected Id is: " << expected;
        return text.str();
    }

private:
    const Common::Utils::SingletonServiceGuard<UserDataRegister> m_register;
};

} // namespace DAX::Tests
