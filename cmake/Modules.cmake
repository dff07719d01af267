# How a folder becomes a module, a program or a test program.

# Test code runs once and is compiled often, so it is not optimised. What it tests is the code that people run.
set(DAX_TEST_OPTIONS -O0)
# Undefined behaviour is looked for in the code that people run: to look for it in the tests, too, takes a compiler half as
# long again.
define_property(TARGET PROPERTY DAX_TEST_CODE BRIEF_DOCS "Test code alone: no code that people run")

add_library(dax_build INTERFACE)
target_include_directories(dax_build INTERFACE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/include)
target_include_directories(dax_build SYSTEM INTERFACE ${Boost_INCLUDE_DIRS})
# Boost's own targets define the second as well; a precompiled header fits only sources that agree with it.
target_compile_definitions(dax_build INTERFACE BOOST_ENABLE_ASSERT_HANDLER BOOST_ALL_NO_LIB)
# The libraries' own targets define these for whoever links a shared one, and again a precompiled header wants all to agree.
if(NOT DAX_BOOST_STATIC)
  foreach(library IN ITEMS ATOMIC CHRONO DATE_TIME FILESYSTEM PROGRAM_OPTIONS SERIALIZATION SYSTEM THREAD)
    target_compile_definitions(dax_build INTERFACE BOOST_${library}_DYN_LINK)
  endforeach()
endif()
# Every path is put together by `/`, which means something else for an absolute right side in the next version.
target_compile_definitions(dax_build INTERFACE BOOST_FILESYSTEM_VERSION=3)
# A newer compiler has warnings that nobody has seen yet: they stay warnings there.
set(newest_tried_GNU 12)
set(newest_tried_Clang 14)
set(werror "")
if(DAX_WERROR AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS_EQUAL "${newest_tried_${CMAKE_CXX_COMPILER_ID}}.99")
  set(werror -Werror)
elseif(DAX_WERROR)
  message(STATUS "Warnings are no errors: the sources are not tried with this compiler")
endif()
# clang wants braces for each base and member of an aggregate, where the language needs none.
target_compile_options(dax_build INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion ${werror}
                                           $<$<CXX_COMPILER_ID:Clang>:-Wno-missing-braces>
                                           -ffunction-sections -fdata-sections)
target_link_options(dax_build INTERFACE -Wl,--gc-sections -Wl,--as-needed)
target_link_libraries(dax_build INTERFACE Threads::Threads)
if(DAX_SANITIZE)
  # With its own code in between, the compiler loses sight of what is initialized.
  target_compile_options(dax_build INTERFACE -fsanitize=${DAX_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
                                             $<$<BOOL:$<TARGET_PROPERTY:DAX_TEST_CODE>>:-fno-sanitize=undefined>
                                             $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  target_link_options(dax_build INTERFACE -fsanitize=${DAX_SANITIZE})
  # Programs of 150 MB: the ordinary linker takes 8 seconds for each, this one less than 2.
  find_program(DAX_LLD ld.lld)
  mark_as_advanced(DAX_LLD)
  if(DAX_LLD)
    target_link_options(dax_build INTERFACE -fuse-ld=lld)
  endif()
endif()
if(DAX_FUZZ)
  target_compile_options(dax_build INTERFACE -fsanitize=fuzzer-no-link)
endif()

include(${CMAKE_CURRENT_LIST_DIR}/PrecompiledHeaders.cmake)
# Everything that people run, and nothing else.
add_custom_target(production)

# Sources of production code, but those of platform/host, are compiled four together, unless each has to show that it
# includes what it uses: what they share of headers and templates costs a compiler more than they do.
# The four are neighbours in alphabetical order. So a new file, or one more in ALONE, shifts those behind it, and names of
# files that nobody has touched can meet in one source. If they clash, give one a more telling name; if there is none, put
# its file into ALONE.
function(dax_compile_together target)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${DAX_PRECOMPILED_HEADERS} UNITY_BUILD_BATCH_SIZE 4)
  set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()

# dax_module(<target> [ARCHIVES] [PUBLIC <targets>] [PRIVATE <targets>] [ALONE <files>])
# The folder is the module: the public headers at its root, the sources in Implementation/. Those of Implementation/host/
# and Implementation/device/ belong to that platform alone. ARCHIVES: it reads or writes archives. ALONE are sources whose
# names would clash with another's.
function(dax_module target)
  cmake_parse_arguments(ARG "ARCHIVES" "" "PUBLIC;PRIVATE;ALONE" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/Implementation/*.cpp)
  set(other_platforms host device)
  list(REMOVE_ITEM other_platforms ${KOVAN_PLATFORM})
  list(FILTER sources EXCLUDE REGEX "/Implementation/${other_platforms}/")
  if(sources)
    add_library(${target} STATIC ${sources})
    target_link_libraries(${target} PUBLIC dax_build ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
    dax_harden(${target})
    dax_precompile(${target} ${ARG_ARCHIVES})
    dax_compile_together(${target} ${ARG_ALONE})
    add_dependencies(production ${target})
  else()
    add_library(${target} INTERFACE)
    target_link_libraries(${target} INTERFACE dax_build ${ARG_PUBLIC} ${ARG_PRIVATE})
  endif()
endfunction()

# dax_program(<target> [ARCHIVES] LINK <targets> [ALONE <files>])
# Every source of the folder and of its Implementation/, with the platform chosen. Beside a main.cpp, they are the library
# <target>_parts, which tests link as well.
function(dax_program target)
  cmake_parse_arguments(ARG "ARCHIVES" "" "LINK;ALONE" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  set(main ${CMAKE_CURRENT_SOURCE_DIR}/main.cpp)
  if(main IN_LIST sources)
    list(REMOVE_ITEM sources ${main})
    add_library(${target}_parts STATIC ${sources})
    target_link_libraries(${target}_parts PUBLIC dax_build ${ARG_LINK})
    dax_harden(${target}_parts)
    dax_precompile(${target}_parts ${ARG_ARCHIVES})
    dax_compile_together(${target}_parts ${ARG_ALONE})
    set(sources ${main})
    set(ARG_LINK ${target}_parts)
  endif()
  add_executable(${target} ${sources})
  target_link_libraries(${target} PRIVATE dax_build ${ARG_LINK} kovan_platform)
  dax_harden(${target})
  dax_precompile(${target} ${ARG_ARCHIVES})
  add_dependencies(production ${target})
  dax_link_runtime(${target})
  set_target_properties(${target} PROPERTIES KOVAN_IMPLEMENTATION kovan_platform)
endfunction()

if(DAX_BUILD_TESTS)
  find_package(GTest 1.12 REQUIRED)
  dax_precompile_for_tests()
endif()

add_custom_target(tests_with_threads)

# dax_test(<target> LINK <targets> [HOST] [THREADS] [ALONE <files>] [SOURCES <files>] [TIMEOUT <seconds>]
#          [PROPERTIES <name> <value>...])
# A GoogleTest program over FakeKovan, or over the host platform with HOST. The sources are the folder's own .cpp files.
# They are compiled several together, since what they instantiate of GoogleTest and Boost costs a compiler more than they
# do; ALONE are those whose names would clash with another's.
# THREADS marks what the thread sanitizer has to see at every submission. Each test is labelled with its program.
function(dax_test target)
  cmake_parse_arguments(ARG "HOST;THREADS" "TIMEOUT" "LINK;SOURCES;ALONE;PROPERTIES" ${ARGN})
  if(NOT ARG_SOURCES)
    file(GLOB ARG_SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  endif()
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 60)
  endif()
  if(DAX_SANITIZE) # and four tests at a time: some take half a minute alone
    math(EXPR ARG_TIMEOUT "4 * ${ARG_TIMEOUT}")
  endif()
  add_executable(${target} ${ARG_SOURCES})
  set_target_properties(${target} PROPERTIES DAX_TEST_CODE ON UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 8)
  set_source_files_properties(${ARG_ALONE} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
  # The compiler takes a source that is included for a header, where a fixture without linkage would be a mistake.
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests ${CMAKE_CURRENT_SOURCE_DIR})
  target_compile_options(${target} PRIVATE ${DAX_TEST_OPTIONS})
  target_precompile_headers(${target} REUSE_FROM dax_test_headers)
  target_link_libraries(${target} PRIVATE dax_build ${ARG_LINK} GTest::gmock_main)
  set(implementation FakeKovan)
  if(ARG_HOST)
    set(implementation kovan_platform)
  endif()
  target_link_libraries(${target} PRIVATE ${implementation})
  set_target_properties(${target} PROPERTIES KOVAN_IMPLEMENTATION ${implementation})
  set(label ${target})
  if(ARG_THREADS)
    set(label "${target} threads") # one word, since a list does not survive the discovery
    add_dependencies(tests_with_threads ${target})
  endif()
  gtest_discover_tests(${target} NO_PRETTY_VALUES DISCOVERY_MODE PRE_TEST
                       PROPERTIES TIMEOUT ${ARG_TIMEOUT} LABELS ${label} ${ARG_PROPERTIES})
endfunction()
