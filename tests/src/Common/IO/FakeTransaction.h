#pragma once

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "Common/IO/ITransactionalEntity.h"

namespace DAX::Tests {

// Saves to or loads from an array of bytes, and processes each dependency at once.
class FakeTransaction : public Common::IO::IStoreTransaction {
public:
    // The first saves; the second loads what another one saved.
    FakeTransaction() = default;
    explicit FakeTransaction(std::vector<std::uint8_t> saved) : bytes(std::move(saved)), m_serializer(*this, false) {}

    using IStoreTransaction::processDependency;
    void processDependency(Common::IO::ITransactionalEntity* entity,
                           boost::optional<std::function<void()>> serialize) override {
        dependencies.push_back(entity);
        if (serialize) {
            (*serialize)();
        } else if (processes) {
            entity->transactionSerialize(this);
        }
    }

    serializers::binary::ISerializer& serializer() override { return m_serializer; }

    std::vector<std::uint8_t> bytes;
    std::vector<Common::IO::ITransactionalEntity*> dependencies;
    bool processes = true; // whether a dependency without a function is serialized

private:
    class Serializer : public serializers::binary::ISerializer {
    public:
        Serializer(FakeTransaction& owner, bool saving) : m_owner(owner), m_saving(saving) {}

        bool saving() override { return m_saving; }
        void serializeData(std::uint8_t* data, std::size_t size) override {
            if (m_saving) {
                m_owner.bytes.insert(m_owner.bytes.end(), data, data + size);
                return;
            }
            if (size > m_owner.bytes.size()) {
                throw std::runtime_error("nothing more was saved");
            }
            std::copy_n(m_owner.bytes.begin(), size, data);
            m_owner.bytes.erase(m_owner.bytes.begin(), m_owner.bytes.begin() + static_cast<std::ptrdiff_t>(size));
        }

    private:
        FakeTransaction& m_owner;
        const bool m_saving;
    };

    Serializer m_serializer{*this, true};
};

} // namespace DAX::Tests
