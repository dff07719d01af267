#pragma once

namespace DAX::Common::Utils {

// An interruption of this thread (boost::thread_interrupted) that was caught where no exception may pass. It is kept
// there, and thrown again where the thread can end; if it were lost, whoever waits for the thread would wait for ever.
// Each thread has its own.
class KeptInterruption {
public:
    // Only inside a catch block: keeps the exception being handled if it is an interruption.
    static void keep();

    // Throws boost::thread_interrupted if this thread has kept one, and forgets it.
    static void raise();
};

} // namespace DAX::Common::Utils
