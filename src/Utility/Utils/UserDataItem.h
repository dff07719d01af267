#pragma once

#include <mutex>

#include <boost/core/noncopyable.hpp>
#include <boost/optional.hpp>
#include <boost/thread/thread_only.hpp>

namespace DAX::Common::Utils {

// What an id of the UserDataRegister stands for: borrowed data, and the only thread that may reach it. Whoever reads or
// removes the data holds the data mutex, for as long as the data is used.
class UserDataItem : private boost::noncopyable {
public:
    UserDataItem(void* data, const boost::optional<boost::thread::id>& expectedExecutor);

    std::mutex& dataMutex() { return m_dataMutex; }

    // After this, getData() is empty.
    void removeData();

    // The data; empty once it was removed. On software that is not for production, it is an assertion failure on any
    // thread but the expected one.
    boost::optional<void*> getData();

private:
    std::mutex m_dataMutex; // guards m_data
    boost::optional<void*> m_data;
    const boost::optional<boost::thread::id> m_expectedExecutor;
};

} // namespace DAX::Common::Utils
