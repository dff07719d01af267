// Takes any bytes as the parameters of any method while there is a session and a transaction. Exactly one answer comes:
// a result, or one of the exceptions that a client can read.
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "DAXCommon/UserInterestExceptions.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/StandardExceptionHandler.h"
#include "HandleRequestInput.h"
#include "support/LiveService.h"
#include "support/TemporaryRoot.h"

namespace {

using namespace DAX;

[[noreturn]] void fail(const std::string& what, const Tests::Reply& reply) {
    std::fprintf(stderr, "%s: {%s} {%s}\n", what.c_str(), reply.exceptionName.c_str(), reply.archive.c_str());
    std::abort();
}

// Reads the exception as a client's end does, by its type. An archive that cannot be read would come out as another
// exception.
void checkException(const std::string& method, const Tests::Reply& reply) {
    if (Tests::wireExceptionNames().count(reply.exceptionName) == 0) {
        fail("an exception without a name of its own", reply);
    }
    try {
        std::stringstream archive(reply.archive);
        DAXIPC::DBUSLowLevel::StandardExceptionHandler::unwrapException(method, reply.exceptionName, archive);
    } catch (const UserInterestExceptions::UserInterestException&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    setenv("KOVAN_DLOG", "none", 1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    static const Tests::TemporaryRoot root;
    static Tests::LiveService service;
    const Fuzz::RequestInput input = Fuzz::readRequestInput(data, size);
    const Tests::Reply reply = service.call(input.method, input.caller, input.parameters);
    if (!reply.normal) {
        checkException(input.method.name, reply);
    }
    service.restore();
    return 0;
}
