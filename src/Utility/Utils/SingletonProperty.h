#pragma once

#include <mutex>

#include <boost/core/noncopyable.hpp>

#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX::Common::Utils {

// A base of T that allows only one T at a time: the constructor throws GenericException when another T exists. Any
// thread may create and destroy.
template <class T>
class SingletonProperty : private boost::noncopyable {
protected:
    SingletonProperty() { updateInstanceCounter(true); }
    ~SingletonProperty() { updateInstanceCounter(false); }

private:
    static void updateInstanceCounter(bool created) {
        const std::lock_guard<std::mutex> lock(s_mutex);
        if (created && isCreated) {
            DAX_THROW(GenericException(), "Object of this type is already created. It should never happen!");
        }
        isCreated = created;
    }

    static bool isCreated;
    static std::mutex s_mutex; // guards isCreated
};

template <class T>
bool SingletonProperty<T>::isCreated = false;

template <class T>
std::mutex SingletonProperty<T>::s_mutex;

} // namespace DAX::Common::Utils
