#pragma once

// The client of the update service, for any program on the device.
//
//     dax::Client client("my updater");
//     dax::Session session = client.request(dax::Priority::MAIN_APPLICATION);
//     dax::Transaction upgrade = session.start(dax::UpgradeType::OTN);
//     const dax::Found found = upgrade.search();
//     if (found.upgrade) {
//         upgrade.install();
//         upgrade.finalize();
//     }
//
// Link libdaxclient (CMake: dax::client, pkg-config: daxclient). Nothing but the standard library is needed to compile.
//
// Failures are exceptions, all of them a dax::Failure: a Refusal when somebody else has the service or a lock holds it
// back, an Error when the service or the update core reports one, Unreachable when there is no answer at all. An object
// stays usable after any of them, except where its contract says otherwise. Besides, anything may throw std::bad_alloc,
// and an object that was moved from throws std::logic_error.
//
// Threads: any thread may use any object; the calls of one object take turns. To move, assign or destroy an object, be
// the only one who uses it.
//
// Time: a call blocks until the bus and the service have answered its questions, each of them for Options::callTimeout
// at the longest, which begins with its turn. Most calls ask one question. request() and start() ask a second one about
// a refusal, and lock() several, as it connects anew and may have to start the service. The service answers one call at
// a time and waits up to 60 seconds for each question to the update core. One call may need three, and a start() that
// replaces a transaction four: to stay at three, end() the session and request() another one instead. Calls that say
// "blocks shortly" do not go through the service.
//
// Connections: a client has one to the bus, each session and each transaction have some more of their own, and so has
// each Lock. A thread of the library reads what others send to them. All are closed with their objects. After fork()
// the child must not use the objects of its parent; to destroy them there leaves session and lock as they are. The
// first connection has the process ignore SIGPIPE.

#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#define DAX_API __attribute__((visibility("default")))
#define DAX_HIDDEN __attribute__((visibility("hidden")))

namespace dax {

namespace detail {
class ClientCore;
class SessionCore;
class TransactionCore;
class LockCore;
class StopState;
} // namespace detail

// The rank of a client or of a lock: a greater one outranks a lesser one. Any int can be one: Priority(7).
enum class Priority : int {
    MAIN_APPLICATION = 4 // the rank of the main update application
};

// The purpose of a session. Any int can be one; the others than DATED_SEARCH mean something to the update core only.
enum class TransactionType : int {
    DATED_SEARCH = 2 // the service remembers the date of its searches, see Client::lastSearch()
};

// Where an upgrade comes from. Another number may come from a newer service.
enum class UpgradeType : int {
    UNDEFINED = 0,
    OTA = 1, // over the air
    OTN = 2, // over the network
    USB = 3,
    POSTPONE = 4
};

// How urgent an upgrade is.
enum class UpgradeKind : unsigned int { REGULAR = 0, IMPORTANT = 1 };

// Names a lock at the service that gave it. The first one is 1; a number is never used again, but a service that was
// started anew begins with 1.
using LockId = std::uint32_t;

// A point in time as the device's clock showed it, without a time zone.
struct LocalTime {
    int year = 1970;                       // 1400 to 9999
    int month = 1;                         // 1 to 12
    int day = 1;                           // 1 to 31
    int hour = 0;                          // 0 to 23
    int minute = 0;                        // 0 to 59
    int second = 0;                        // 0 to 59
    std::chrono::microseconds fraction{0}; // of the second

    // "2024-02-29T23:59:58", with a fraction of six digits when there is one.
    DAX_API std::string toString() const;

    // The same point in the time zone of this process. Of the two that an hour which the clock repeats can mean,
    // either. Throws std::out_of_range for a time that the system's clock cannot hold: with gcc's library one
    // before September 1677 or after April 2262.
    DAX_API std::chrono::system_clock::time_point toSystemTime() const;
};

// Who holds the service.
struct Owner {
    std::string clientName;
    Priority priority{};
    TransactionType transactionType{};
};

// How far a step has come. Another number may come from a newer service; it counts as under way.
enum class State : int { UNDEFINED = 0, IN_PROGRESS = 1, SUCCEEDED = 2, FAILED = 3 };

// One answer to the question how far a step has come.
struct Progress {
    State state = State::UNDEFINED;
    int percent = 0;             // 0 to 100, as the update core tells it
    std::optional<float> detail; // of the update core, with a meaning of its own
};

// An upgrade that a search has found.
struct Upgrade {
    UpgradeType type = UpgradeType::UNDEFINED;
    std::vector<std::uint8_t> id;       // by which the update core knows it again
    std::optional<std::string> version; // the version after the upgrade
    std::vector<std::uint8_t> info;     // its information document, as it is
    UpgradeKind kind = UpgradeKind::REGULAR;
    int scope = 0;
};

// How a step that was waited for has ended.
enum class Outcome {
    SUCCEEDED,
    FAILED,  // the update core reports the failure, without a reason
    STOPPED, // by the client's stop token; the transaction is cancelled
};

// What came of a search. There is an upgrade only when it SUCCEEDED and found one.
struct Found {
    Outcome outcome = Outcome::FAILED;
    std::optional<Upgrade> upgrade;
};

// What came of a search for models.
struct FoundModels {
    Outcome outcome = Outcome::FAILED;
    std::vector<std::string> models;
};

// The root of what the library throws. Copies share their texts, so that copying does not throw.
class DAX_API Failure : public std::exception {
public:
    Failure(const Failure&) noexcept;
    Failure& operator=(const Failure&) noexcept;
    ~Failure() override;

    // All of it in one sentence, for people and logs. Do not decide by its words.
    const char* what() const noexcept override;

protected:
    DAX_HIDDEN explicit Failure(std::string text);

private:
    std::shared_ptr<const std::string> m_text;
};

// The service is not granted now. To be expected: ask again later.
class DAX_API Refusal : public Failure {
public:
    enum class Reason {
        HELD,        // by a client of the same priority or a higher one, which owner() names
        SAME_CLIENT, // a client of the same name holds it, which owner() shows
        LOCKED,      // a lock is in force. The service does not tell which one: a lock of this priority or a higher one
                     // that somebody has acquired, or that of an installation which waits for the device's restart
        SESSION_OVER // Session::start(): the session has been taken away
    };

    Refusal(Reason reason, std::optional<Owner> owner);
    Refusal(const Refusal&) noexcept;
    Refusal& operator=(const Refusal&) noexcept;
    ~Refusal() override;

    // What the service told right after it had refused. Since a lock is not told, and a holder may come or go in
    // between, take it for a likely reason.
    Reason reason() const noexcept;

    // Who held the service then. Empty when nobody did: of a lock, the service does not name the holder.
    const std::optional<Owner>& owner() const noexcept;

private:
    struct DAX_HIDDEN Contents;
    std::shared_ptr<const Contents> m_contents;
};

// The service, or the update core behind it, has reported a failure.
class DAX_API Error : public Failure {
public:
    // Kinds that the update core reports mean what it says; the service passes them on.
    enum class Kind {
        TRANSACTION_INVALIDATED, // the transaction is over: cancelled, replaced by a newer one, or its session is gone
        UPDATE_FAILED,           // the update core
        USB_READ_ERROR,          // the update core
        NETWORK_TRANSFER_ERROR,  // the update core
        USB_IMAGE_CORRUPTED,     // the update core
        USB_DECRYPTION_ERROR,    // the update core
        IMAGE_CORRUPTED,         // the update core
        WRONG_KEYS,              // the update core
        IMAGE_LACKS_INTEGRITY,   // the update core
        EXTERNAL_LOCK_DENIED,    // a client of this priority or a higher one holds the service
        WILDCARD_IMAGE_NOT_ALLOWED, // the update core
        INSUFFICIENT_STORAGE,       // the update core
        UNKNOWN // all else: a session that is over, an unknown lock, no update core, an answer that cannot be read
    };

    // `name` is the failure's name on the bus.
    Error(Kind kind, std::string name, std::string supportCode, std::string text, std::string diagnostic);
    Error(const Error&) noexcept;
    Error& operator=(const Error&) noexcept;
    ~Error() override;

    Kind kind() const noexcept;

    // The name on the bus, such as "CUSBReadError". With UNKNOWN it may be one that this library does not know.
    const std::string& name() const noexcept;

    // The code to be shown to the user, for the hotline. Empty when there is none; several are joined by "-".
    const std::string& supportCode() const noexcept;

    // What was said where the failure began, in one line. Empty when nothing was.
    const std::string& text() const noexcept;

    // All that was said on the way, in many lines, for a log.
    const std::string& diagnostic() const noexcept;

private:
    struct DAX_HIDDEN Contents;
    std::shared_ptr<const Contents> m_contents;
};

// There is no answer. Whether the service has done what it was asked for is not known, except with NOT_ALLOWED: then it
// has not.
class DAX_API Unreachable : public Failure {
public:
    enum class Reason {
        NO_BUS,      // no connection to the bus could be made, or it broke. Make a new Client
        NO_SERVICE,  // nobody has the service's name and the bus cannot start the service, it left before it answered,
                     // or who has the name is no update service
        NOT_ALLOWED, // the bus does not pass the call on. Either this process may not call the service: be root or a
                     // member of the group dax. Or a queue of the bus is full, which passes by itself: then busError()
                     // is "org.freedesktop.DBus.Error.LimitsExceeded"
        TIMED_OUT    // no answer of the service, or of the bus, within Options::callTimeout
    };

    // `busError` may be empty.
    Unreachable(Reason reason, std::string busError, std::string text, std::string diagnostic);
    Unreachable(const Unreachable&) noexcept;
    Unreachable& operator=(const Unreachable&) noexcept;
    ~Unreachable() override;

    Reason reason() const noexcept;

    // The bus's name for it, such as "org.freedesktop.DBus.Error.AccessDenied". Empty when the bus has said nothing.
    const std::string& busError() const noexcept;

    // What the bus says, in one line.
    const std::string& text() const noexcept;

    // The same with the place in the library, for a log.
    const std::string& diagnostic() const noexcept;

private:
    struct DAX_HIDDEN Contents;
    std::shared_ptr<const Contents> m_contents;
};

// Tells whether a StopSource wants an end. Copies share that. The default one is never stopped. Any thread may use one
// token, without turns.
class DAX_API StopToken {
public:
    StopToken() noexcept;
    StopToken(const StopToken&) noexcept;
    StopToken& operator=(const StopToken&) noexcept;
    ~StopToken();

    bool isStopped() const noexcept;

    // Waits until it is stopped, for at most `time`. True when it is.
    bool waitFor(std::chrono::milliseconds time) const;

    // Why, as the source said it. Empty before.
    std::string reason() const;

private:
    friend class StopSource;
    DAX_HIDDEN explicit StopToken(std::shared_ptr<detail::StopState> state) noexcept;
    std::shared_ptr<detail::StopState> m_state; // null: never stopped
};

// Ends steps that somebody waits for: give its token to them. Any thread may use one source, without turns, but not a
// signal handler.
class DAX_API StopSource {
public:
    StopSource();
    StopSource(const StopSource&) noexcept;
    StopSource& operator=(const StopSource&) noexcept;
    ~StopSource();

    // The reason goes to the update core and the service's log. A second call has no effect.
    void requestStop(const std::string& reason = "The client has stopped the upgrade.");
    StopToken token() const noexcept;

private:
    std::shared_ptr<detail::StopState> m_state;
};

// How to wait for a step.
struct Waiting {
    // Called with each progress that comes, on the thread that waits, the last one included; it may use any object of
    // the library. What it throws ends the waiting, but not the step.
    std::function<void(const Progress&)> onProgress;

    // Ends the waiting between two questions, and cancels the transaction with the reason of the source.
    StopToken stop;

    // The time between two questions for the progress. At least 1 ms.
    std::chrono::milliseconds interval{200};
};

// One run of search, installation and finalization in a session. When it is destroyed, nothing is cancelled: that is up
// to cancel(), to a newer transaction, and to the end of the session.
//
// Each step is one call that waits for its end, or two: start...(), and then ...Progress() until its state is SUCCEEDED
// or FAILED. The waiting calls take as long as the step; they end early by the stop token, an exception of a call, or
// one of the callback's. A step goes on when its waiting ends by an exception.
//
// All throw Error and Unreachable. TRANSACTION_INVALIDATED means that it is over: end() the session, and ask for the
// service again.
class DAX_API Transaction {
public:
    Transaction(Transaction&&) noexcept;
    Transaction& operator=(Transaction&&) noexcept;
    ~Transaction();

    // Looks for an upgrade. The parameter is for the update core.
    Found search(const std::string& parameter = {}, const Waiting& waiting = {});

    // Looks for models.
    FoundModels searchModels(const Waiting& waiting = {});

    // Installs what the search has found: these items, which the update core understands, or all without any. Throws
    // std::logic_error before the end of a search.
    Outcome install(const std::set<std::string>& items = {}, const Waiting& waiting = {});

    // Makes the installation final. From the start of this on the service may refuse everyone, also when this throws or
    // FAILED, until another program of the device removes the installation lock. The flag is for the update core.
    Outcome finalize(const std::set<std::string>& items = {}, bool flag = false, const Waiting& waiting = {});

    // Ends the transaction at the update core. The reason goes there and to the service's log.
    void cancel(const std::string& reason);

    // Whether a search can be started now; empty when the update core cannot tell.
    std::optional<bool> isSearchPossible();

    void startSearch(const std::string& parameter = {});
    void startModelsSearch();
    Progress searchProgress();

    // Empty when nothing was found. Throws std::logic_error before searchProgress() has told of the end of a search,
    // since the service does not survive the question.
    std::optional<Upgrade> searchResult();
    std::vector<std::string> modelsSearchResult();

    // Throws std::logic_error before searchProgress() has told of the end of a search, as searchResult().
    void startInstallation(const std::set<std::string>& items = {});
    Progress installationProgress();

    // Can have the effect on others that finalize() tells of, also when it throws.
    void startFinalization(const std::set<std::string>& items = {}, bool flag = false);
    Progress finalizationProgress();

private:
    friend class Session;
    DAX_HIDDEN explicit Transaction(std::unique_ptr<detail::TransactionCore> core) noexcept;
    DAX_HIDDEN detail::TransactionCore& core() const;
    std::unique_ptr<detail::TransactionCore> m_core;
};

// The service, held by this client. It may outlive its Client. It may be taken away at any time:
//   - By a client of a higher priority. Then the next call throws an Error: UNKNOWN here, TRANSACTION_INVALIDATED in a
//     transaction.
//   - By a lock of a higher priority, or by a change of the device's power state. Then TRANSACTION_INVALIDATED from a
//     transaction is the only sign: priority() still answers, start() gives a transaction whose first call throws that,
//     and end() succeeds.
// To begin again, end() this session or destroy it, and only then request() another one: after a change of the power
// state that is refused with SAME_CLIENT while this one lives, as in `session = client.request(...)`.
//
// The destructor ends the session as end() does, and drops failures. It can block as long as a call, but does not call
// a service that has been Unreachable in this session, and starts none: closing the connections ends the session as
// well.
class DAX_API Session {
public:
    Session(Session&&) noexcept;
    Session& operator=(Session&&) noexcept;
    ~Session();

    // Starts a transaction; an earlier one of this session is cancelled. Throws Error, UNKNOWN when another session has
    // come after this one, the service has started anew or the update core refuses, Refusal (SESSION_OVER) from a
    // service that says so instead, and Unreachable. After some ends of the session nothing is thrown, see above.
    Transaction start(UpgradeType type);

    // The priority with which the service was asked for. Throws Error and Unreachable.
    Priority priority();

    // Gives the service back, and cancels the transaction. The reason goes to the update core and the service's log.
    // Once this has succeeded, a second call has no effect and all else throws an Error. Throws Error, UNKNOWN when
    // another session has come after this one or the service has started anew, and Unreachable.
    void end(const std::string& reason = "The client has finished.");

private:
    friend class Client;
    DAX_HIDDEN explicit Session(std::unique_ptr<detail::SessionCore> core) noexcept;
    DAX_HIDDEN detail::SessionCore& core() const;
    std::unique_ptr<detail::SessionCore> m_core;
};

// A lock that holds back every client of its priority or a lower one, released when this object goes. It belongs to the
// one process of the service that gave it: when that ends, the lock is lost, and no later one is asked to release it.
//
// The destructor releases as release() does, and drops failures. It can block as long as a call.
class DAX_API Lock {
public:
    Lock(Lock&&) noexcept;
    Lock& operator=(Lock&&) noexcept;
    ~Lock();

    LockId id() const;

    // Whether the service that gave it has left the bus, or the bus is gone, while this object held the lock: before
    // release() and detach(). Blocks shortly, except while another thread releases.
    bool isLost();

    // True when this object has released it, by this call or an earlier one; false when it was lost, or left in force
    // by detach(). Throws Error when the service has not released it (UNKNOWN: somebody else had released it), and
    // Unreachable; the lock is given up then, and further calls return false without releasing it. It may still be in
    // force: Client::releaseLock() can tell.
    bool release();

    // Leaves the lock in force without this object, for Client::releaseLock(). Returns its number. Does not block,
    // except while another thread releases.
    LockId detach();

private:
    friend class Client;
    DAX_HIDDEN explicit Lock(std::unique_ptr<detail::LockCore> core) noexcept;
    DAX_HIDDEN detail::LockCore& core() const;
    std::unique_ptr<detail::LockCore> m_core;
};

// How urgent a line of the log is, the least urgent first.
enum class LogLevel : int { VERBOSE = 1, DBG = 2, INF = 3, WRN = 4, ERR = 5, FTL = 6 };

// How a client works. The defaults suit a device.
struct Options {
    // The bus, as D-Bus writes addresses. Without one it is the system bus, which DBUS_SYSTEM_BUS_ADDRESS redirects.
    std::string busAddress;

    // How long a call may take, and the connecting; at least 1 ms. See "Time" above for what the service may need.
    std::chrono::milliseconds callTimeout = std::chrono::seconds(180);

    // Gets what the library logs in the calls of this client and of its sessions, transactions and locks, on their
    // threads. It must not use them, and what it throws is dropped. Without one nothing is logged anywhere.
    std::function<void(LogLevel, const std::string& text)> log;
};

// A client of the update service. The bus starts the service at the first call.
class DAX_API Client {
public:
    // Connects to the bus; the service is not called. `name` is how the client is called in refusals to others, in
    // logs, and by whom its locks can be released; choose one that no other program has. Throws Unreachable (NO_BUS,
    // and TIMED_OUT when the bus does not answer), and std::invalid_argument for a time-out below 1 ms.
    explicit Client(std::string name, Options options = {});
    Client(Client&&) noexcept;
    Client& operator=(Client&&) noexcept;
    ~Client();

    // Whether the service runs now. Asks the bus alone, which does not start the service for it, and blocks shortly.
    // Throws Unreachable.
    bool isServiceRunning() const;

    // All that follows throws Error and Unreachable.

    // The version that the device runs, as the update core tells it.
    std::string version();

    // What the update core can upgrade from.
    std::vector<UpgradeType> supportedTypes();

    // When a session of type DATED_SEARCH searched last; empty when that is not known.
    std::optional<LocalTime> lastSearch();

    // Who holds the service; empty when nobody does. A session that a change of the power state has ended counts until
    // its holder ends or destroys it, or somebody of a higher priority takes its place.
    std::optional<Owner> owner();

    // Has the update core schedule a factory reset.
    void scheduleFactoryReset();

    // Asks for the service. A session of a lower priority is ended for it. Throws Refusal as well.
    Session request(Priority priority, TransactionType type = TransactionType::DATED_SEARCH);

    // Acquires a lock for as long as the object lives. A session of a lower priority is ended for it. Throws an Error
    // (EXTERNAL_LOCK_DENIED) when somebody of this priority or a higher one holds the service; owner() says who. Should
    // this throw Unreachable (TIMED_OUT) or an Error of another kind, the service may grant the lock all the same, also
    // later. Nobody has its number then, but for the service's log: releaseLock() takes it from there.
    Lock lock(Priority priority);

    // The same without an object: the lock stays until it is released or the service ends. It may come into force after
    // a TIMED_OUT here, too.
    LockId acquireLock(Priority priority);

    // Releases a lock that a client of the same name has acquired.
    void releaseLock(LockId id);

private:
    DAX_HIDDEN detail::ClientCore& core() const;
    std::shared_ptr<detail::ClientCore> m_core;
};

} // namespace dax
