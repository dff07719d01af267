#include "Common/IO/BranchSink.h"

#include <utility>

#include "Common/IO/Implementation/processIfTransactional.h"
#include "Common/IO/serializeFlag.h"

namespace DAX::Common::IO {

void BranchSink::addBranch(std::shared_ptr<ISink> branch) {
    m_branches.push_back(std::move(branch));
}

void BranchSink::writeChunk(const std::uint8_t* data, std::size_t size) {
    throwIfEndOfDataMarked();
    for (const std::shared_ptr<ISink>& branch : m_branches) {
        branch->writeChunk(data, size);
    }
}

void BranchSink::markEndOfData() {
    throwIfEndOfDataMarked();
    // Marked even if a branch then fails.
    m_endOfDataMarked = true;
    if (!m_passEndOfData) {
        return;
    }
    for (const std::shared_ptr<ISink>& branch : m_branches) {
        branch->markEndOfData();
    }
}

void BranchSink::transactionSaved(ITransaction* transaction) {
    processBranches(transaction);
}

void BranchSink::transactionSerialize(IStoreTransaction* transaction) {
    serializeFlag(transaction->serializer(), m_endOfDataMarked);
    processBranches(transaction);
}

void BranchSink::processBranches(ITransaction* transaction) {
    for (const std::shared_ptr<ISink>& branch : m_branches) {
        processIfTransactional(*transaction, *branch);
    }
}

std::string BranchSink::debugName() const {
    std::string names;
    for (const std::shared_ptr<ISink>& branch : m_branches) {
        names += (names.empty() ? "" : ", ") + Utils::getDebugName(*branch);
    }
    return "BranchSink(" + names + ")";
}

} // namespace DAX::Common::IO
