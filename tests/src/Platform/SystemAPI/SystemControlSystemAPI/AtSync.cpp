#include "AtSync.h"

namespace {

std::function<void()> atSync;

} // namespace

extern "C" {

void __real_sync();

void __wrap_sync() {
    if (atSync) {
        atSync();
    } else {
        __real_sync();
    }
}
}

namespace DAX::Tests {

AtSync::AtSync(const std::function<void()>& event) {
    atSync = event;
}

AtSync::~AtSync() {
    atSync = nullptr;
}

} // namespace DAX::Tests
