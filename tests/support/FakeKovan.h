#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <variant>
#include <vector>

// The device's interfaces in memory, for tests. It implements every function of platform/include, records the calls and
// returns what the test has set. The free functions here are its knobs and its record. Any thread may call them.
//
// It resets itself before each GoogleTest test. A forked child (a death test) has a copy of its parent's state.
namespace FakeKovan {

// Forgets every record and resets every knob: an empty store, no failures, no subscribers, not production, clock at 0,
// no echo.
void reset();

// Forgets what was recorded and leaves the knobs and the store. For tests so long that the record would grow too large.
void forgetRecords();

// --- The journal: the order of side effects across their kinds ------------------------------------------------------
//
// One text for each side effect, oldest first:
//   "log INF <message>"          a line of the system log
//   "write <key>=<value>"        a settings write; a failed one ends in " -> <result>"
//   "event <name> <code>"        an event for the reporting service
//   "hangguard register <seconds>", "hangguard notify", "vip", "bootclock init", "bootclock fini"
//   "power subscribe <signal>", "power unsubscribe <signal>" (state_changed, poweroff or post_wakeup),
//   "power set_state <state> <flag>", "power set_wakeup_reason <n>", "power request_reboot <n>",
//   "power request_poweroff <n>", "plantcfg reset <mode>": whatever their results
//   "usb init", "usb fini", "usb get_device_list", "usb free_device <device name>", "usb free_device_list"
//   what the test has added by note()
// Reads (of settings, facts, the time, the power state, the wake-up reason and isProduction) are not side effects and
// are not in it. A bool is written as true or false, a double as a stream writes it.
std::vector<std::string> journal();

// The entries that begin with "<kind> " or are equal to the kind: journal("write") has only the writes, in order.
std::vector<std::string> journal(const std::string& kind);

// Adds a text to the journal, so that the calls of a test's other fakes can be put in order with the platform's.
void note(const std::string& text);

// --- dlog -----------------------------------------------------------------------------------------------------------

struct LogLine {
    int logId;
    int priority;
    std::string tag;
    std::string text;    // all that reached the system log
    std::string process; // the parts of the text "[process][thread][number][level] ..."; empty when it has another form
    std::string thread;
    unsigned int number;
    std::string level; // "DBG", "INF", "WRN", "ERR", "FTL", "VERBOSE"
    std::string file;  // from "file:line>"; empty and 0 when the text has no such part
    int line;
    std::string message; // what follows that part
};

std::vector<LogLine> logLines();

// The messages, oldest first: of all levels, or of one ("WRN").
std::vector<std::string> messages();
std::vector<std::string> messages(const std::string& level);

// How many lines of this level have exactly this message, or have this text in their message.
int count(const std::string& level, const std::string& message);
int countContaining(const std::string& level, const std::string& part);

// Waits until a line of this level has `part` in its message. False when that takes longer than the bound.
bool waitForMessage(const std::string& level, const std::string& part,
                    std::chrono::milliseconds bound = std::chrono::seconds(20));

// Runs the function once, on the thread that logs, after the next line with exactly this message.
void afterMessage(const std::string& message, std::function<void()> function);

// Sends every log line to standard error as well, so that EXPECT_DEATH can match it. Off after reset().
void echoLogToStderr(bool on);

// --- vconf ----------------------------------------------------------------------------------------------------------

using Value = std::variant<bool, int, double, std::string>;

struct Write {
    std::string key;
    Value value;
    bool operator==(const Write& other) const { return key == other.key && value == other.value; }
};
void PrintTo(const Write& write, std::ostream* out);

// The results of the store's functions. A read of a missing key, even of the empty one, gives MISSING_KEY, a read of a
// value of another type WRONG_TYPE, a write to the empty key EMPTY_KEY. A text that cannot be read is a null pointer.
constexpr int MISSING_KEY = -1;
constexpr int WRONG_TYPE = -2;
constexpr int EMPTY_KEY = -3;

// Puts a value into the store without a record.
void setSetting(const std::string& key, bool value);
void setSetting(const std::string& key, int value);
void setSetting(const std::string& key, double value);
void setSetting(const std::string& key, const std::string& value);
void setSetting(const std::string& key, const char* value);
void removeSetting(const std::string& key);

std::optional<Value> setting(const std::string& key);

// From now on every read, or every write, of the key gives this result; 0 ends that. A failed write changes nothing.
void failReads(const std::string& key, int result);
void failWrites(const std::string& key, int result);

// The successful writes, and the keys of all reads, oldest first.
std::vector<Write> writes();
std::vector<std::string> reads();

// --- MetricLogger ---------------------------------------------------------------------------------------------------

struct Event {
    std::string application;
    std::string name;
    std::string code;
    std::string description;
};

std::vector<Event> events();
void setEventResult(int result); // 1, "taken", after reset()

// --- hangguard, proc_stat, bootclock, DAXProductionConfig -----------------------------------------------------------

void setHangguardRegisterResult(int result); // 0 after reset()
void setHangguardNotifyResult(int result);   // 0 after reset()
std::vector<int> hangguardRegistrations();   // the seconds of each
int hangguardNotifications();

void setVipResult(int result); // 0 after reset()
int vipCalls();

void setBootclockInitResult(int result); // 0 after reset()
int bootclockInits();
int bootclockFinis();

// The device's local time in seconds, and how far it is ahead of UTC. Both are 0 after reset().
void setLocalTime(std::uint64_t seconds);
void setSecondsAheadOfUTC(std::int64_t seconds);

void setProduction(bool production); // false after reset()

// --- device_power ---------------------------------------------------------------------------------------------------

enum class PowerSignal { STATE_CHANGED, POWER_OFF, POST_WAKEUP };

// The results of a second subscription of a callback, and of the unsubscription of a callback that is not subscribed.
constexpr int ALREADY_SUBSCRIBED = -17;
constexpr int NOT_SUBSCRIBED = -2;

// 0 after reset(). With another result the call changes nothing.
void setPowerSubscribeResult(PowerSignal signal, int result);
void setPowerUnsubscribeResult(PowerSignal signal, int result);

bool isPowerSubscribed(PowerSignal signal);

// Calls every subscribed callback with its own user data, on the calling thread and in the order of subscription. A
// callback that is unsubscribed in the meantime is left out. Returns the last result, 0 when there was none. Holds no
// lock of the fake.
int announcePower(PowerSignal signal, int number);

// What the reading functions return; 0 after reset(). A successful device_power_set_... changes it, and announces
// nothing.
void setPowerState(int state);
void setWakeUpReason(int reason);

// 0 after reset(). A negative one stores nothing.
void setPowerSetStateResult(int result);
void setWakeUpReasonResult(int result);

// 0 after reset().
void setRebootResult(int result);
void setPoweroffResult(int result);

// --- kvplatform -----------------------------------------------------------------------------------------------------

// What kvplatform_getenv returns for a number; an empty optional is a null pointer. After reset() "/shared" (3),
// "/reserved" (6), "/bin" (7), "/usb" (10), "/bigtemp" (27) and "/apps" (28).
void setDirectory(int directory, const std::optional<std::string>& path);

// --- system_info ----------------------------------------------------------------------------------------------------

// nullptr is a read that succeeds and gives no text.
using SystemInfoValue = std::variant<bool, int, std::string, std::nullptr_t>;

// Set the numbered values and the custom ones. A read of a value that was not set, or has another type, gives
// SYSTEM_INFO_ERROR_INVALID_PARAMETER.
void setSystemInfo(int key, const SystemInfoValue& value);
void setSystemInfo(const std::string& key, const SystemInfoValue& value);

// From now on every read of the key gives this result.
void failSystemInfo(int key, int result);
void failSystemInfo(const std::string& key, int result);

// The keys of all reads, oldest first; a number as its decimal text.
std::vector<std::string> systemInfoReads();

// --- plantcfg -------------------------------------------------------------------------------------------------------

// 1, "done", after reset(). A read with another result leaves the reader's value as it was. The numbers are 0 after
// reset().
void setPlantcfgResetResult(int result);
void setModelEnum(int value, int result = 1);
void setLocalsetEnum(int value, int result = 1);

// --- usb_device -----------------------------------------------------------------------------------------------------

// An empty optional stands for a null text.
struct UsbDevice {
    std::optional<std::string> mountPath;
    std::optional<std::string> devname;
    std::optional<std::string> serial;
    std::optional<std::string> manufacturer;
    std::optional<std::string> product;
    int vendorId = 0;
    int productId = 0;
};

// Sets what the next list holds; nothing after reset(). The use of a freed device ends the process.
void setUsbDevices(const std::vector<UsbDevice>& devices);

void setUsbInitResult(int result); // 0 after reset()
void setUsbListResult(int result); // 0 after reset(); with another result there is no list
void setUsbCount(int count);       // the number of the devices after reset()

// From now on each walk's step to this position, 0 for the first, gives this result.
void failUsbWalk(int position, int result);

} // namespace FakeKovan
