#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "support/ServiceContract.h"

// An input of the target bus_messages: a sequence of records, each of which is a step of a peer on the bus. A record
// has five bytes, followed by the body, whose length is in the fifth byte:
//   0  bits 0-1 the peer; bits 2-4: 7 it leaves the bus, else it sends a message
//   1  bits 0-1 the type (BusMessageType), bit 2 no reply is wanted, bit 3 no automatic start, bits 4-6 the BusBody
//   2  the member, an index of busMembers()
//   3  bits 0-1 the path, bits 2-4 the interface, bits 5-7 the destination
// A record that is cut off counts with the bytes that it has.
namespace DAX::Fuzz {

constexpr std::size_t BUS_PEERS = 4;

enum class BusMessageType { CALL, SIGNAL, ERROR, RETURN };
enum class BusBody { BYTES, NOTHING, TEXT, NAMES, TWO_BYTE_ARRAYS, NUMBER, DESCRIPTOR, OTHER_ARRAY };
enum class BusPath { SERVICE, BELOW_SERVICE, BUS, ROOT };
enum class BusInterface { SERVICE, NONE, INTROSPECTABLE, PROPERTIES, PEER, BUS, OTHER, OTHER_TOO };
enum class BusDestination { SERVICE, SERVICE_UNIQUE, NONE, BUS, PEER_0, PEER_1, PEER_2, PEER_3 };

struct BusStep {
    std::size_t peer = 0;
    bool leaves = false;
    BusMessageType type = BusMessageType::CALL;
    bool noReply = false;
    bool noAutoStart = false;
    BusBody bodyKind = BusBody::BYTES;
    std::string member;
    BusPath path = BusPath::SERVICE;
    BusInterface interface = BusInterface::SERVICE;
    BusDestination destination = BusDestination::SERVICE;
    std::string body;
};

// The methods of the service, followed by other members that are used on the bus.
inline const std::vector<std::string>& busMembers() {
    static const std::vector<std::string> members = [] {
        std::vector<std::string> names;
        for (const Tests::ServiceMethod& method : Tests::serviceMethods()) {
            names.push_back(method.name);
        }
        for (const char* name : {"NameOwnerChanged", "NameAcquired", "NameLost", "Introspect", "GetAll", "Ping",
                                 "GetMachineId", "Hello", "stopTransaction"}) {
            names.push_back(name);
        }
        return names;
    }();
    return members;
}

constexpr std::size_t BUS_STEP_HEADER = 5;

inline std::vector<BusStep> readBusSteps(const std::uint8_t* data, std::size_t size) {
    std::vector<BusStep> steps;
    std::size_t position = 0;
    while (position < size) {
        std::array<std::uint8_t, BUS_STEP_HEADER> header{};
        for (std::size_t i = 0; i < header.size() && position < size; ++i) {
            header[i] = data[position++];
        }
        BusStep step;
        step.peer = header[0] % BUS_PEERS;
        step.leaves = header[0] / 4 % 8 == 7;
        step.type = static_cast<BusMessageType>(header[1] % 4);
        step.noReply = (header[1] & 4) != 0;
        step.noAutoStart = (header[1] & 8) != 0;
        step.bodyKind = static_cast<BusBody>(header[1] / 16 % 8);
        step.member = busMembers()[header[2] % busMembers().size()];
        step.path = static_cast<BusPath>(header[3] % 4);
        step.interface = static_cast<BusInterface>(header[3] / 4 % 8);
        step.destination = static_cast<BusDestination>(header[3] / 32);
        const std::size_t length = std::min<std::size_t>(header[4], size - position);
        step.body.assign(data + position, data + position + length);
        position += length;
        steps.push_back(step);
    }
    return steps;
}

// The record that stands for this step.
inline std::string makeBusStep(const BusStep& step) {
    std::size_t member = 0;
    while (busMembers()[member] != step.member && member + 1 < busMembers().size()) {
        ++member;
    }
    const std::array<std::size_t, BUS_STEP_HEADER> header{
        step.peer + (step.leaves ? 7 * 4 : 0),
        static_cast<std::size_t>(step.type) + (step.noReply ? 4 : 0) + (step.noAutoStart ? 8 : 0) +
            16 * static_cast<std::size_t>(step.bodyKind),
        member,
        static_cast<std::size_t>(step.path) + 4 * static_cast<std::size_t>(step.interface) +
            32 * static_cast<std::size_t>(step.destination),
        step.body.size()};
    std::string record;
    for (const std::size_t byte : header) {
        record += static_cast<char>(byte);
    }
    return record + step.body;
}

} // namespace DAX::Fuzz
