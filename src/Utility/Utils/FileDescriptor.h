#pragma once

#include <utility>

#include <unistd.h>

namespace DAX::Common::Utils {

// Owns an open descriptor of the system, or none, and closes it at its end. To make one changes no errno: whoever gets
// a descriptor from the system can look at the failure behind it.
class FileDescriptor {
public:
    FileDescriptor() = default;

    // What open() and its like return; a negative value is none.
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

    // Leaves the closing to the caller, who wants to know how it turns out.
    int release() noexcept { return std::exchange(m_descriptor, -1); }

private:
    void swap(FileDescriptor& other) noexcept { std::swap(m_descriptor, other.m_descriptor); }

    int m_descriptor = -1;
};

} // namespace DAX::Common::Utils
