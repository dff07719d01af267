#include "SettingsTransaction.h"

#include <map>
#include <memory>
#include <mutex>
#include <unistd.h>
#include <utility>

namespace KovanHost {

namespace {

constexpr std::size_t MAP_SIZE = 8u * 1024 * 1024;
constexpr mdb_mode_t FILE_MODE = 0644;

class Environment {
public:
    int open(const std::string& folder, Durability durability);
    int transact(unsigned int flags, const SettingsWork& work);

private:
    int transactOnce(unsigned int flags, const SettingsWork& work);

    MDB_env* m_environment = nullptr;
    MDB_dbi m_database = 0;
};

int Environment::open(const std::string& folder, Durability durability) {
    if (const int error = mdb_env_create(&m_environment)) {
        return error;
    }
    // Readers are not bound to their threads: each read is over when it returns.
    const unsigned int flags = MDB_NOTLS | (durability == Durability::SYNCED ? 0u : unsigned(MDB_NOSYNC));
    int error = mdb_env_set_mapsize(m_environment, MAP_SIZE);
    error = error != 0 ? error : mdb_env_open(m_environment, folder.c_str(), flags, FILE_MODE);
    error = error != 0 ? error : mdb_reader_check(m_environment, nullptr);
    error = error != 0 ? error : transactOnce(MDB_RDONLY, [this](MDB_txn* transaction, MDB_dbi) {
        return mdb_dbi_open(transaction, nullptr, 0, &m_database);
    });
    if (error != 0) {
        mdb_env_close(m_environment);
    }
    return error;
}

// A process that died while it read keeps its slot, and the pages that it saw, until somebody looks.
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

// LMDB forbids to use an environment after a fork, so a process is part of its key: a child leaves its parent's alone.
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
