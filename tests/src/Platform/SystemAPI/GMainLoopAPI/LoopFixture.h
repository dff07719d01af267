#pragma once

#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <boost/thread/thread.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/SystemAPI/GMainLoopAPI/MainLoop.h"
#include "Platform/SystemAPI/GMainLoopAPI/MainLoopSingleton.h"
#include "Utility/Utils/SingletonServiceGuard.h"
#include "Utility/Utils/UserDataRegister.h"
#include "support/FakeKovan.h"

namespace DAX::Tests {

inline Common::Utils::SingletonsRegister& theRegister() {
    return Common::Utils::SingletonsRegister::getSingletonsRegister();
}

inline std::string inWords(boost::thread::id id) {
    std::ostringstream text;
    text << id;
    return text.str();
}

// A function that is registered for as long as this lives.
class Registration {
public:
    explicit Registration(std::function<int()> function,
                          const boost::optional<boost::thread::id>& executor = boost::none)
        : m_function(std::move(function)), m_id(reg()->registerUserData(&m_function, executor)) {}
    ~Registration() { reg()->unregisterUserData(m_id); }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

    void* id() const { return m_id; }

private:
    static Common::Utils::SingletonPointer<Common::Utils::UserDataRegister> reg() {
        using Common::Utils::UserDataRegister;
        return theRegister().getService<UserDataRegister>("Registration", UserDataRegister::getID());
    }

    std::function<int()> m_function;
    void* const m_id;
};

// The log lines of a loop at its start and at its end.
inline std::vector<std::string> startOf(boost::thread::id loop) {
    return {"log INF GLoopService::GLoopService(): Starting.",
            "log INF Changed name of thread " + inWords(loop) + " to GMainLoop_thread.",
            "log INF GLoopService::LoopThreadFunction(): Starting.",
            "log INF GLoopService::GLoopService(): Started thead id: " + inWords(loop)};
}
inline std::vector<std::string> endOfALoop() {
    return {"log INF GLoopService closing.", //
            "log INF GLoopService::LoopThreadFunction(): Stopped.", "log INF GLoopService closed."};
}

// The two singletons, as main makes them, without an implementation of the loop. The journal begins after that.
class LoopFixture : public testing::Test {
protected:
    using UserDataRegister = Common::Utils::UserDataRegister;
    using MainLoopSingleton = Platform::MainLoop::MainLoopSingleton;
    template <class T>
    using Guard = Common::Utils::SingletonServiceGuard<T>;

    LoopFixture() { FakeKovan::forgetRecords(); }

    static Common::Utils::SingletonPointer<MainLoopSingleton> mainLoop() {
        return theRegister().getService<MainLoopSingleton>("test", MainLoopSingleton::getID());
    }

    const Guard<UserDataRegister> userDataRegister;
    const Guard<MainLoopSingleton> mainLoopGuard{MainLoopSingleton::create};
};

} // namespace DAX::Tests
