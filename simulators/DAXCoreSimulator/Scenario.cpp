#include "DAXCoreSimulator/Scenario.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "DAXCommon/UpgradeTypeNames.h"
#include "DAXCoreSimulator/FaultExceptions.h"
#include "DAXCoreSimulator/KnownMethods.h"
#include "DAXCoreSimulator/ScenarioFile.h"
#include "Utility/Utils/Hexadecimal.h"

namespace DAXCoreSimulator {

namespace {

using namespace DAX::DAXCommon;
using Group = ScenarioFile::Group;

const std::string FAULT_PREFIX = "fault ";

// Reads one of the words. Any other is a failure, which lists them.
template <class Value>
Value chosen(const Group& group, const char* key, const std::string& word, const std::map<std::string, Value>& values) {
    const auto found = values.find(word);
    if (found != values.end()) {
        return found->second;
    }
    std::string all;
    for (const auto& entry : values) {
        all += (all.empty() ? "" : ", ") + entry.first;
    }
    group.fail(key, "'" + word + "' is none of " + all);
}

template <class Value>
void readChosen(Group& group, const char* key, Value& value, const std::map<std::string, Value>& values) {
    if (group.has(key)) {
        std::string word;
        group.read(key, word);
        value = chosen(group, key, word, values);
    }
}

void readBytes(Group& group, const char* key, std::vector<unsigned char>& bytes) {
    if (!group.has(key)) {
        return;
    }
    std::string text;
    group.read(key, text);
    auto read = DAX::Common::Utils::fromHexadecimal<std::vector<unsigned char>>(text);
    if (!read) {
        group.fail(key, "pairs of hexadecimal digits (0-9, a-f) are expected");
    }
    bytes = std::move(*read);
}

void readStep(Group& group, Step& step) {
    group.read("seconds", step.seconds);
    readChosen(group, "result", step.succeeds, std::map<std::string, bool>{{"success", true}, {"failed", false}});
}

void readCore(Group& group, Scenario& scenario) {
    group.read("version", scenario.version);
    group.read("refuse_transactions", scenario.refusesTransactions);
    if (group.has("supported_types")) {
        std::vector<std::string> names;
        group.read("supported_types", names);
        scenario.supportedTypes.clear();
        for (const std::string& name : names) {
            scenario.supportedTypes.push_back(chosen(group, "supported_types", name, upgradeTypesByName()));
        }
    }
}

void readKind(Group& group, UpgradeKind& kind) {
    int number = static_cast<int>(kind);
    group.read("kind", number);
    if (number < 0 || number > 255) {
        group.fail("kind", "a number from 0 to 255 is expected; 0 and 1 are valid ones");
    }
    kind = static_cast<UpgradeKind>(number);
}

void readSearch(Group& group, Scenario& scenario) {
    using Possible = boost::optional<bool>;
    readChosen(group, "possible", scenario.searchingPossible,
               std::map<std::string, Possible>{{"true", true}, {"false", false}, {"unknown", boost::none}});
    readStep(group, scenario.search);
    readChosen(group, "upgrade_type", scenario.found.upgradeType, upgradeTypesByName());
    readKind(group, scenario.found.kind);
    group.read("scope", scenario.found.scope);
    readBytes(group, "upgrade_id", scenario.found.upgradeId);
    if (group.has("version")) {
        std::string version;
        group.read("version", version);
        scenario.found.version = version.empty() ? boost::none : boost::optional<std::string>(version);
    }
    std::string updateInfo(scenario.found.updateInfo.begin(), scenario.found.updateInfo.end());
    group.read("update_info", updateInfo);
    scenario.found.updateInfo.assign(updateInfo.begin(), updateInfo.end());
    std::vector<std::string> models(scenario.models.begin(), scenario.models.end());
    group.read("models", models);
    scenario.models.assign(models.begin(), models.end());
}

void readFault(Group& group, Fault& fault) {
    if (group.has("call")) {
        fault.call = 0;
        group.read("call", *fault.call);
        if (*fault.call < 1) {
            group.fail("call", "the first call is number 1");
        }
    }
    group.read("stall_seconds", fault.stallSeconds);
    readChosen(group, "die", fault.death,
               std::map<std::string, Fault::Death>{{"before", Fault::Death::BEFORE_REPLY},
                                                   {"after", Fault::Death::AFTER_REPLY}});
    group.read("exception", fault.exception);
    if (!fault.exception.empty() && !isExceptionName(fault.exception)) {
        group.fail("exception", "'" + fault.exception + "' does not cross the bus");
    }
    group.read("support_code", fault.supportCode);
    group.read("text", fault.text);
    group.read("empty_reply", fault.emptyReply);
}

using Reader = void (*)(Group&, Scenario&);

const std::map<std::string, Reader> READERS = {
    {"core", readCore},
    {"search", readSearch},
    {"installation", [](Group& group, Scenario& scenario) { readStep(group, scenario.installation); }},
    {"finalization", [](Group& group, Scenario& scenario) { readStep(group, scenario.finalization); }},
};

void readGroup(const ScenarioFile& file, const std::string& name, Scenario& scenario) {
    Group group(file, name);
    const auto reader = READERS.find(name);
    if (reader != READERS.end()) {
        reader->second(group, scenario);
    } else if (name.compare(0, FAULT_PREFIX.size(), FAULT_PREFIX) == 0) {
        const std::string method = name.substr(FAULT_PREFIX.size());
        if (!isCoreMethod(method)) {
            file.fail("[" + name + "]", "the core has no method '" + method + "'");
        }
        readFault(group, scenario.faults[method]);
    } else {
        file.fail("[" + name + "]", "there is no such group");
    }
    group.refuseUnknownKeys();
}

} // namespace

Scenario::Scenario() {
    const std::string info = "<update><version>1100</version></update>";
    search.seconds = 1;
    installation.seconds = 2;
    finalization.seconds = 1;
    found.upgradeType = OTN;
    found.kind = UPGRADE_KIND_REGULAR;
    found.scope = 2;
    found.upgradeId = {0x0d, 0xa5};
    found.version = std::string("1100");
    found.updateInfo.assign(info.begin(), info.end());
    models = {"KV-55", "KV-65"};
}

Scenario readScenario(const std::string& path) {
    const ScenarioFile file(path);
    Scenario scenario;
    for (const std::string& group : file.groups()) {
        readGroup(file, group, scenario);
    }
    return scenario;
}

std::map<std::string, std::set<std::string>> scenarioKeys() {
    const ScenarioFile nothing;
    Scenario scenario;
    std::map<std::string, std::set<std::string>> keys;
    for (const auto& [name, read] : READERS) {
        Group group(nothing, name);
        read(group, scenario);
        keys[name] = group.known();
    }
    Group group(nothing, FAULT_PREFIX + "METHOD");
    Fault fault;
    readFault(group, fault);
    keys[FAULT_PREFIX + "METHOD"] = group.known();
    return keys;
}

} // namespace DAXCoreSimulator
