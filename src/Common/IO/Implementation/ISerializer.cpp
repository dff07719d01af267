#include "Common/IO/ISerializer.h"

#include "Utility/Utils/SafePlus.h"

namespace DAX::Common::IO {

void ISerializer::serializeData(std::uint8_t* data, std::size_t size) {
    serializeDataImpl(m_position, data, size);
    m_position = Utils::safePlus<streamsize_t>(m_position, size);
}

} // namespace DAX::Common::IO
