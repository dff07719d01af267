#pragma once

#include <optional>
#include <sstream>

namespace DAX::Common::DBUSWrapper {

// A string stream that is used for one message after the other. Making a new one costs more than handling most
// messages, because a new stream looks up every facet of its locale.
class ReusedStream {
public:
    // Hands the stream out, empty and in the state of a new one; at its end it frees the memory of a long text. Only
    // the locale may be that of an earlier user: whoever depends on a locale sets it. One loan at a time.
    class Loan {
    public:
        explicit Loan(ReusedStream& owner);
        Loan(const Loan&) = delete;
        Loan& operator=(const Loan&) = delete;
        ~Loan();

        std::stringstream& stream() { return *m_owner.m_stream; }

    private:
        ReusedStream& m_owner;
    };

private:
    bool isAsNew() const;

    std::optional<std::stringstream> m_stream;
};

} // namespace DAX::Common::DBUSWrapper
