#include "Common/DBUSWrapper/Implementation/IdleReader.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>

#include <pthread.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "Common/DBUSWrapper/DBUSWrapperExceptions.h"
#include "Utility/Utils/BlockedSignals.h"
#include "Utility/Utils/ErrInfoStream.h"

namespace DAX::Common::DBUSWrapper {

namespace {

sigset_t allSignals() {
    sigset_t all;
    sigfillset(&all);
    return all;
}

[[noreturn]] void throwCannotRead(int error) {
    DAX_THROW(DBUSWrapperExceptions::ErrorConnectingToDBUS(),
              "Connections cannot be read: " << Utils::errinfo_errno(error));
}

// Owns a descriptor that the system returned, or throws.
Utils::FileDescriptor owned(int fd) {
    if (fd < 0) {
        throwCannotRead(errno);
    }
    return Utils::FileDescriptor(fd);
}

} // namespace

IdleReader::IdleReader()
    : m_stop(owned(eventfd(0, EFD_CLOEXEC))), m_poll(owned(epoll_create1(EPOLL_CLOEXEC))), m_process(getpid()) {
    epoll_event stop{};
    stop.events = EPOLLIN;
    if (epoll_ctl(m_poll.get(), EPOLL_CTL_ADD, m_stop.get(), &stop) != 0) {
        throwCannotRead(errno);
    }
    const Utils::BlockedSignals blocked(allSignals()); // inherited by the thread, which must take none
    try {
        m_thread = boost::thread([this] { run(); });
    } catch (const boost::thread_resource_error& error) {
        throwCannotRead(error.code().value());
    }
}

IdleReader::~IdleReader() {
    if (isInForkedChild()) {
        m_thread.detach();
        return;
    }
    const std::uint64_t one = 1;
    if (write(m_stop.get(), &one, sizeof(one)) == sizeof(one)) {
        const boost::this_thread::disable_interruption uninterrupted;
        m_thread.join();
    }
}

std::shared_ptr<IdleReader> IdleReader::shared() {
    static std::mutex mutex;
    static std::weak_ptr<IdleReader> existing;
    const std::lock_guard<std::mutex> lock(mutex);
    std::shared_ptr<IdleReader> reader = existing.lock();
    if (reader == nullptr || reader->isInForkedChild()) {
        reader = std::make_shared<IdleReader>();
        existing = reader;
    }
    return reader;
}

void IdleReader::add(int fd, Source& source) {
    epoll_event none{};
    none.events = EPOLLONESHOT;
    none.data.ptr = &source;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_sources.insert(&source);
    if (epoll_ctl(m_poll.get(), EPOLL_CTL_ADD, fd, &none) != 0) {
        const int error = errno;
        m_sources.erase(&source);
        throwCannotRead(error);
    }
}

void IdleReader::remove(Source& source) {
    if (!isInForkedChild()) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_sources.erase(&source);
    }
}

// The thread exists only in the parent, and may have held the mutex when the process forked.
bool IdleReader::isInForkedChild() const {
    return getpid() != m_process;
}

void IdleReader::run() {
    pthread_setname_np(pthread_self(), "dbus reader");
    std::array<epoll_event, 16> events{};
    for (;;) {
        const int count = epoll_wait(m_poll.get(), events.data(), static_cast<int>(events.size()), -1);
        for (std::size_t i = 0; static_cast<int>(i) < count; ++i) {
            if (events.at(i).data.ptr == nullptr) {
                return;
            }
            read(events.at(i).data.ptr);
        }
    }
}

// The source may have been removed since the event.
void IdleReader::read(void* source) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_sources.count(source) != 0) {
        static_cast<Source*>(source)->readIdle();
    }
}

IdleReader::Registration::Registration(int fd, Source& source) : m_reader(shared()), m_fd(fd), m_source(source) {
    m_reader->add(m_fd, m_source);
}

IdleReader::Registration::~Registration() {
    m_reader->remove(m_source);
}

void IdleReader::Registration::arm() {
    change(EPOLLIN | EPOLLONESHOT);
}

void IdleReader::Registration::disarm() {
    change(EPOLLONESHOT);
}

void IdleReader::Registration::change(unsigned int events) {
    epoll_event change{};
    change.events = events;
    change.data.ptr = &m_source;
    epoll_ctl(m_reader->m_poll.get(), EPOLL_CTL_MOD, m_fd, &change);
}

} // namespace DAX::Common::DBUSWrapper
