#include "DAXIPC/DBUSLowLevel/Decoder/MethodDescription.h"

#include <algorithm>
#include <numeric>
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

// How many letters have to be changed, added or removed to make one text of the other; upper case is as lower case.
std::size_t distance(const std::string& left, const std::string& right) {
    const auto lower = [](char letter) { return letter >= 'A' && letter <= 'Z' ? letter - 'A' + 'a' : int(letter); };
    std::vector<std::size_t> row(right.size() + 1);
    std::iota(row.begin(), row.end(), 0U);
    for (std::size_t i = 0; i < left.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < right.size(); ++j) {
            const std::size_t changed = diagonal + (lower(left[i]) == lower(right[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
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

std::string nearestMethod(Side side, const std::string& name) {
    const std::size_t longestSensible = 100;
    if (name.size() > longestSensible) {
        return {};
    }
    std::string nearest;
    std::size_t least = name.size() / 2 + 1; // with more changes it is another word
    for (const MethodDescription& method : methodsOf(side)) {
        const std::size_t changes = distance(name, method.name);
        if (changes < least) {
            least = changes;
            nearest = method.name;
        }
    }
    return nearest;
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
