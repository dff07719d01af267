#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include <unistd.h>

#include "AppendFile.h"
#include "Root.h"
#include "TextFile.h"

namespace KovanHost {

// A file of the simulated device that several processes, and people, write, and what this process knows of it.
// `Content` is the meaning of its text; `Content()` stands for a missing file. Any thread may call.
template <class Content>
class KnownFile {
public:
    // Where the file is, and how its text and its meaning become each other.
    struct Form {
        const char* path;                          // under the root
        Content (*parse)(const std::string& text); // throws std::runtime_error when the text makes no sense
        std::string (*textOf)(const Content& content);
    };
    enum WhileBad { KEEPS_WHAT_WAS_KNOWN, FALLS_BACK_TO_DEFAULTS };

    KnownFile(const Form& form, WhileBad whileBad) : m_form(form), m_whileBad(whileBad) {}

    std::string path() const { return underRoot(m_form.path); }

    // Reads the file. Throws std::runtime_error with the path and the reason when it is bad.
    Content load() const { return parse(readText(path())); }

    // The same, but while the file is bad, what this process knew before, or Content(). That is reported on standard
    // error with the path and the reason, and not again until the file is good or bad for another reason.
    Content known() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        refresh();
        return m_content;
    }

    // Changes the content and writes it; makes the folders. Changes come one after another, whichever process makes
    // them. Readers see the file as it was before or after, even if the writer dies. Throws what load() throws for a
    // bad file, and std::system_error when the file cannot be written.
    void change(const std::function<void(Content&)>& change) {
        changeFrom([this] { return load(); }, change);
    }

    // The same, but replaces a bad file; the change then begins with what was known.
    void changeEvenIfBad(const std::function<void(Content&)>& change) {
        changeFrom([this] { return known(); }, change);
    }

    // Writes a content in place of any other, good or bad, otherwise like a change. `make` runs while nobody else
    // writes.
    void replace(const std::function<Content()>& make) {
        changeFrom(make, [](Content&) {});
    }

private:
    Content parse(const std::optional<std::string>& text) const {
        try {
            return text ? m_form.parse(*text) : Content();
        } catch (const std::runtime_error& error) {
            throw std::runtime_error(path() + ": " + error.what());
        }
    }

    void changeFrom(const std::function<Content()>& start, const std::function<void(Content&)>& change) {
        makeFolderOf(path());
        const FileLock lock(path() + ".lock");
        Content content = start();
        change(content);
        replaceText(path(), m_form.textOf(content));
        known(); // so that this process remembers it
    }

    void refresh() {
        if (m_path != path()) {
            forget();
        }
        try {
            const bool seen = std::exchange(m_seen, false);
            const std::optional<std::string> text = readText(m_path);
            m_seen = true;
            if (!seen || text != m_text) {
                m_text = text;
                m_content = parse(text);
                m_complaint.clear();
            }
        } catch (const std::runtime_error& error) {
            complain(error.what());
        }
    }

    void forget() {
        m_path = path();
        m_seen = false;
        m_content = Content();
        m_complaint.clear();
    }

    void complain(const std::string& complaint) {
        if (m_whileBad == FALLS_BACK_TO_DEFAULTS) {
            m_content = Content();
        }
        if (m_complaint != complaint) {
            m_complaint = complaint;
            appendLine(STDERR_FILENO, complaint + (m_whileBad == KEEPS_WHAT_WAS_KNOWN ? "; keeping what was known"
                                                                                      : "; using the defaults"));
        }
    }

    const Form m_form;
    const WhileBad m_whileBad;

    std::mutex m_mutex;
    // Guarded by m_mutex.
    std::string m_path;
    bool m_seen = false; // m_text is the text that was read last; its meaning is in m_content or m_complaint
    std::optional<std::string> m_text;
    Content m_content{};
    std::string m_complaint; // empty while the file is good
};

} // namespace KovanHost
