// make_corpus TARGET FOLDER: writes the seeds of the fuzz target there.
#include <algorithm>
#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "BusMessagesInput.h"
#include "DecoderInput.h"
#include "HandleRequestInput.h"
#include "SerializersInput.h"
#include "VerifyChecksumInput.h"
#include "host/DeviceFacts.h"
#include "support/DebugFile.h"
#include "support/WireGoldens.h"

namespace {

using Seeds = std::map<std::string, std::string>; // by the names of their files

// One good call of each method.
Seeds handleRequestSeeds() {
    const auto& methods = DAX::Tests::serviceMethods();
    Seeds seeds;
    for (std::size_t index = 0; index < methods.size(); ++index) {
        const std::string request = DAX::Tests::golden("service/" + methods[index].name + ".request");
        seeds[methods[index].name] = DAX::Fuzz::makeRequestInput(index, request);
    }
    return seeds;
}

DAX::Fuzz::BusStep busCall(std::size_t peer, const std::string& method) {
    DAX::Fuzz::BusStep step;
    step.peer = peer;
    step.member = method;
    step.body = DAX::Tests::golden("service/" + method + ".request");
    return step;
}

DAX::Fuzz::BusStep busLeave(std::size_t peer) {
    DAX::Fuzz::BusStep step;
    step.peer = peer;
    step.leaves = true;
    return step;
}

std::string busInput(const std::vector<DAX::Fuzz::BusStep>& steps) {
    std::string input;
    for (const DAX::Fuzz::BusStep& step : steps) {
        input += DAX::Fuzz::makeBusStep(step);
    }
    return input;
}

// One good call of each method by its rightful connection, with all that has to come before it, and in each other form
// that a message can have.
Seeds busMessagesSeeds() {
    using namespace DAX::Fuzz;
    std::vector<BusStep> all;
    for (const DAX::Tests::ServiceMethod& method : DAX::Tests::serviceMethods()) {
        all.push_back(busCall(static_cast<std::size_t>(method.caller), method.name));
    }
    Seeds seeds{{"allMethods", busInput(all)},
                {"deadOwner", busInput({busCall(0, "getService"), busLeave(0), busCall(1, "getService")})},
                {"locks", busInput({busCall(0, "acquireExternalLock"), busCall(1, "getService"),
                                    busCall(0, "releaseExternalLock"), busCall(1, "getService")})},
                {"session", busInput({busCall(0, "getService"), busCall(1, "helloMessage"),
                                      busCall(1, "getClientPriority"), busCall(1, "startNewTransaction"),
                                      busCall(1, "invalidate"), busLeave(1), busCall(0, "getServiceOwner")})}};
    for (unsigned int form = 0; form < 128; ++form) {
        BusStep step = busCall(0, "getService");
        step.type = static_cast<BusMessageType>(form % 4);
        step.noReply = form / 4 % 2 == 1;
        step.noAutoStart = form / 8 % 2 == 1;
        step.bodyKind = static_cast<BusBody>(form / 16);
        seeds["form" + std::to_string(form)] = busInput({step, busCall(1, "getServiceOwner")});
    }
    for (unsigned int place = 0; place < 256; ++place) {
        BusStep step = busCall(1, "getServiceOwner");
        step.path = static_cast<BusPath>(place % 4);
        step.interface = static_cast<BusInterface>(place / 4 % 8);
        step.destination = static_cast<BusDestination>(place / 32);
        seeds["place" + std::to_string(place)] = busInput({busCall(0, "getService"), step});
    }
    for (const char* signal : {"NameOwnerChanged", "NameAcquired"}) {
        BusStep step;
        step.peer = 1;
        step.type = BusMessageType::SIGNAL;
        step.member = signal;
        step.bodyKind = BusBody::NAMES;
        step.interface = BusInterface::BUS;
        step.path = BusPath::BUS;
        step.body = std::string("\0\0\4", 3);
        seeds[signal] = busInput({busCall(0, "getService"), step, busCall(0, "getServiceOwner"), busLeave(0)});
    }
    return seeds;
}

// One good archive of each method and direction, and of an exception.
Seeds decoderSeeds() {
    using DAX::Fuzz::DecoderChoice;
    Seeds seeds;
    const auto& choices = DAX::Fuzz::decoderChoices();
    for (std::size_t index = 0; index < choices.size(); ++index) {
        const DecoderChoice& choice = choices[index];
        std::string name = choice.golden;
        std::replace(name.begin(), name.end(), '/', '.');
        seeds[name] = DAX::Fuzz::makeDecoderInput(index, DAX::Tests::golden(choice.golden));
    }
    return seeds;
}

// The good files, and ones that end too early.
Seeds debugParametersSeeds() {
    using DAX::Tests::goldenDebugFile;
    const std::string defaults = goldenDebugFile("defaults.xml");
    return {{"defaults", defaults},
            {"changed", goldenDebugFile("changed.xml")},
            {"version0", goldenDebugFile("version0.xml")},
            {"header", defaults.substr(0, defaults.find("<DebugAndTestParameters"))},
            {"noTuningValues", defaults.substr(0, defaults.find("<installationPerformanceParameters"))},
            {"otherValues", DAX::Tests::debugFile({{"noRebootFlag", "1"}, {"numberOfFailures", "-1"}})}};
}

// One good text of each form.
Seeds updateTextsSeeds() {
    return {{"progress", "42"},
            {"progressWithDetail", "42|3.5"},
            {"version", "1666.1234"},
            {"majorVersionOnly", "1234"},
            {"modelAndVersion", "T-MODEL-1666.1234"}};
}

// Files that are right and ones that are nearly so, and payloads around the size of the buffer that they are read with.
Seeds verifyChecksumSeeds() {
    using DAX::Fuzz::makeVerifyChecksumInput;
    const std::string digits = "123456789CHECKSUMED\x26\x39\xf4\xcb";
    return {{"empty", makeVerifyChecksumInput({false, {}, std::string("CHECKSUMED\0\0\0\0", 14)})},
            {"tooShort", makeVerifyChecksumInput({false, {}, std::string("CHECKSUMED\0\0\0", 13)})},
            {"digits", makeVerifyChecksumInput({false, {{3, 4}, {9, 1}, {10, 1}}, digits})},
            {"corrupted", makeVerifyChecksumInput({false, {}, "0" + digits})},
            {"writtenEmpty", makeVerifyChecksumInput({true, {{0, 1}}, ""})},
            {"writtenMagic", makeVerifyChecksumInput({true, {{0, 5}, {5, 9}}, "CHECKSUMED"})},
            {"writtenBuffer", makeVerifyChecksumInput({true, {{1000, 100}}, std::string(1024, 'x')})},
            {"writtenLong", makeVerifyChecksumInput({true, {{0, 1023}, {1024, 2}}, std::string(1025, 'x')})}};
}

// Values at the borders of the types, in the widths that are in use and in ones that do not hold them.
Seeds serializersSeeds() {
    using DAX::Fuzz::makeSerializersInput;
    return {{"four", makeSerializersInput({{2, 4, {1, 2, 3, 4}}})},
            {"eight", makeSerializersInput({{3, 8, {1, 2, 3, 4, 5, 6, 7, 8}}})},
            {"most", makeSerializersInput({{3, 4, {255, 255, 255, 255}}, {3, 4, {0, 0, 0, 0, 1}}})},
            {"narrow", makeSerializersInput({{0, 1, {255}}, {1, 1, {0, 1}}, {0, 2, {0, 1}}})},
            {"wide", makeSerializersInput({{3, 16, {1}}, {3, 9, {0, 0, 0, 0, 0, 0, 0, 0, 1}}})},
            {"place", makeSerializersInput({{0, 9, {0, 0, 255, 255, 255, 255, 0, 0, 255, 255, 255, 255}}})},
            {"endedPlace", makeSerializersInput({{0, 9, {1, 1, 1, 2, 3, 4, 1, 1, 1, 2, 3, 4}}})}};
}

// The defaults, and files with a mistake: a line, a value, a group too late.
Seeds deviceFileSeeds() {
    return {{"defaults", KovanHost::defaultDeviceText()},
            {"badLine", "[system_info]\notn_onoff=0\nlocalset\n"},
            {"badValues", "[software]\nproduction=perhaps\n[plantcfg]\nmodel=M\n[features]\na/b=\\q\n"},
            {"noGroup", "localset=EU\n[system_info]\n"},
            {"twoGroups", "[a]\nEncoding=UTF-8\n[system_info]\n12345=7\nEncoding=x\n[a]\nb[de]=c"}};
}

int writeSeeds(const Seeds& seeds, const std::string& folder) {
    for (const auto& [name, content] : seeds) {
        std::ofstream file(folder + "/" + name, std::ios::binary);
        file << content << std::flush;
        if (!file) {
            std::cerr << "cannot write " << name << "\n";
            return 1;
        }
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const std::map<std::string, Seeds (*)()> targets{{"bus_messages", busMessagesSeeds},
                                                     {"debug_parameters", debugParametersSeeds},
                                                     {"decoder", decoderSeeds},
                                                     {"device_file", deviceFileSeeds},
                                                     {"handle_request", handleRequestSeeds},
                                                     {"serializers", serializersSeeds},
                                                     {"update_texts", updateTextsSeeds},
                                                     {"verify_checksum", verifyChecksumSeeds}};
    if (argc != 3 || targets.count(argv[1]) == 0) {
        std::cerr << "usage: make_corpus TARGET FOLDER, where TARGET is one of:\n";
        for (const auto& target : targets) {
            std::cerr << "  " << target.first << "\n";
        }
        return 2;
    }
    return writeSeeds(targets.at(argv[1])(), argv[2]);
}
