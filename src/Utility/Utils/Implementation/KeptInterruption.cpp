#include "Utility/Utils/KeptInterruption.h"

#include <utility>

#include <boost/thread/exceptions.hpp>

namespace DAX::Common::Utils {
namespace {

thread_local bool isKept = false;

} // namespace

void KeptInterruption::keep() {
    try {
        // Rethrows what the caller's catch block handles.
        throw;
    } catch (const boost::thread_interrupted&) {
        isKept = true;
    } catch (...) {
    }
}

void KeptInterruption::raise() {
    if (std::exchange(isKept, false)) {
        throw boost::thread_interrupted();
    }
}

} // namespace DAX::Common::Utils
