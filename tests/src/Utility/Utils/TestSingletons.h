#pragma once

#include <list>

#include "Utility/Utils/RegisterableSingleton.h"
#include "Utility/Utils/SingletonsID.h"
#include "Utility/Utils/SingletonsRegister.h"
#include "support/FakeKovan.h"

namespace DAX::Tests {

// A registered singleton that notes its creation and its end in the journal: "construct DUMMY_SINGLETON", "destroy
// DUMMY_SINGLETON".
template <Common::Utils::SingletonsID ID, Common::Utils::SingletonsID... REQUIRED>
class TestSingleton : public Common::Utils::RegisterableSingleton {
public:
    static Common::Utils::SingletonsID getID() { return ID; }
    static std::list<Common::Utils::SingletonsID> getRequirements() { return {REQUIRED...}; }

    ~TestSingleton() override { note("destroy "); }

    int answer() const { return 42; }

protected:
    TestSingleton() { note("construct "); }

private:
    static void note(const char* what) { FakeKovan::note(what + Common::Utils::singletonsIdToString(ID)); }
};

using Base = TestSingleton<Common::Utils::DUMMY_SINGLETON>;
using Dependent = TestSingleton<Common::Utils::DEPENDENT_DUMMY_SINGLETON, Common::Utils::DUMMY_SINGLETON>;

inline Common::Utils::SingletonsRegister& theRegister() {
    return Common::Utils::SingletonsRegister::getSingletonsRegister();
}

// Marks and unmarks a need, as a guard does.
template <class T>
void mark() {
    theRegister().markNeeded<T>(T::getID(), Common::Utils::SingletonsRegister::defaultFactory<T>);
}
template <class T>
void unmark() {
    theRegister().unmarkNeeded(T::getID());
}

template <class T>
Common::Utils::SingletonPointer<T> service(const std::string& user) {
    return theRegister().getService<T>(user, T::getID());
}

} // namespace DAX::Tests
