#pragma once

// What an archive needs to hold a boost::posix_time::ptime. The library's own header uses split_free without a
// declaration of it, so that the order of these two matters.
// clang-format off
#include <boost/serialization/split_free.hpp>
#include <boost/date_time/posix_time/time_serialize.hpp>
// clang-format on
