#include "PowerFile.h"

#include <memory>

#include "KnownFile.h"

namespace KovanHost {

namespace {

KnownFile<Power>& file() {
    using File = KnownFile<Power>;
    static File& known = *std::make_unique<File>(File::Form{"run/kovan/power.ini", parsePower, textOf},
                                                 File::KEEPS_WHAT_WAS_KNOWN)
                              .release(); // outlives static destructors
    return known;
}

} // namespace

std::string powerPath() {
    return file().path();
}

Power loadPower() {
    return file().load();
}

Power knownPower() {
    return file().known();
}

void changePower(const std::function<void(Power&)>& change) {
    file().changeEvenIfBad(change);
}

} // namespace KovanHost
