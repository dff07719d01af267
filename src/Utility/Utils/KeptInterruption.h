#pragma once

namespace DAX::Common::Utils {

// An interruption of this thread (boost::thread_interrupted) that was caught where no exception may pass. It is kept
// there and raised again where the thread can end: otherwise it would be lost, and who waits for the thread would wait
// for ever.
class KeptInterruption {
public:
    // Inside a catch block. Keeps the exception being handled when it is an interruption.
    static void keep();

    // Throws boost::thread_interrupted when one is kept by this thread, once.
    static void raise();
};

} // namespace DAX::Common::Utils
