#pragma once

#include <memory>
#include <mutex>
#include <set>

#include <boost/thread/thread_only.hpp>

#include "Utility/Utils/FileDescriptor.h"

namespace DAX::Common::DBUSWrapper {

// A thread that reads from connections on which nobody waits for a message. Anybody on the bus may send to a
// connection; messages that are not read there stay with the bus, up to its limit, and delay or displace the next
// reply.
//
// There is one for the process. The thread runs as long as somebody holds the reader, and takes no signals.
class IdleReader {
public:
    // Reads a connection, on the reader's thread. It must neither block nor throw, and must return after a bounded time
    // even when there is more to read. It must arm the connection again, unless the connection is closed or its owner
    // arms it later.
    class Source {
    public:
        virtual void readIdle() = 0;

    protected:
        ~Source() = default;
    };

    // A source's membership. The descriptor stays the caller's, who calls arm() and disarm() only while it is open.
    class Registration {
    public:
        // Not armed at first. Throws ErrorConnectingToDBUS when the system has no thread or descriptor left.
        Registration(int fd, Source& source);
        Registration(const Registration&) = delete;
        Registration& operator=(const Registration&) = delete;
        ~Registration(); // waits for a running readIdle() of the source

        // From now on the source is called once, as soon as there is something to read or the far end has hung up.
        void arm();
        // From now on the source is not called, except by a call that has already begun.
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
