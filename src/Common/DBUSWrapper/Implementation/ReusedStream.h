#pragma once

#include <optional>
#include <sstream>

namespace DAX::Common::DBUSWrapper {

// A string stream for one message after the other: to make one costs more than most messages, since a new stream looks
// up every facet of its locale.
class ReusedStream {
public:
    // Hands the stream out, empty and with the state of a new one, and frees at its end what a long text took. Only the
    // locale may be the one that an earlier user set; who depends on a locale sets it. One loan at a time.
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
