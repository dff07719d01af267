#pragma once

namespace DAX::DAXCommon {

// The rank of a client: a greater value outranks a lesser one, compared as signed integers. Clients choose their own;
// only the named values have a meaning here.
enum ServiceClientPriority : int {
    PRIORITY_NO_SESSION = -1, // what the settings key of the current priority holds when there is no session
    PRIORITY_MAIN_APP = 4     // the rank of the main update application: a lock of this rank or above blocks it
};

} // namespace DAX::DAXCommon
