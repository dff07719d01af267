#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Common/IO/ISink.h"
#include "Common/IO/ITransactionalEntity.h"
#include "Utility/Utils/IDebugName.h"

namespace DAX::Common::IO {

// Gives the same data to several sinks, in the order in which they were added. What a branch throws passes, and the
// branches after it get nothing.
class BranchSink : public ISink, public ITransactionalEntity, public Utils::IDebugName {
public:
    // `passEndOfData`: whether the end of data is marked on the branches, too.
    explicit BranchSink(bool passEndOfData) : m_passEndOfData(passEndOfData) {}

    void addBranch(std::shared_ptr<ISink> branch);

    void writeChunk(const std::uint8_t* data, std::size_t size) override;
    void markEndOfData() override;
    bool endOfDataMarked() override { return m_endOfDataMarked; }

    void transactionSaved(ITransaction* transaction) override;
    void transactionSerialize(IStoreTransaction* transaction) override;

    std::string debugName() const override;

private:
    void processBranches(ITransaction* transaction);

    const bool m_passEndOfData;
    bool m_endOfDataMarked = false;
    std::vector<std::shared_ptr<ISink>> m_branches;
};

} // namespace DAX::Common::IO
