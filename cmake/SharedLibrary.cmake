# How sources are compiled and linked for a shared library.

# dax_shared_objects(<target> <sources>): compiled for a shared library, and all together, since the headers of Boost cost
# a compiler more than the sources do. Without precompiled headers each source stands for itself, as everywhere.
function(dax_shared_objects target)
  add_library(${target} OBJECT ${ARGN})
  set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON UNITY_BUILD_BATCH_SIZE 0
                                             UNITY_BUILD ${DAX_PRECOMPILED_HEADERS})
  target_include_directories(${target} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/clients
                                               ${PROJECT_SOURCE_DIR}/platform/include ${PROJECT_BINARY_DIR}/generated)
  target_link_libraries(${target} PRIVATE dax_build Boost::serialization Boost::date_time Boost::thread
                                          PkgConfig::DBUS)
  target_compile_options(${target} PRIVATE -fvisibility=hidden)
  dax_harden(${target})
endfunction()

# DAX_BOOST_FOR_SHARED_LIBRARY: the Boost libraries for it. Static ones, hidden, if they can go into a shared library; a
# distribution's usually cannot, then the shared ones. Empty where there are neither.
include(CheckCXXSourceCompiles)
set(boost_components serialization thread filesystem)

set(CMAKE_REQUIRED_FLAGS "-std=c++17 -fPIC -shared -Wl,--exclude-libs,ALL")
set(CMAKE_REQUIRED_INCLUDES ${Boost_INCLUDE_DIRS})
set(CMAKE_REQUIRED_LIBRARIES Boost::serialization Boost::thread)
set(CMAKE_REQUIRED_QUIET ON)
set(CMAKE_TRY_COMPILE_TARGET_TYPE EXECUTABLE)
check_cxx_source_compiles("
  #include <sstream>
  #include <boost/archive/text_iarchive.hpp>
  #include <boost/thread/thread.hpp>
  int decode() {
    boost::thread([] {}).join();
    std::stringstream text;
    int number = 0;
    boost::archive::text_iarchive(text) >> number;
    return number;
  }
" DAX_BOOST_FITS_SHARED_LIBRARY)
foreach(variable FLAGS INCLUDES LIBRARIES QUIET)
  unset(CMAKE_REQUIRED_${variable})
endforeach()

if(DAX_BOOST_FITS_SHARED_LIBRARY OR NOT DAX_BOOST_STATIC)
  list(TRANSFORM boost_components PREPEND Boost:: OUTPUT_VARIABLE DAX_BOOST_FOR_SHARED_LIBRARY)
else()
  set(DAX_BOOST_FOR_SHARED_LIBRARY "")
  foreach(component ${boost_components})
    find_library(DAX_SHARED_BOOST_${component} NAMES libboost_${component}.so HINTS ${Boost_LIBRARY_DIRS})
    mark_as_advanced(DAX_SHARED_BOOST_${component})
    if(NOT DAX_SHARED_BOOST_${component})
      set(DAX_BOOST_FOR_SHARED_LIBRARY "")
      break()
    endif()
    list(APPEND DAX_BOOST_FOR_SHARED_LIBRARY ${DAX_SHARED_BOOST_${component}})
  endforeach()
endif()
