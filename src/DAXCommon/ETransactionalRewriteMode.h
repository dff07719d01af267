#pragma once

namespace DAX::Storage {

// How a transaction replaces what its target held. The debug file holds the number.
enum ETransactionalRewriteMode : int {
    REWRITE_IN_PLACE = 0,
    REWRITE_CHANGED = 1,
    REWRITE_ASIDE = 2,
};

} // namespace DAX::Storage
