#pragma once

#include <utility>

#include <unistd.h>

namespace DAX::Common::Utils {

// Owns an open file descriptor, or none, and closes it in its destructor. The constructor leaves errno alone, so the
// caller can look at it when the system call before has failed. One thread at a time.
class FileDescriptor {
public:
    FileDescriptor() = default;

    // Takes the result of open() and the like; a negative value means none.
    explicit FileDescriptor(int descriptor) noexcept : m_descriptor(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : m_descriptor(other.release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        FileDescriptor(std::move(other)).swap(*this);
        return *this;
    }
    ~FileDescriptor() {
        if (isOpen()) {
            ::close(m_descriptor);
        }
    }

    bool isOpen() const noexcept { return m_descriptor >= 0; }
    int get() const noexcept { return m_descriptor; }

    // Gives the descriptor to the caller, who closes it and sees whether that succeeds.
    int release() noexcept { return std::exchange(m_descriptor, -1); }

private:
    void swap(FileDescriptor& other) noexcept { std::swap(m_descriptor, other.m_descriptor); }

    int m_descriptor = -1;
};

} // namespace DAX::Common::Utils
