#include "DAXIPC/DBUSLowLevel/Decoder/MethodDescription.h"

#include <tuple>

#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/CoreMethods.h"
#include "DAXIPC/DBUSLowLevel/DBUSLowLevelCommon/ServiceMethods.h"
#include "DAXIPC/DBUSLowLevel/Decoder/Implementation/DescribedTypes.h"

namespace DAX::DAXIPC::DBUSLowLevel {

namespace {

template <class... Values>
ArchiveDescription describeArchive(const Archive<Values...>& archive) {
    ArchiveDescription description{true, {}};
    [[maybe_unused]] auto name = archive.names.begin(); // used by nothing without values
    (description.fields.push_back({*name++, &typeOf<Values>()}), ...);
    return description;
}

ArchiveDescription describeArchive(NoArchive) {
    return {false, {}};
}

template <class Methods>
std::vector<MethodDescription> describeAll(const Methods& methods) {
    return std::apply(
        [](const auto&... method) {
            return std::vector<MethodDescription>{
                {method.name, describeArchive(method.request), describeArchive(method.reply)}...};
        },
        methods);
}

} // namespace

const std::vector<MethodDescription>& methodsOf(Side side) {
    static const std::vector<MethodDescription> service = describeAll(ServiceMethods::ALL);
    static const std::vector<MethodDescription> core = describeAll(CoreMethods::ALL);
    return side == Side::SERVICE ? service : core;
}

const MethodDescription* findMethod(Side side, const std::string& name) {
    for (const MethodDescription& method : methodsOf(side)) {
        if (method.name == name) {
            return &method;
        }
    }
    return nullptr;
}

const ArchiveDescription& exceptionArchive() {
    // The exceptions have no fields, so that one record without any stands for each of them.
    static const TypeDescription object = plain(TypeForm::RECORD, "exception");
    static const ArchiveDescription archive{
        true,
        {{"supportCode", &typeOf<std::string>()}, {"diagnostic", &typeOf<std::string>()}, {"exception", &object}}};
    return archive;
}

} // namespace DAX::DAXIPC::DBUSLowLevel
