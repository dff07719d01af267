#pragma once

#include <boost/chrono/system_clocks.hpp>

#include "Common/Utils/ISimpleClock.h"

namespace DAX::Common::Utils {

class SimpleClock : public ISimpleClock {
public:
    float getCurrentTime() override;

private:
    const boost::chrono::steady_clock::time_point m_start = boost::chrono::steady_clock::now();
};

} // namespace DAX::Common::Utils
