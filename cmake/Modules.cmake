# How a folder becomes a module, a program or a test program.

# Test code runs once and is compiled often: a release does not optimise it. What it tests is the code that people run.
set(DAX_TEST_OPTIONS $<$<CONFIG:Release>:-O0>)

add_library(dax_build INTERFACE)
target_include_directories(dax_build INTERFACE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/include)
target_include_directories(dax_build SYSTEM INTERFACE ${Boost_INCLUDE_DIRS})
# Boost's own targets define the second as well; a precompiled header fits only sources that agree with it.
target_compile_definitions(dax_build INTERFACE BOOST_ENABLE_ASSERT_HANDLER BOOST_ALL_NO_LIB)
# Every path is put together by `/`, which means something else for an absolute right side in the next version.
target_compile_definitions(dax_build INTERFACE BOOST_FILESYSTEM_VERSION=3)
target_compile_options(dax_build INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror
                                           -ffunction-sections -fdata-sections)
target_link_options(dax_build INTERFACE -Wl,--gc-sections -Wl,--as-needed)
target_link_libraries(dax_build INTERFACE Threads::Threads)
if(DAX_SANITIZE)
  # With its own code in between, the compiler loses sight of what is initialized.
  target_compile_options(dax_build INTERFACE -fsanitize=${DAX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
                                             $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  target_link_options(dax_build INTERFACE -fsanitize=${DAX_SANITIZE})
endif()
if(DAX_FUZZ)
  target_compile_options(dax_build INTERFACE -fsanitize=fuzzer-no-link)
endif()

# dax_module(<target> [PUBLIC <targets>] [PRIVATE <targets>])
# The folder is the module: the public headers at its root, the sources in Implementation/. Those of Implementation/host/
# and Implementation/device/ belong to that platform alone.
function(dax_module target)
  cmake_parse_arguments(ARG "" "" "PUBLIC;PRIVATE" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/Implementation/*.cpp)
  set(other_platforms host device)
  list(REMOVE_ITEM other_platforms ${KOVAN_PLATFORM})
  list(FILTER sources EXCLUDE REGEX "/Implementation/${other_platforms}/")
  if(sources)
    add_library(${target} STATIC ${sources})
    target_link_libraries(${target} PUBLIC dax_build ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
    dax_harden(${target})
  else()
    add_library(${target} INTERFACE)
    target_link_libraries(${target} INTERFACE dax_build ${ARG_PUBLIC} ${ARG_PRIVATE})
  endif()
endfunction()

# dax_archives(<targets>): for modules, programs and tests that read or write archives. The archive headers cost a compiler
# seconds in each file; they are compiled once for all.
add_library(dax_archive_headers STATIC ${PROJECT_SOURCE_DIR}/cmake/ArchiveHeaders.cpp)
dax_harden(dax_archive_headers)
target_link_libraries(dax_archive_headers PUBLIC dax_build Boost::serialization Boost::date_time Boost::thread)
target_precompile_headers(
  dax_archive_headers PRIVATE
  <functional> <list> <memory> <set> <sstream> <string> <vector>
  <boost/archive/text_iarchive.hpp> <boost/archive/text_oarchive.hpp>
  <boost/date_time/posix_time/time_serialize.hpp>
  <boost/exception/all.hpp>
  <boost/serialization/list.hpp> <boost/serialization/optional.hpp> <boost/serialization/set.hpp>
  <boost/serialization/string.hpp> <boost/serialization/vector.hpp>)
function(dax_archives)
  foreach(target ${ARGN})
    target_precompile_headers(${target} REUSE_FROM dax_archive_headers)
  endforeach()
endfunction()

# dax_program(<target> LINK <targets>): every source of the folder and of its Implementation/, with the platform chosen.
# Beside a main.cpp, they are the library <target>_parts, which tests link as well.
function(dax_program target)
  cmake_parse_arguments(ARG "" "" "LINK" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  set(main ${CMAKE_CURRENT_SOURCE_DIR}/main.cpp)
  if(main IN_LIST sources)
    list(REMOVE_ITEM sources ${main})
    add_library(${target}_parts STATIC ${sources})
    target_link_libraries(${target}_parts PUBLIC dax_build ${ARG_LINK})
    dax_harden(${target}_parts)
    set(sources ${main})
    set(ARG_LINK ${target}_parts)
  endif()
  add_executable(${target} ${sources})
  target_link_libraries(${target} PRIVATE dax_build ${ARG_LINK} kovan_platform)
  dax_harden(${target})
  dax_link_runtime(${target})
  set_target_properties(${target} PROPERTIES KOVAN_IMPLEMENTATION kovan_platform)
endfunction()

# The headers that nearly every test needs cost a compiler more than the test itself; they are compiled once for all.
if(DAX_TESTS)
  find_package(GTest REQUIRED)
  add_library(dax_test_headers STATIC ${PROJECT_SOURCE_DIR}/cmake/TestHeaders.cpp)
  target_compile_options(dax_test_headers PRIVATE ${DAX_TEST_OPTIONS})
  target_link_libraries(dax_test_headers PUBLIC dax_build GTest::gmock Boost::serialization Boost::date_time Boost::thread)
  target_precompile_headers(
    dax_test_headers PRIVATE
    <algorithm> <atomic> <chrono> <cstdlib> <filesystem> <fstream> <functional> <list> <map> <memory> <mutex> <set>
    <sstream> <stdexcept> <string> <thread> <utility> <vector>
    <gmock/gmock.h> <gtest/gtest.h>
    <boost/archive/text_iarchive.hpp> <boost/archive/text_oarchive.hpp>
    <boost/date_time/posix_time/posix_time.hpp> <boost/date_time/posix_time/time_serialize.hpp>
    <boost/exception/all.hpp>
    <boost/optional/optional_io.hpp>
    <boost/serialization/list.hpp> <boost/serialization/optional.hpp> <boost/serialization/set.hpp>
    <boost/serialization/string.hpp> <boost/serialization/vector.hpp>
    <boost/thread/future.hpp> <boost/thread/thread.hpp>)
endif()

# dax_test(<target> LINK <targets> [HOST] [SOURCES <files>] [TIMEOUT <seconds>])
# A GoogleTest program over FakeKovan, or over the host platform with HOST. The sources are the folder's own .cpp files.
function(dax_test target)
  cmake_parse_arguments(ARG "HOST" "TIMEOUT" "LINK;SOURCES;PROPERTIES" ${ARGN})
  if(NOT ARG_SOURCES)
    file(GLOB ARG_SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  endif()
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 60)
  endif()
  add_executable(${target} ${ARG_SOURCES})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_compile_options(${target} PRIVATE ${DAX_TEST_OPTIONS})
  target_precompile_headers(${target} REUSE_FROM dax_test_headers)
  target_link_libraries(${target} PRIVATE dax_build ${ARG_LINK} GTest::gmock_main)
  set(implementation FakeKovan)
  if(ARG_HOST)
    set(implementation kovan_platform)
  endif()
  target_link_libraries(${target} PRIVATE ${implementation})
  set_target_properties(${target} PROPERTIES KOVAN_IMPLEMENTATION ${implementation})
  gtest_discover_tests(${target} NO_PRETTY_VALUES DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT ${ARG_TIMEOUT} ${ARG_PROPERTIES})
endfunction()
