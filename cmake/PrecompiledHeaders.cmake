# The headers that cost a compiler more than the source that includes them are compiled once for many sources. Every source
# still includes what it uses: the preset self-contained builds the production code without this.
if(NOT DAX_PRECOMPILED_HEADERS)
  set(CMAKE_DISABLE_PRECOMPILE_HEADERS ON)
endif()

# Of nearly every production source.
add_library(dax_headers STATIC ${PROJECT_SOURCE_DIR}/cmake/Headers.cpp)
dax_harden(dax_headers)
target_link_libraries(dax_headers PUBLIC dax_build Boost::thread Boost::filesystem)
target_precompile_headers(
  dax_headers PRIVATE
  <algorithm> <functional> <list> <map> <memory> <mutex> <set> <sstream> <string> <utility> <vector>
  <boost/exception/diagnostic_information.hpp> <boost/exception/get_error_info.hpp> <boost/exception/info.hpp>
  <boost/filesystem.hpp>
  <boost/optional.hpp>
  <boost/thread/mutex.hpp> <boost/thread/thread.hpp>)

# Of whatever reads or writes archives.
add_library(dax_archive_headers STATIC ${PROJECT_SOURCE_DIR}/cmake/ArchiveHeaders.cpp)
dax_harden(dax_archive_headers)
target_link_libraries(dax_archive_headers PUBLIC dax_build Boost::serialization Boost::date_time Boost::thread)
target_precompile_headers(
  dax_archive_headers PRIVATE
  <functional> <list> <memory> <set> <sstream> <string> <vector>
  <boost/archive/text_iarchive.hpp> <boost/archive/text_oarchive.hpp>
  <boost/serialization/split_free.hpp> <boost/date_time/posix_time/time_serialize.hpp>
  <boost/exception/all.hpp>
  <boost/serialization/list.hpp> <boost/serialization/optional.hpp> <boost/serialization/set.hpp>
  <boost/serialization/string.hpp> <boost/serialization/vector.hpp>)

# dax_precompile(<target> [TRUE]): for production code, with archives or without.
function(dax_precompile target)
  if(ARGC GREATER 1 AND ARGV1)
    target_precompile_headers(${target} REUSE_FROM dax_archive_headers)
  else()
    target_precompile_headers(${target} REUSE_FROM dax_headers)
  endif()
endfunction()

# Of nearly every test.
function(dax_precompile_for_tests)
  add_library(dax_test_headers STATIC ${PROJECT_SOURCE_DIR}/cmake/TestHeaders.cpp)
  target_compile_options(dax_test_headers PRIVATE ${DAX_TEST_OPTIONS})
  set_target_properties(dax_test_headers PROPERTIES DAX_TEST_CODE ON)
  target_link_libraries(dax_test_headers PUBLIC dax_build GTest::gmock nlohmann_json::nlohmann_json Boost::serialization
                                                 Boost::date_time Boost::thread)
  target_precompile_headers(
    dax_test_headers PRIVATE
    <algorithm> <atomic> <chrono> <cstdlib> <filesystem> <fstream> <functional> <list> <map> <memory> <mutex> <set>
    <sstream> <stdexcept> <string> <thread> <utility> <vector>
    <gmock/gmock.h> <gtest/gtest.h>
    <boost/archive/text_iarchive.hpp> <boost/archive/text_oarchive.hpp>
    <boost/date_time/posix_time/posix_time.hpp>
    <boost/serialization/split_free.hpp> <boost/date_time/posix_time/time_serialize.hpp>
    <boost/exception/all.hpp>
    <boost/optional/optional_io.hpp>
    <boost/serialization/list.hpp> <boost/serialization/optional.hpp> <boost/serialization/set.hpp>
    <boost/serialization/string.hpp> <boost/serialization/vector.hpp>
    <boost/thread/future.hpp> <boost/thread/thread.hpp>
    <nlohmann/json.hpp>)
endfunction()
