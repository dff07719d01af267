#pragma once

#include "Common/IO/IOExceptions.h"
#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/getDebugName.h"

namespace DAX::Common::IO {

// The checks of a storage object's life: not yet opened, opened, closed. T is the class that it is mixed into, with
// open(), isOpened() and alreadyClosed().
template <class T>
class StorageHelper {
protected:
    void throwIfOpened() {
        if (self().isOpened()) {
            DAX_THROW(IOExceptions::AlreadyOpenedException(), subject());
        }
    }

    void throwIfNotOpened() {
        if (!self().isOpened()) {
            DAX_THROW(IOExceptions::NotOpenedException(), subject());
        }
    }

    void throwIfAlreadyClosed() {
        if (self().alreadyClosed()) {
            DAX_THROW(IOExceptions::AlreadyClosedException(), subject());
        }
    }

    // Comes first in each use of the object: the first use opens it, and a use after close() throws.
    void openIfNotOpened() {
        if (!self().isOpened()) {
            self().open();
        }
    }

private:
    T& self() { return static_cast<T&>(*this); }
    Utils::errinfo_subject subject() { return Utils::errinfo_subject(Utils::getDebugName(self())); }
};

} // namespace DAX::Common::IO
