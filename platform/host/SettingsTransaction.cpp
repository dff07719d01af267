#include "SettingsTransaction.h"

#include <cerrno>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "OwnFiles.h"

namespace KovanHost {

namespace {

constexpr std::size_t MAP_SIZE = std::size_t{8} * 1024 * 1024;
constexpr off_t LOCK_FILE_SIZE = 8192; // for LMDB's default number of readers

class Environment {
public:
    int open(const std::string& folder, Durability durability);
    int transact(unsigned int flags, const SettingsWork& work);

private:
    int openOnce(const std::string& folder, Durability durability);
    int coverItsPages() const;
    int transactOnce(unsigned int flags, const SettingsWork& work);

    MDB_env* m_environment = nullptr;
    MDB_dbi m_database = 0;
};

// A lock that only one process holds at a time, while this object lives.
class FolderLock {
public:
    explicit FolderLock(const std::string& folder)
        : m_descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
        , m_error(m_descriptor < 0 ? errno : 0) {
        while (m_error == 0 && flock(m_descriptor, LOCK_EX) != 0) {
            m_error = errno == EINTR ? 0 : errno;
        }
    }

    // 0, or the reason why the lock is not held.
    int error() const { return m_error; }

private:
    const Descriptor m_descriptor;
    int m_error;
};

// Only before the environment is open: LMDB's locks are lost when the process closes the lock file.
int reserve(const std::string& path, off_t size) {
    const Descriptor file(openOrMake(path, O_RDWR | O_NOFOLLOW | O_NONBLOCK));
    if (file < 0) {
        return errno;
    }
    return size == 0 ? 0 : posix_fallocate(file, 0, size);
}

// LMDB maps its lock file into memory. If the medium had no room for it, a signal would end the process at the first
// access, so the room is taken before. The data file is written, which can fail in order; it is made here for the sake
// of its mode.
int reserveFiles(const std::string& folder) {
    const int error = reserve(folder + "/lock.mdb", LOCK_FILE_SIZE);
    return error != 0 ? error : reserve(folder + "/data.mdb", 0);
}

// Whether the data file never held a setting: its maker died, or had no more room, before the first two pages were on
// the medium.
bool isUnborn(const std::string& dataFile) {
    const Descriptor file(::open(dataFile.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    std::string pages(2 * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + 1, '\0');
    const ssize_t size = file < 0 ? -1 : read(file, &pages[0], pages.size());
    if (size < 0 || static_cast<std::size_t>(size) == pages.size()) {
        return false;
    }
    return static_cast<std::size_t>(size) < pages.size() - 1 || pages.find_first_not_of('\0') == std::string::npos;
}

int Environment::open(const std::string& folder, Durability durability) {
    const FolderLock lock(folder);
    if (lock.error() != 0) {
        return lock.error();
    }
    if (const int error = reserveFiles(folder)) {
        return error;
    }
    const int error = openOnce(folder, durability);
    const std::string dataFile = folder + "/data.mdb";
    if (error != MDB_INVALID || !isUnborn(dataFile) || truncate(dataFile.c_str(), 0) != 0) {
        return error;
    }
    return openOnce(folder, durability);
}

// A data file that was cut off lacks pages to which it refers. An access to one of them in the map would end the
// process; a page of zeros is an ordinary failure.
int Environment::coverItsPages() const {
    MDB_envinfo told;
    MDB_stat pages;
    int file = -1;
    struct stat status {};
    int error = mdb_env_info(m_environment, &told);
    error = error != 0 ? error : mdb_env_stat(m_environment, &pages);
    error = error != 0 ? error : mdb_env_get_fd(m_environment, &file);
    if (error != 0 || fstat(file, &status) != 0) {
        return error != 0 ? error : errno;
    }
    if (told.me_last_pgno >= MAP_SIZE / pages.ms_psize) {
        return MDB_CORRUPTED; // no store is that large, and a damaged file must not fill the medium
    }
    const auto size = static_cast<off_t>((told.me_last_pgno + 1) * pages.ms_psize);
    return status.st_size >= size ? 0 : posix_fallocate(file, status.st_size, size - status.st_size);
}

int Environment::openOnce(const std::string& folder, Durability durability) {
    if (const int error = mdb_env_create(&m_environment)) {
        return error;
    }
    // Readers need not be bound to their threads: each read is over when it returns.
    const unsigned int flags = MDB_NOTLS | (durability == Durability::SYNCED ? 0u : unsigned(MDB_NOSYNC));
    int error = mdb_env_set_mapsize(m_environment, MAP_SIZE);
    error = error != 0 ? error : mdb_env_open(m_environment, folder.c_str(), flags, FILE_MODE);
    error = error != 0 ? error : coverItsPages();
    error = error != 0 ? error : mdb_reader_check(m_environment, nullptr);
    error = error != 0 ? error : transactOnce(MDB_RDONLY, [this](MDB_txn* transaction, MDB_dbi) {
        return mdb_dbi_open(transaction, nullptr, 0, &m_database);
    });
    if (error != 0) {
        mdb_env_close(m_environment);
    }
    return error;
}

// A process that died while it was reading keeps its slot, and with it the pages that it saw, until somebody checks.
int Environment::transact(unsigned int flags, const SettingsWork& work) {
    const int error = transactOnce(flags, work);
    int freedSlots = 0;
    if (error == MDB_READERS_FULL || error == MDB_MAP_FULL) {
        mdb_reader_check(m_environment, &freedSlots);
    }
    return freedSlots == 0 ? error : transactOnce(flags, work);
}

int Environment::transactOnce(unsigned int flags, const SettingsWork& work) {
    MDB_txn* transaction = nullptr;
    if (const int error = mdb_txn_begin(m_environment, nullptr, flags, &transaction)) {
        return error;
    }
    std::unique_ptr<MDB_txn, decltype(&mdb_txn_abort)> guard(transaction, &mdb_txn_abort);
    if (const int error = work(transaction, m_database)) {
        return error;
    }
    return mdb_txn_commit(guard.release());
}

// LMDB forbids the use of an environment after a fork. The process id is therefore part of the key, so that a child
// does not touch its parent's environment.
int findEnvironment(const std::string& folder, Durability durability, Environment*& environment) {
    static std::mutex mutex;
    using Environments = std::map<std::pair<pid_t, std::string>, std::unique_ptr<Environment>>;
    static Environments& environments = *std::make_unique<Environments>().release(); // outlives static destructors

    const std::lock_guard<std::mutex> lock(mutex);
    std::unique_ptr<Environment>& place = environments[{getpid(), folder}];
    if (place == nullptr) {
        auto opened = std::make_unique<Environment>();
        if (const int error = opened->open(folder, durability)) {
            return error;
        }
        place = std::move(opened);
    }
    environment = place.get();
    return 0;
}

} // namespace

int inSettingsTransaction(const std::string& folder, Durability durability, unsigned int flags,
                          const SettingsWork& work) {
    Environment* environment = nullptr;
    const int error = findEnvironment(folder, durability, environment);
    return error != 0 ? error : environment->transact(flags, work);
}

} // namespace KovanHost
