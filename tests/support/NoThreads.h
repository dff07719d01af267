#pragma once

#include <cstddef>

#include <pthread.h>

namespace DAX::Tests {

// While the object lives, no thread can be made, since its stack would have to be larger than any memory.
class NoThreads {
public:
    NoThreads() {
        pthread_getattr_default_np(&m_previous);
        pthread_attr_t attributes;
        pthread_getattr_default_np(&attributes);
        pthread_attr_setstacksize(&attributes, LARGER_THAN_ANY_MEMORY);
        pthread_setattr_default_np(&attributes);
        pthread_attr_destroy(&attributes);
    }
    ~NoThreads() {
        pthread_setattr_default_np(&m_previous);
        pthread_attr_destroy(&m_previous);
    }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

private:
    static constexpr std::size_t LARGER_THAN_ANY_MEMORY = std::size_t(1) << (sizeof(std::size_t) == 4 ? 31 : 50);

    pthread_attr_t m_previous;
};

} // namespace DAX::Tests
