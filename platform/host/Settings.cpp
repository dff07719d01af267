#include "Settings.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <type_traits>

#include "OwnFiles.h"
#include "Root.h"
#include "SettingsTransaction.h"

namespace KovanHost {

namespace {

constexpr std::size_t MAX_KEY_LENGTH = 511;
const int UNREADABLE_VALUE = MDB_INCOMPATIBLE;

struct Store {
    const char* folder;
    Durability durability;
};

const Store PERSISTENT = {"var/lib/kovan/settings", Durability::SYNCED};
const Store VOLATILE = {"run/kovan/settings", Durability::NOT_SYNCED};

bool startsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

const Store* storeOf(const std::string& key) {
    if (key.size() > MAX_KEY_LENGTH) {
        return nullptr;
    }
    if (startsWith(key, "db/") || startsWith(key, "rtc/")) {
        return &PERSISTENT;
    }
    return startsWith(key, "memory/") ? &VOLATILE : nullptr;
}

MDB_val viewOf(const std::string& text) {
    return {text.size(), const_cast<char*>(text.data())};
}

// A record is the number of the type in SettingsValue, followed by the value's bytes as in memory, or by the text.
std::string encode(const SettingsValue& value) {
    std::string record(1, static_cast<char>(value.index()));
    std::visit(
        [&record](const auto& held) {
            if constexpr (std::is_same_v<decltype(held), const std::string&>) {
                record += held;
            } else {
                record.append(reinterpret_cast<const char*>(&held), sizeof(held));
            }
        },
        value);
    return record;
}

template <class T>
int decodeNumber(const char* bytes, std::size_t size, SettingsValue& value) {
    T number;
    if (size != sizeof(number)) {
        return UNREADABLE_VALUE;
    }
    std::memcpy(&number, bytes, size);
    value = number;
    return 0;
}

int decode(const MDB_val& record, SettingsValue& value) {
    if (record.mv_size == 0) {
        return UNREADABLE_VALUE;
    }
    const char* const bytes = static_cast<const char*>(record.mv_data) + 1;
    const std::size_t size = record.mv_size - 1;
    switch (bytes[-1]) {
    case 0:
        return decodeNumber<bool>(bytes, size, value);
    case 1:
        return decodeNumber<int>(bytes, size, value);
    case 2:
        return decodeNumber<double>(bytes, size, value);
    case 3:
        value = std::string(bytes, size);
        return 0;
    default:
        return UNREADABLE_VALUE;
    }
}

int run(const Store& store, unsigned int flags, const SettingsWork& work) {
    return inSettingsTransaction(underRoot(store.folder), store.durability, flags, work);
}

// A store without a folder was never written to, and so has no setting.
int absentIfNoStore(int error) {
    return error == ENOENT ? MDB_NOTFOUND : error;
}

int makeFolder(const Store& store) {
    return makeFolders(underRoot(store.folder));
}

int collect(MDB_txn* transaction, MDB_dbi database, const std::string& prefix,
            std::map<std::string, SettingsValue>& settings) {
    MDB_cursor* cursor = nullptr;
    if (const int error = mdb_cursor_open(transaction, database, &cursor)) {
        return error;
    }
    const std::unique_ptr<MDB_cursor, decltype(&mdb_cursor_close)> guard(cursor, &mdb_cursor_close);
    MDB_val key = viewOf(prefix);
    MDB_val record;
    int error = mdb_cursor_get(cursor, &key, &record, prefix.empty() ? MDB_FIRST : MDB_SET_RANGE);
    for (; error == 0; error = mdb_cursor_get(cursor, &key, &record, MDB_NEXT)) {
        const std::string name(static_cast<const char*>(key.mv_data), key.mv_size);
        if (!startsWith(name, prefix)) {
            return 0;
        }
        SettingsValue value;
        if (decode(record, value) == 0) {
            settings[name] = value;
        }
    }
    return error == MDB_NOTFOUND ? 0 : error;
}

} // namespace

int getSetting(const std::string& key, SettingsValue& value) {
    const Store* const store = storeOf(key);
    if (store == nullptr) {
        return MDB_BAD_VALSIZE;
    }
    return absentIfNoStore(run(*store, MDB_RDONLY, [&](MDB_txn* transaction, MDB_dbi database) {
        MDB_val name = viewOf(key);
        MDB_val record;
        const int error = mdb_get(transaction, database, &name, &record);
        return error != 0 ? error : decode(record, value);
    }));
}

int setSetting(const std::string& key, const SettingsValue& value) {
    const Store* const store = storeOf(key);
    if (store == nullptr) {
        return MDB_BAD_VALSIZE;
    }
    const auto put = [&](MDB_txn* transaction, MDB_dbi database) {
        const std::string bytes = encode(value);
        MDB_val name = viewOf(key);
        MDB_val record = viewOf(bytes);
        return mdb_put(transaction, database, &name, &record, 0);
    };
    const int error = run(*store, 0, put);
    if (error != ENOENT) {
        return error;
    }
    const int failure = makeFolder(*store);
    return failure != 0 ? failure : run(*store, 0, put);
}

int unsetSetting(const std::string& key) {
    const Store* const store = storeOf(key);
    if (store == nullptr) {
        return MDB_BAD_VALSIZE;
    }
    return absentIfNoStore(run(*store, 0, [&](MDB_txn* transaction, MDB_dbi database) {
        MDB_val name = viewOf(key);
        return mdb_del(transaction, database, &name, nullptr);
    }));
}

int listSettings(const std::string& prefix, std::map<std::string, SettingsValue>& settings) {
    if (prefix.size() > MAX_KEY_LENGTH) {
        return 0;
    }
    for (const Store& store : {PERSISTENT, VOLATILE}) {
        const int error = run(store, MDB_RDONLY, [&](MDB_txn* transaction, MDB_dbi database) {
            return collect(transaction, database, prefix, settings);
        });
        if (error != 0 && error != ENOENT) {
            return error;
        }
    }
    return 0;
}

std::string describeSettingsError(int error) {
    switch (error) {
    case MDB_NOTFOUND:
        return "there is no such setting";
    case MDB_BAD_VALSIZE:
        return "a key begins with \"db/\", \"rtc/\" or \"memory/\" and has at most 511 bytes";
    case UNREADABLE_VALUE:
        return "the stored value cannot be read";
    default:
        return mdb_strerror(error);
    }
}

} // namespace KovanHost
