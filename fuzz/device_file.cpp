// Takes any bytes as the simulated device's file of facts, and asks every question that its platform answers from it.
// The results are those that callers know, and the second answer is the same as the first. A bad file is reported once,
// with its first bad line, and a value of the wrong type once. A fact has its type whatever the file says. What is
// written into a good file is read back.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <plantcfg.h>
#include <sanitizer/common_interface_defs.h>
#include <sys/mman.h>
#include <system_info.h>
#include <unistd.h>

#include "host/DeviceFile.h"
#include "host/KeyFileLines.h"
#include "support/TemporaryRoot.h"

namespace {

using DAX::Tests::TemporaryRoot;
using KovanHost::DeviceFact;
using KovanHost::KeyFile;

int originalErrors = -1; // the standard error of the fuzzer and the sanitizers

void require(bool condition, const char* what) {
    if (!condition) {
        dprintf(originalErrors, "%s\n", what);
        std::abort();
    }
}

// Captures what is written to standard error while it lives.
class Errors {
public:
    Errors() { dup2(file(), STDERR_FILENO); }
    ~Errors() { dup2(originalErrors, STDERR_FILENO); }
    Errors(const Errors&) = delete;
    Errors& operator=(const Errors&) = delete;

    // What was captured since the last call.
    std::string take() {
        std::string text(static_cast<std::size_t>(lseek(file(), 0, SEEK_END)), '\0');
        require(pread(file(), text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()), "no errors to read");
        require(ftruncate(file(), 0) == 0 && lseek(file(), 0, SEEK_SET) == 0, "no errors to forget");
        return text;
    }

private:
    static int file() {
        static const int descriptor = memfd_create("errors", MFD_CLOEXEC);
        return descriptor;
    }
};

bool isAnswer(int result) {
    return result == SYSTEM_INFO_ERROR_NONE || result == SYSTEM_INFO_ERROR_IO_ERROR ||
           result == SYSTEM_INFO_ERROR_INVALID_PARAMETER;
}

template <class Value>
struct Answer {
    int result;
    Value value;
};

template <class Value, class Function, class Key>
Answer<Value> ask(Function function, Key key) {
    Answer<Value> answer{0, {}};
    answer.result = function(key, &answer.value);
    require(isAnswer(answer.result), "another result");
    return answer;
}

template <class Function, class Key>
Answer<std::string> askText(Function function, Key key) {
    const Answer<char*> answer = ask<char*>(function, key);
    require((answer.value != nullptr) == (answer.result == 0), "a text without success, or success without a text");
    const std::string text = answer.value != nullptr ? answer.value : "";
    std::free(answer.value);
    return {answer.result, text};
}

template <class Value>
void requireSame(const Answer<Value>& first, const Answer<Value>& second) {
    require(first.result == second.result && first.value == second.value, "another answer to the same question");
}

// The results of the three questions; each is asked twice.
struct Results {
    int ofInt;
    int ofBool;
    int ofString;
};

template <class Int, class Bool, class String, class Key>
Results askAll(Int getInt, Bool getBool, String getString, Key key) {
    const Answer<int> number = ask<int>(getInt, key);
    requireSame(number, ask<int>(getInt, key));
    const Answer<bool> flag = ask<bool>(getBool, key);
    requireSame(flag, ask<bool>(getBool, key));
    const Answer<std::string> text = askText(getString, key);
    requireSame(text, askText(getString, key));
    return {number.result, flag.result, text.result};
}

Results askValue(int key) {
    return askAll(system_info_get_value_int, system_info_get_value_bool, system_info_get_value_string,
                  static_cast<system_info_key_e>(key));
}

Results askCustom(const std::string& key) {
    return askAll(system_info_get_custom_int, system_info_get_custom_bool, system_info_get_custom_string, key.c_str());
}

int resultOf(bool isTheType) {
    return isTheType ? SYSTEM_INFO_ERROR_NONE : SYSTEM_INFO_ERROR_INVALID_PARAMETER;
}

void requireItsType(const DeviceFact& fact, const Results& results) {
    require(results.ofInt == resultOf(std::holds_alternative<int>(fact.fallback)) &&
                results.ofBool == resultOf(std::holds_alternative<bool>(fact.fallback)) &&
                results.ofString == resultOf(std::holds_alternative<std::string>(fact.fallback)),
            "a fact does not have its type");
}

void askFact(const DeviceFact& fact) {
    if (fact.group == KovanHost::SYSTEM_INFO) {
        requireItsType(fact, askValue(fact.number));
    } else if (fact.group == KovanHost::FEATURES) {
        requireItsType(fact, askCustom(fact.name));
    }
    require(KovanHost::valueOf(fact).index() == fact.fallback.index(), "a value of another type");
    require(KovanHost::valueOf(fact) == KovanHost::valueOf(fact), "another value");
}

void askPlantcfg() {
    int number = 0;
    require(plantcfg_get_model_enum(&number) == 1 && plantcfg_get_localset_enum(&number) == 1, "no number");
}

void requireOneLineOrNone(const std::string& errors) {
    require(errors.empty() || (errors.back() == '\n' && std::count(errors.begin(), errors.end(), '\n') == 1),
            "more than one line for one mistake");
    require(errors.size() < 1024, "a line without bound");
}

// The reports about each fact of a good file.
void askKnown(Errors& errors) {
    for (const DeviceFact& fact : KovanHost::deviceFacts()) {
        askFact(fact);
        requireOneLineOrNone(errors.take());
        askFact(fact);
        require(errors.take().empty(), "a value is told twice");
    }
    askPlantcfg();
    require(errors.take().empty(), "a value is told twice");
}

// Asks for everything that the file holds, known or not.
void askGiven(const KeyFile& file) {
    for (const std::string& group : file.groups()) {
        for (const std::string& key : file.keys(group)) {
            const std::size_t line = KovanHost::lineOfKey(file.text(), group, key);
            require(line >= 1 && line <= 4096, "a key without its line");
            askCustom(key);
            askValue(std::atoi(key.c_str()));
        }
    }
}

void writeAndRead(const KeyFile& file, const std::string& value) {
    for (const char* group : {KovanHost::FEATURES, KovanHost::PLANTCFG, "a new one"}) {
        KeyFile changed(file.text());
        try {
            changed.set(group, "localset", value);
        } catch (const std::runtime_error& reason) {
            require(std::string(reason.what()).find("' is no UTF-8 text") != std::string::npos, reason.what());
            continue;
        }
        require(KeyFile(changed.text()).get<std::string>(group, "localset") == value, "another value is read back");
    }
}

// Checks that the reported line is bad and all lines before it are good.
void requireFirstBadLine(const std::string& text, std::size_t line) {
    std::size_t begin = 0;
    for (std::size_t number = 1; number < line; ++number) {
        begin = text.find('\n', begin) + 1;
        require(begin != 0, "a line behind the end");
    }
    const auto isGood = [](const std::string& part) {
        try {
            const KeyFile file(part);
            return true;
        } catch (const std::runtime_error&) {
            return false;
        }
    };
    require(isGood(text.substr(0, begin)), "a bad line ahead of the first one");
    const std::size_t end = text.find('\n', begin);
    require(!isGood(text.substr(0, end == std::string::npos ? end : end + 1)), "a good line is told to be bad");
}

std::size_t lineIn(const std::string& reason) {
    const std::string_view beginning = "line ";
    require(reason.compare(0, beginning.size(), beginning) == 0, "a reason without its line");
    return std::strtoul(reason.c_str() + beginning.size(), nullptr, 10);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    setenv("KOVAN_DLOG", "none", 1);
    originalErrors = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
    __sanitizer_set_report_fd(reinterpret_cast<void*>(static_cast<std::intptr_t>(originalErrors)));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryRoot root;
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::filesystem::remove(KovanHost::devicePath());
    askFact(KovanHost::deviceFacts().back()); // makes the platform forget its reports about the input before
    root.write("etc/kovan/device.ini", text);

    Errors errors;
    try {
        const KeyFile file(text);
        askKnown(errors);
        askGiven(file);
        writeAndRead(file, text.substr(0, 100));
    } catch (const std::runtime_error& reason) {
        requireFirstBadLine(text, lineIn(reason.what()));
        askFact(KovanHost::deviceFacts().front());
        require(!errors.take().empty(), "a bad file is not told");
        for (const DeviceFact& fact : KovanHost::deviceFacts()) {
            require(KovanHost::valueOf(fact) == fact.fallback, "a bad file gives a value");
        }
        askPlantcfg();
        require(errors.take().empty(), "a bad file is told twice");
    }
    errors.take();
    return 0;
}
