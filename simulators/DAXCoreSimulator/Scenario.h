#pragma once

#include <list>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <boost/optional.hpp>

#include "CoreInterface/SearchResult.h"
#include "DAXCommon/UpgradeType.h"

namespace DAXCoreSimulator {

// What is to go wrong in calls of one method.
struct Fault {
    enum class Death { NONE, BEFORE_REPLY, AFTER_REPLY };

    boost::optional<int> call; // only in this call since the start, counted from 1; empty: in every call
    double stallSeconds = 0;
    Death death = Death::NONE;
    std::string exception; // one of the exception names of the bus; empty for none
    std::string supportCode;
    std::string text;
    bool emptyReply = false; // the third array of the reply is empty

    bool strikes(int callNumber) const { return !call || *call == callNumber; }
};

// One step of a transaction: how long it takes and how it ends.
struct Step {
    double seconds = 0.5;
    bool succeeds = true;
};

// What the simulated core plays.
struct Scenario {
    std::string version = "1000";
    std::vector<DAX::DAXCommon::UpgradeType> supportedTypes{DAX::DAXCommon::OTA, DAX::DAXCommon::OTN,
                                                            DAX::DAXCommon::USB};
    bool refusesTransactions = false;
    boost::optional<bool> searchingPossible = true;
    Step search;
    Step installation;
    Step finalization;
    DAX::Core::SearchResult found; // except for its result, which the search step decides
    std::list<std::string> models;
    std::map<std::string, Fault> faults; // by method

    Scenario();
};

// A scenario file cannot be used; what() names the file, the group and the key.
class ScenarioError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Reads a GLib key file; what it leaves out has its built-in value. Throws ScenarioError for a file that cannot be read
// or parsed, for a value that cannot be understood, and for an unknown group or key.
Scenario readScenario(const std::string& path);

// The groups that such a file may have, with their keys. The group of the faults of a method is called "fault METHOD".
std::map<std::string, std::set<std::string>> scenarioKeys();

} // namespace DAXCoreSimulator
