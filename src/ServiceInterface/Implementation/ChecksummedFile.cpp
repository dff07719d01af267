#include "ServiceInterface/Implementation/ChecksummedFile.h"

#include <cerrno>
#include <cstdint>
#include <limits>

#include <boost/crc.hpp>
#include <fcntl.h>
#include <unistd.h>

#include "Utility/Utils/ErrInfoStream.h"
#include "Utility/Utils/GenericException.h"

namespace DAX {
namespace Service {
namespace ServiceCommon {

using Common::Utils::errinfo_path;
using Common::Utils::GenericException;
using Common::Utils::get_string_from_errno;

namespace {

const std::string MAGIC = "CHECKSUMED";
const std::size_t TRAILER_SIZE = MAGIC.size() + sizeof(std::uint32_t);

// An open file; it is closed with the object. Failures are exceptions.
class File {
public:
    File(const std::string& path, int flags)
        : m_path(path), m_descriptor(::open(path.c_str(), flags | O_CLOEXEC, 0666)) {
        if (m_descriptor < 0) {
            fail("Cannot open file");
        }
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() { ::close(m_descriptor); }

    void write(const std::string& bytes) const {
        for (std::size_t done = 0; done < bytes.size();) {
            const ssize_t count = ::write(m_descriptor, bytes.data() + done, bytes.size() - done);
            if (count < 0 && errno != EINTR) {
                fail("Cannot write file");
            }
            done += count > 0 ? static_cast<std::size_t>(count) : 0;
        }
    }

    // A special file has no medium, which is no failure.
    void flush() const {
        if (::fsync(m_descriptor) != 0 && errno != EINVAL) {
            fail("Cannot flush file");
        }
    }

    std::string readAll() const {
        std::string bytes;
        char chunk[1024];
        for (;;) {
            const ssize_t count = ::read(m_descriptor, chunk, sizeof(chunk));
            if (count == 0) {
                return bytes;
            }
            if (count < 0 && errno != EINTR) {
                fail("Cannot read file");
            }
            bytes.append(chunk, count > 0 ? static_cast<std::size_t>(count) : 0);
        }
    }

private:
    [[noreturn]] void fail(const char* what) const {
        const std::string reason = get_string_from_errno(errno);
        DAX_THROW(GenericException(), what << reason << errinfo_path(m_path));
    }

    const std::string m_path;
    const int m_descriptor;
};

std::string checksum(const std::string& data) {
    boost::crc_32_type crc;
    crc.process_bytes(data.data(), data.size());
    return littleEndian32(crc.checksum());
}

} // namespace

std::string littleEndian32(std::size_t value) {
    if (value > std::numeric_limits<std::uint32_t>::max()) {
        DAX_THROW(GenericException(), "Number does not fit in 32 bits: " << value);
    }
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<char>((value >> shift) & 0xffU));
    }
    return bytes;
}

void writeChecksummedFile(const std::string& path, const std::string& data) {
    const File file(path, O_WRONLY | O_CREAT | O_TRUNC);
    file.write(data + MAGIC + checksum(data));
    file.flush();
}

bool isChecksummedFileIntact(const std::string& path) {
    const std::string bytes = File(path, O_RDONLY).readAll();
    if (bytes.size() < TRAILER_SIZE) {
        return false;
    }
    const std::string data = bytes.substr(0, bytes.size() - TRAILER_SIZE);
    return bytes.compare(data.size(), std::string::npos, MAGIC + checksum(data)) == 0;
}

} // namespace ServiceCommon
} // namespace Service
} // namespace DAX
