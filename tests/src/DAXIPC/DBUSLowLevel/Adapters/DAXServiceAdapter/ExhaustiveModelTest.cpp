// Runs every sequence of the operations of two and of three clients, up to a length, against the real handler and the
// real service logic, and compares them with the reference model after the last operation of each.
//
// When several sequences lead the model to the same state, only one is continued: whatever follows, the model cannot
// tell them apart. The real objects cannot be copied, so new ones are brought to a state by its shortest sequence. The
// same objects then serve for one operation after the other as long as these change nothing in the model: such an
// operation must leave the real state alone, too, or the next comparison shows it. After an operation that changes the
// state, questions that change nothing check that the real state is the one that the model has reached.
#include <cstdint>
#include <iostream>
#include <memory>
#include <unordered_map>

#include <gtest/gtest.h>

#include "src/DAXIPC/DBUSLowLevel/Adapters/DAXServiceAdapter/ServiceBesideModel.h"
#include "support/DebugParameters.h"
#include "support/TemporaryRoot.h"

namespace DAX::Tests {
namespace {

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
const std::size_t LEFT_OUT = 3; // shorter sequences under a sanitizer, which is slow and looks for other faults
#else
const std::size_t LEFT_OUT = 0;
#endif

// Priorities below and above the one at which a lock blocks the main update application.
const std::vector<int> PRIORITIES{3, 4};

// A client with its three connections and its two proxies.
struct Client {
    int number;

    std::string name() const { return "client" + std::to_string(number); }
    std::string manager() const { return connection(1); }
    std::string session() const { return connection(2); }
    std::string transaction() const { return connection(3); }
    std::string proxyOfSession() const { return "Session-" + std::to_string(number); }
    std::string proxyOfTransaction() const { return "Transaction-" + std::to_string(number); }
    std::string reason() const { return "reason of " + name(); }

private:
    std::string connection(int which) const { return ":1." + std::to_string(10 * number + which); }
};

struct Operation {
    std::string name;
    std::function<void(ServiceBesideModel&)> run;
    std::size_t leastLocks = 0; // the operation is possible only while at least this many are held
};
using Operations = std::vector<Operation>;

void addSession(Operations& operations, const Client& client) {
    for (const int priority : PRIORITIES) {
        operations.push_back(
            {client.name() + " getService " + std::to_string(priority), [=](ServiceBesideModel& service) {
                 service.getService(client.manager(), priority, client.name(), client.number, client.proxyOfSession());
             }});
    }
    operations.push_back({client.name() + " startNewTransaction", [=](ServiceBesideModel& service) {
                              service.startNewTransaction(client.session(), client.number, client.proxyOfTransaction());
                          }});
    operations.push_back({client.name() + " invalidate",
                          [=](ServiceBesideModel& service) { service.invalidate(client.session(), client.reason()); }});
    operations.push_back({client.name() + " cancel",
                          [=](ServiceBesideModel& service) { service.cancel(client.transaction(), client.reason()); }});
    operations.push_back(
        {client.name() + " disconnect", [=](ServiceBesideModel& service) { service.disconnect(client.manager()); }});
}

// The hello of a client for a proxy of its own, or for one that belongs to `owner`.
void addHellos(Operations& operations, const Client& client, const Client& owner) {
    operations.push_back({client.name() + " hello " + owner.proxyOfSession(), [=](ServiceBesideModel& service) {
                              service.hello(client.session(), owner.proxyOfSession());
                          }});
    operations.push_back({client.name() + " hello " + owner.proxyOfTransaction(), [=](ServiceBesideModel& service) {
                              service.hello(client.transaction(), owner.proxyOfTransaction());
                          }});
}

// Releases of each lock that is held, one's own or another's, and of one that was never issued.
void addLocks(Operations& operations, const Client& client, std::size_t mostLocks) {
    for (const int priority : PRIORITIES) {
        operations.push_back({client.name() + " acquire " + std::to_string(priority), [=](ServiceBesideModel& service) {
                                  service.acquireLock(client.manager(), client.name(), priority);
                              }});
    }
    operations.push_back({client.name() + " release unknown", [=](ServiceBesideModel& service) {
                              service.releaseLock(client.manager(), client.name(), service.model().lastLock() + 1);
                          }});
    for (std::size_t place = 0; place < mostLocks; ++place) {
        operations.push_back({client.name() + " release held lock " + std::to_string(place),
                              [=](ServiceBesideModel& service) {
                                  const auto lock =
                                      std::next(service.model().locks().begin(), static_cast<std::ptrdiff_t>(place));
                                  service.releaseLock(client.manager(), client.name(), lock->first);
                              },
                              place + 1});
    }
}

void addDevice(Operations& operations) {
    operations.push_back({"power change", [](ServiceBesideModel& service) { service.changePowerMode(); }});
    for (const bool locked : {true, false}) {
        operations.push_back({std::string("lock file ") + (locked ? "on" : "off"),
                              [=](ServiceBesideModel& service) { service.setInstallationLock(locked); }});
    }
}

// Questions that change nothing. A refusal to a stranger names in the log whom it would serve: the senders that have
// said hello, and the holders of all locks.
using Question = void (*)(ServiceBesideModel&);
const std::vector<Question> QUESTIONS{
    [](ServiceBesideModel& service) { service.getClientPriority(":1.9"); },
    [](ServiceBesideModel& service) { service.isSearchingPossible(":1.9"); },
    [](ServiceBesideModel& service) {
        if (const auto sender = service.model().transactionSender()) {
            service.isSearchingPossible(*sender);
        }
    },
    [](ServiceBesideModel& service) {
        for (const int priority : PRIORITIES) {
            if (service.model().isLockedFor(priority)) {
                service.getService(":1.9", priority, "stranger", 0, "Session-0");
            }
        }
    },
};

Operations operationsOf(int clients, std::size_t depth) {
    Operations operations;
    for (int number = 1; number <= clients; ++number) {
        addSession(operations, {number});
        addLocks(operations, {number}, depth - 1);
        for (int owner = 1; owner <= clients; ++owner) {
            addHellos(operations, {number}, {owner});
        }
    }
    addDevice(operations);
    return operations;
}

// The search: the states in the order in which they were found, those with the shortest sequences first.
class Search {
public:
    Search(int clients, std::size_t depth) : m_operations(operationsOf(clients, depth)), m_depth(depth) {}

    // Ends at the first disagreement, and returns it with the operations that lead to it. Empty when there is none.
    std::string run();

    void printCounts(std::ostream& out) const;

private:
    using Index = std::uint32_t;
    static constexpr Index NOWHERE = ~Index(0);
    struct State {
        Index before;
        std::size_t operation; // the operation that led here from the state before
        std::size_t depth;
        std::size_t locks = 0;
        std::vector<Index> after; // for each operation that is possible here
    };

    // The real service and the model in one of the states, and what has been done to them.
    struct Trial {
        ServiceBesideModel service;
        std::vector<std::size_t> done;
    };

    Index find(const ReferenceModel& model, const State& state);
    std::vector<std::size_t> wayTo(Index state) const;
    std::unique_ptr<Trial> bringTo(Index state) const;
    std::string tryAll(Index from);
    std::string tryOperation(Trial& trial, std::size_t operation);
    std::string tryQuestions(Trial& trial) const;
    std::string tryEnd(Trial& trial) const;
    std::string describe(const Trial& trial, const std::string& last, const std::string& difference) const;
    double countSequences() const;

    const Operations m_operations;
    const std::size_t m_depth;
    std::vector<State> m_states;
    std::unordered_map<std::string, Index> m_found; // by the state of the model
    std::size_t m_tried = 0;
};

Search::Index Search::find(const ReferenceModel& model, const State& state) {
    const auto [found, isNew] = m_found.emplace(model.state(), static_cast<Index>(m_states.size()));
    if (isNew) {
        m_states.push_back(state);
        m_states.back().locks = model.locks().size();
    }
    return found->second;
}

std::vector<std::size_t> Search::wayTo(Index state) const {
    std::vector<std::size_t> way;
    for (; m_states[state].before != NOWHERE; state = m_states[state].before) {
        way.insert(way.begin(), m_states[state].operation);
    }
    return way;
}

// What happens on the way was compared when the states on it were found.
std::unique_ptr<Search::Trial> Search::bringTo(Index state) const {
    auto trial = std::make_unique<Trial>();
    trial->done = wayTo(state);
    for (const std::size_t operation : trial->done) {
        m_operations[operation].run(trial->service);
    }
    trial->service.forget();
    return trial;
}

std::string Search::describe(const Trial& trial, const std::string& last, const std::string& difference) const {
    if (difference.empty()) {
        return "";
    }
    std::string text;
    for (const std::size_t operation : trial.done) {
        text += "{" + m_operations[operation].name + "} ";
    }
    return text + last + ":\n" + difference;
}

std::string Search::tryOperation(Trial& trial, std::size_t operation) {
    ++m_tried;
    m_operations[operation].run(trial.service);
    trial.done.push_back(operation);
    return describe(trial, "", trial.service.difference());
}

std::string Search::tryQuestions(Trial& trial) const {
    std::string difference;
    for (std::size_t question = 0; question < QUESTIONS.size() && difference.empty(); ++question) {
        QUESTIONS[question](trial.service);
        difference = describe(trial, "{question " + std::to_string(question) + "}", trial.service.difference());
    }
    return difference;
}

std::string Search::tryEnd(Trial& trial) const {
    trial.service.end();
    return describe(trial, "{end}", trial.service.difference());
}

// All operations that are possible in the state; after each one that leaves it, the questions and the end of all
// objects.
std::string Search::tryAll(Index from) {
    std::unique_ptr<Trial> trial;
    for (std::size_t operation = 0; operation < m_operations.size(); ++operation) {
        if (m_states[from].locks < m_operations[operation].leastLocks) {
            continue;
        }
        if (!trial) {
            trial = bringTo(from);
        }
        std::string difference = tryOperation(*trial, operation);
        const Index to = find(trial->service.model(), {from, operation, m_states[from].depth + 1, 0, {}});
        m_states[from].after.push_back(to);
        if (difference.empty() && to != from) {
            difference = tryQuestions(*trial);
            if (difference.empty()) {
                difference = tryEnd(*trial);
            }
            trial.reset();
        }
        if (!difference.empty()) {
            return difference;
        }
    }
    return "";
}

std::string Search::run() {
    find(ReferenceModel(), {NOWHERE, 0, 0, 0, {}});
    for (Index state = 0; state < m_states.size() && m_states[state].depth < m_depth; ++state) {
        const std::string difference = tryAll(state);
        if (!difference.empty()) {
            return difference;
        }
    }
    return "";
}

// How many sequences of each length lead to each state, added up. A floating-point number, since a greater depth would
// overflow an integer.
double Search::countSequences() const {
    double sum = 0;
    std::vector<double> ways(m_states.size(), 0);
    ways[0] = 1;
    for (std::size_t length = 1; length <= m_depth; ++length) {
        std::vector<double> longer(m_states.size(), 0);
        for (std::size_t state = 0; state < m_states.size(); ++state) {
            for (const Index next : m_states[state].after) {
                longer[next] += ways[state];
                sum += ways[state];
            }
        }
        ways = std::move(longer);
    }
    return sum;
}

void Search::printCounts(std::ostream& out) const {
    out << "up to " << m_depth << " operations: " << static_cast<std::uint64_t>(countSequences()) << " sequences, "
        << m_states.size() << " states, " << m_tried << " operations compared" << std::endl;
}

class ExhaustiveModelTest : public testing::Test {
public:
    void searchAll(int clients, std::size_t depth) {
        Search search(clients, depth - LEFT_OUT);
        const std::string difference = search.run();
        search.printCounts(std::cout);
        EXPECT_EQ(difference, "");
    }

    TemporaryRoot root{TemporaryRoot::SAME_FOR_ALL};
    DebugParameters debugParameters;
};

TEST_F(ExhaustiveModelTest, AgreesOverAllSequencesOfTwoClients) {
    searchAll(2, 6);
}

TEST_F(ExhaustiveModelTest, AgreesOverAllSequencesOfThreeClients) {
    searchAll(3, 5);
}

} // namespace
} // namespace DAX::Tests
