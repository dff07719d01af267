#pragma once

#include <list>
#include <memory>

#include <boost/thread/thread_only.hpp>

#include "Platform/SystemAPI/GMainLoopAPI/UserRegisteredCallback.h"
#include "Utility/Utils/RegisterableSingleton.h"
#include "Utility/Utils/SingletonsID.h"

namespace DAX::Platform::MainLoop {

// The registered singleton behind the functions of MainLoop.h. It holds a replaceable main loop, which derives from
// this class, and forwards each operation to it; an assertion fails when there is none. Any thread may call, once the
// implementation is set.
class MainLoopSingleton : public Common::Utils::RegisterableSingleton {
public:
    // For the register: its id, and the singletons that it needs while it exists.
    static Common::Utils::SingletonsID getID() { return Common::Utils::G_MAIN_LOOP; }
    static std::list<Common::Utils::SingletonsID> getRequirements() { return {Common::Utils::USER_DATA_REGISTER}; }

    // The factory for its guard. Makes a holder without an implementation.
    static std::shared_ptr<Common::Utils::RegisterableSingleton> create();

    ~MainLoopSingleton() override = default;

    // Starts the loop; a second call does nothing. On return the loop runs, unless that takes it more than some six
    // seconds. Throws boost::thread_resource_error when there can be no thread.
    virtual void initialize();
    virtual bool isInitialized() const;

    // The loop's thread; the default id when there is none.
    virtual boost::thread::id getMainLoopThreadId() const;

    // Runs a callback on the loop's thread: at once when that is the calling thread, otherwise later, and the caller
    // does not wait. `data` is the UserDataRegister's id of a std::function<int ()>, which runs again and again until
    // it returns 0.
    virtual void dispatchInMainLoop(void* data);

    // Makes a callback with no function set; the caller owns it.
    virtual std::unique_ptr<UserRegisteredCallback> createUserRegisteredCallback();

    // Takes the implementation over and destroys the earlier one. Not while another thread calls.
    void setMainLoopImplementation(std::unique_ptr<MainLoopSingleton> implementation);

protected:
    MainLoopSingleton() = default;

private:
    void checkValidity() const;

    std::unique_ptr<MainLoopSingleton> m_implementation;
};

} // namespace DAX::Platform::MainLoop
