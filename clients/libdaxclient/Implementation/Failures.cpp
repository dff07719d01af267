#include <utility>

#include "dax/client.h"

namespace dax {

struct DAX_HIDDEN Refusal::Contents {
    Reason reason;
    std::optional<Owner> owner;
};

struct DAX_HIDDEN Error::Contents {
    Kind kind;
    std::string name;
    std::string supportCode;
    std::string text;
    std::string diagnostic;
};

struct DAX_HIDDEN Unreachable::Contents {
    Reason reason;
    std::string busError;
    std::string text;
    std::string diagnostic;
};

namespace {

std::string sentenceOf(Refusal::Reason reason, const std::optional<Owner>& owner) {
    if (reason == Refusal::Reason::SESSION_OVER) {
        return "The update service is refused: the session is no longer valid.";
    }
    if (reason == Refusal::Reason::LOCKED || !owner) {
        return "The update service is refused: a lock is in force.";
    }
    const std::string holder =
        owner->clientName + " with priority " + std::to_string(static_cast<int>(owner->priority));
    return "The update service is refused: it is held by " + holder + ".";
}

std::string sentenceOf(const std::string& name, const std::string& supportCode, const std::string& text) {
    std::string sentence = "The update service reports " + name;
    if (!supportCode.empty()) {
        sentence += " (support code " + supportCode + ")";
    }
    return text.empty() ? sentence + "." : sentence + ": " + text;
}

std::string sentenceOf(Unreachable::Reason reason, const std::string& busError, const std::string& text) {
    const auto begin = [&] {
        switch (reason) {
        case Unreachable::Reason::NO_BUS:
            return "The message bus cannot be reached";
        case Unreachable::Reason::NOT_ALLOWED:
            if (busError == "org.freedesktop.DBus.Error.LimitsExceeded") {
                return "The message bus has no room for the call now";
            }
            return "This program may not call the update service";
        case Unreachable::Reason::TIMED_OUT:
            return "The update service does not answer in time";
        default:
            return "There is no update service";
        }
    }();
    return text.empty() ? std::string(begin) + "." : std::string(begin) + ": " + text;
}

} // namespace

Failure::Failure(std::string text) : m_text(std::make_shared<const std::string>(std::move(text))) {}
Failure::Failure(const Failure&) noexcept = default;
Failure& Failure::operator=(const Failure&) noexcept = default;
Failure::~Failure() = default;

const char* Failure::what() const noexcept {
    return m_text->c_str();
}

Refusal::Refusal(Reason reason, std::optional<Owner> owner)
    : Failure(sentenceOf(reason, owner))
    , m_contents(std::make_shared<const Contents>(Contents{reason, std::move(owner)})) {}
Refusal::Refusal(const Refusal&) noexcept = default;
Refusal& Refusal::operator=(const Refusal&) noexcept = default;
Refusal::~Refusal() = default;

Refusal::Reason Refusal::reason() const noexcept {
    return m_contents->reason;
}

const std::optional<Owner>& Refusal::owner() const noexcept {
    return m_contents->owner;
}

Error::Error(Kind kind, std::string name, std::string supportCode, std::string text, std::string diagnostic)
    : Failure(sentenceOf(name, supportCode, text))
    , m_contents(std::make_shared<const Contents>(
          Contents{kind, std::move(name), std::move(supportCode), std::move(text), std::move(diagnostic)})) {}
Error::Error(const Error&) noexcept = default;
Error& Error::operator=(const Error&) noexcept = default;
Error::~Error() = default;

Error::Kind Error::kind() const noexcept {
    return m_contents->kind;
}

const std::string& Error::name() const noexcept {
    return m_contents->name;
}

const std::string& Error::supportCode() const noexcept {
    return m_contents->supportCode;
}

const std::string& Error::text() const noexcept {
    return m_contents->text;
}

const std::string& Error::diagnostic() const noexcept {
    return m_contents->diagnostic;
}

Unreachable::Unreachable(Reason reason, std::string busError, std::string text, std::string diagnostic)
    : Failure(sentenceOf(reason, busError, text))
    , m_contents(std::make_shared<const Contents>(
          Contents{reason, std::move(busError), std::move(text), std::move(diagnostic)})) {}
Unreachable::Unreachable(const Unreachable&) noexcept = default;
Unreachable& Unreachable::operator=(const Unreachable&) noexcept = default;
Unreachable::~Unreachable() = default;

Unreachable::Reason Unreachable::reason() const noexcept {
    return m_contents->reason;
}

const std::string& Unreachable::busError() const noexcept {
    return m_contents->busError;
}

const std::string& Unreachable::text() const noexcept {
    return m_contents->text;
}

const std::string& Unreachable::diagnostic() const noexcept {
    return m_contents->diagnostic;
}

} // namespace dax
