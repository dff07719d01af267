#pragma once

#include <memory>
#include <mutex>
#include <set>

#include <boost/thread/thread.hpp>

#include "Utility/Utils/FileDescriptor.h"

namespace DAX::Common::DBUSWrapper {

// A thread that reads from connections on which nobody waits for anything. Anybody on a bus may send to a connection.
// What is not read there stays with the bus, up to its limit, and stands before the next reply, or keeps it out.
//
// One for the process. The thread runs while somebody holds the reader, and takes no signals.
class IdleReader {
public:
    // What reads a connection, on the reader's thread. Neither blocks nor throws, and returns after a bounded time even
    // when there is more. Has to arm the connection again unless it is closed or its owner does so later.
    class Source {
    public:
        virtual void readIdle() = 0;

    protected:
        ~Source() = default;
    };

    // A source's membership. The descriptor is the caller's, who uses `arm` and `disarm` only while it is open.
    class Registration {
    public:
        // Not armed at first. Throws ErrorConnectingToDBUS when the system has no thread or descriptor left.
        Registration(int fd, Source& source);
        Registration(const Registration&) = delete;
        Registration& operator=(const Registration&) = delete;
        ~Registration(); // waits until the source's readIdle is over

        // From now on the source is called once when there is something to read, or the far end has hung up.
        void arm();
        // From now on it is not called, but for a call that is on its way already.
        void disarm();

    private:
        void change(unsigned int events);

        const std::shared_ptr<IdleReader> m_reader;
        const int m_fd;
        Source& m_source;
    };

    IdleReader();
    IdleReader(const IdleReader&) = delete;
    IdleReader& operator=(const IdleReader&) = delete;
    ~IdleReader();

private:
    static std::shared_ptr<IdleReader> shared();
    void add(int fd, Source& source);
    void remove(Source& source);
    bool isInForkedChild() const;
    void run();
    void read(void* source);

    const Utils::FileDescriptor m_stop; // an eventfd
    const Utils::FileDescriptor m_poll; // an epoll instance
    const int m_process;
    std::mutex m_mutex;        // held while a source reads
    std::set<void*> m_sources; // guarded by m_mutex
    boost::thread m_thread;
};

} // namespace DAX::Common::DBUSWrapper
