#pragma once

#include <list>
#include <memory>

#include <boost/thread/thread.hpp>

#include "Platform/SystemAPI/GMainLoopAPI/UserRegisteredCallback.h"
#include "Utility/Utils/RegisterableSingleton.h"
#include "Utility/Utils/SingletonsID.h"

namespace DAX::Platform::MainLoop {

// The registered singleton behind the functions of MainLoop.h: it holds a replaceable main loop, and each operation is
// forwarded to that; none set fails an assertion. The implementations derive from it. Any thread may call, except that
// the implementation is set before other threads call.
class MainLoopSingleton : public Common::Utils::RegisterableSingleton {
public:
    static Common::Utils::SingletonsID getID() { return Common::Utils::G_MAIN_LOOP; }
    static std::list<Common::Utils::SingletonsID> getRequirements() { return {Common::Utils::USER_DATA_REGISTER}; }

    // The factory of its guard: a holder without an implementation.
    static std::shared_ptr<Common::Utils::RegisterableSingleton> create();

    ~MainLoopSingleton() override = default;

    // Starts the loop; a second call does nothing. On return the loop runs, unless it takes some six seconds.
    virtual void initialize();
    virtual bool isInitialized() const;

    // The loop's thread, which Boost keeps as its pthread_t; the default id when there is none.
    virtual boost::thread::id getMainLoopThreadId() const;

    // Runs a callback on the loop's thread: at once when that is the calling thread, else without waiting for it.
    // `data` is the UserDataRegister's id of a std::function<int ()>, which runs again for as long as it does not
    // return 0.
    virtual void dispatchInMainLoop(void* data);

    // With no function set.
    virtual std::unique_ptr<UserRegisteredCallback> createUserRegisteredCallback();

    // Destroys the earlier implementation.
    void setMainLoopImplementation(std::unique_ptr<MainLoopSingleton> implementation);

protected:
    MainLoopSingleton() = default;

private:
    void checkValidity() const;

    std::unique_ptr<MainLoopSingleton> m_implementation;
};

} // namespace DAX::Platform::MainLoop
