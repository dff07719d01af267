#pragma once

#include <list>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include <boost/date_time/posix_time/ptime.hpp>
#include <boost/optional.hpp>

#include "CoreInterface/SearchResult.h"
#include "CoreInterface/SearchingTransactionParameters.h"
#include "CoreInterface/TransactionProgress.h"
#include "DAXCommon/ServiceClientPriority.h"
#include "DAXCommon/UpgradeTypeNames.h"
#include "DAXIPC/DBUSLowLevel/Decoder/MethodDescription.h"
#include "ServiceInterface/ServiceSearchResult.h"
#include "ServiceInterface/ServiceTransactionProgress.h"

// From the C++ types of the methods' descriptions to TypeDescription.
namespace DAX::DAXIPC::DBUSLowLevel {

template <class T>
TypeDescription describe();

// One object for each type: a class of an archive is known again by its address.
template <class T>
const TypeDescription& typeOf() {
    static const TypeDescription type = describe<T>();
    return type;
}

using TypeForm = TypeDescription::Form;

inline TypeDescription plain(TypeForm form, const char* name) {
    return {form, name};
}

template <class T>
struct Described {};

template <>
struct Described<bool> {
    static TypeDescription type() { return plain(TypeForm::FLAG, "bool"); }
};
template <>
struct Described<int> {
    static TypeDescription type() { return plain(TypeForm::NUMBER, "int"); }
};
template <>
struct Described<unsigned int> {
    static TypeDescription type() { return plain(TypeForm::UNSIGNED_NUMBER, "unsigned int"); }
};
template <>
struct Described<float> {
    static TypeDescription type() { return plain(TypeForm::FRACTION, "float"); }
};
template <>
struct Described<std::string> {
    static TypeDescription type() { return plain(TypeForm::TEXT, "string"); }
};
template <>
struct Described<std::vector<unsigned char>> {
    static TypeDescription type() { return plain(TypeForm::BYTES, "bytes"); }
};
template <>
struct Described<boost::posix_time::ptime> {
    static TypeDescription type() { return plain(TypeForm::POINT_IN_TIME, "point in time"); }
};

template <>
struct Described<DAXCommon::UpgradeKind> {
    static TypeDescription type() { return {TypeForm::KIND, "UpgradeKind", {{0, "REGULAR"}, {1, "IMPORTANT"}}}; }
};
template <>
struct Described<DAXCommon::ServiceClientPriority> {
    static TypeDescription type() { return plain(TypeForm::NUMBER, "ServiceClientPriority"); }
};
template <>
struct Described<DAXCommon::ServiceTransactionType> {
    static TypeDescription type() { return plain(TypeForm::NUMBER, "ServiceTransactionType"); }
};
template <>
struct Described<DAXCommon::UpgradeType> {
    static TypeDescription type() {
        TypeDescription type = plain(TypeForm::NUMBER, "UpgradeType");
        for (const auto& [number, name] : DAXCommon::upgradeTypeNames()) {
            type.names[number] = name;
        }
        return type;
    }
};

inline TypeDescription resultType(const char* name) {
    return {TypeForm::NUMBER, name, {{0, "UNDEFINED"}, {1, "IN_PROGRESS"}, {2, "SUCCESS"}, {3, "FAILED"}}};
}
template <>
struct Described<Core::ETransactionResult> {
    static TypeDescription type() { return resultType("ETransactionResult"); }
};
template <>
struct Described<Service::EServiceTransactionResult> {
    static TypeDescription type() { return resultType("EServiceTransactionResult"); }
};

template <class Element>
TypeDescription listOf(const char* container) {
    const TypeDescription& element = typeOf<Element>();
    return {TypeForm::LIST, container + (" of " + element.name), {}, &element};
}
template <class Element>
struct Described<std::vector<Element>> {
    static TypeDescription type() { return listOf<Element>("list"); }
};
template <class Element>
struct Described<std::list<Element>> {
    static TypeDescription type() { return listOf<Element>("list"); }
};
template <class Element>
struct Described<std::set<Element>> {
    static TypeDescription type() { return listOf<Element>("set"); }
};
template <class Value>
struct Described<boost::optional<Value>> {
    static TypeDescription type() {
        const TypeDescription& value = typeOf<Value>();
        return {TypeForm::OPTIONAL, "optional " + value.name, {}, &value};
    }
};

template <class Record>
TypeDescription recordOf(const char* name) {
    TypeDescription type = plain(TypeForm::RECORD, name);
    Record record;
    Record::forEachField(record, [&type](const char* fieldName, const auto& field) {
        type.fields.push_back({fieldName, &typeOf<std::decay_t<decltype(field)>>()});
    });
    return type;
}
template <>
struct Described<Core::SearchingTransactionParameters> {
    static TypeDescription type() {
        return recordOf<Core::SearchingTransactionParameters>("SearchingTransactionParameters");
    }
};
template <>
struct Described<Core::TransactionProgress> {
    static TypeDescription type() { return recordOf<Core::TransactionProgress>("TransactionProgress"); }
};
template <>
struct Described<Core::SearchResult> {
    static TypeDescription type() { return recordOf<Core::SearchResult>("SearchResult"); }
};
template <>
struct Described<Service::ServiceTransactionProgress> {
    static TypeDescription type() {
        return recordOf<Service::ServiceTransactionProgress>("ServiceTransactionProgress");
    }
};
template <>
struct Described<Service::ServiceSearchResult> {
    static TypeDescription type() { return recordOf<Service::ServiceSearchResult>("ServiceSearchResult"); }
};
template <>
struct Described<Service::SingleUpgradeDescription> {
    static TypeDescription type() { return recordOf<Service::SingleUpgradeDescription>("SingleUpgradeDescription"); }
};

template <class T>
TypeDescription describe() {
    return Described<T>::type();
}

} // namespace DAX::DAXIPC::DBUSLowLevel
