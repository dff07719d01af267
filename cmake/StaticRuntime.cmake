# The C++ runtime goes into the programs that people run. Four fifths of the dynamic loader's work at a start are the
# relocations of the shared runtime: 2.9 million cycles with it, 0.54 million without. A daemon that is started on demand
# pays for them at each start, and keeps the pages that they touch as memory of its own.
#
# Off for a device: a platform library in C++ brings the shared runtime, and two runtimes in one process do not know each
# other's exceptions. So does a shared Boost. Never with a sanitizer, which replaces functions of the shared one.
include(CheckCXXSourceCompiles)

set(dax_static_runtime_options -static-libstdc++ -static-libgcc)
set(dax_sanitized OFF)
if(DAX_SANITIZE OR dax_flags MATCHES "-fsanitize")
  set(dax_sanitized ON)
endif()

set(dax_default OFF)
if(KOVAN_PLATFORM STREQUAL "host" AND DAX_BOOST_STATIC AND NOT dax_sanitized)
  set(CMAKE_REQUIRED_LINK_OPTIONS ${dax_static_runtime_options})
  check_cxx_source_compiles("#include <stdexcept>\nint main() { throw std::runtime_error(\"\"); }"
                            DAX_CAN_LINK_STATIC_RUNTIME)
  unset(CMAKE_REQUIRED_LINK_OPTIONS)
  set(dax_default ${DAX_CAN_LINK_STATIC_RUNTIME})
endif()
option(DAX_STATIC_RUNTIME "Link libstdc++ and libgcc statically into the programs" ${dax_default})
if(dax_sanitized)
  set(DAX_STATIC_RUNTIME OFF)
endif()

# dax_link_runtime(<program>): for a program that people run.
function(dax_link_runtime program)
  if(DAX_STATIC_RUNTIME)
    target_link_options(${program} PRIVATE ${dax_static_runtime_options})
  endif()
endfunction()
