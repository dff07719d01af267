#pragma once

#include <functional>
#include <string>

#include <lmdb.h>

namespace KovanHost {

enum class Durability { SYNCED, NOT_SYNCED };

using SettingsWork = std::function<int(MDB_txn* transaction, MDB_dbi database)>;

// Runs `work` in one transaction of the LMDB environment in `folder`, and commits it when `work` returns 0. `flags` is
// MDB_RDONLY or 0. Returns 0 or LMDB's error, which is ENOENT when the folder does not exist.
//
// An environment is opened at its first use in a process and stays open until the process ends. Any thread may call. A
// forked child may call too; it opens environments of its own.
int inSettingsTransaction(const std::string& folder, Durability durability, unsigned int flags,
                          const SettingsWork& work);

} // namespace KovanHost
