#pragma once

#include <map>
#include <string>
#include <vector>

namespace DAX::DAXIPC::DBUSLowLevel {

// What ServiceMethods.h and CoreMethods.h say of each method, for programs that explain messages. All of it lives as
// long as the process; any thread may read it.

struct TypeDescription;

// A value of an archive or of a record. The name does not travel.
struct FieldDescription {
    std::string name;
    const TypeDescription* type;
};

// How a value stands in an archive.
struct TypeDescription {
    enum class Form {
        FLAG,
        NUMBER,
        UNSIGNED_NUMBER,
        KIND, // of an upgrade: a number of which 8 bits count, 0 or 1
        FRACTION,
        TEXT,
        BYTES,
        POINT_IN_TIME,
        LIST,
        OPTIONAL,
        RECORD
    };

    Form form;
    std::string name;                          // as people know the type: "list of strings"
    std::map<int, std::string> names = {};     // of an enumeration's numbers; not every number has one
    const TypeDescription* element = nullptr;  // of a list or an optional
    std::vector<FieldDescription> fields = {}; // of a record, in their order on the wire
};

// What a request or a reply holds.
struct ArchiveDescription {
    bool exists; // otherwise there are no bytes, not even the header of an archive
    std::vector<FieldDescription> fields;
};

// A method, as its caller sees it.
struct MethodDescription {
    std::string name;
    ArchiveDescription request;
    ArchiveDescription reply;
};

// Whose methods they are: those of the daemon's object, or those of the update core.
enum class Side { SERVICE, CORE };

// All methods of one side.
const std::vector<MethodDescription>& methodsOf(Side side);

// Null when the side has no such method.
const MethodDescription* findMethod(Side side, const std::string& name);

// What the third array of an exception's reply holds.
const ArchiveDescription& exceptionArchive();

} // namespace DAX::DAXIPC::DBUSLowLevel
