#pragma once

namespace DAX::Storage {

// How a transaction replaces the earlier content of its target. The debug parameter file holds the number.
enum ETransactionalRewriteMode : int {
    REWRITE_IN_PLACE = 0,
    REWRITE_CHANGED = 1,
    REWRITE_ASIDE = 2,
};

} // namespace DAX::Storage
