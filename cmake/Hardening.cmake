# What makes a fault in the code that people run harder to use. Only where the build is optimised, since the library's
# checked functions need that, and without sanitizers, which check more and bring their own.
#
# The program's note about CET is the linker's: it writes one when every object has it, the C library's and Boost's too.
# Where these have none, our code is ready and the program still runs without it.
include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-fcf-protection DAX_HAS_CF_PROTECTION)

string(TOUPPER "${CMAKE_BUILD_TYPE}" dax_config)
set(dax_flags "${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_${dax_config}}")
string(REGEX MATCHALL "-O[^ ]*" dax_levels "${dax_flags}")
list(POP_BACK dax_levels dax_level) # the last one counts
if(dax_level AND NOT dax_level STREQUAL "-O0" AND NOT DAX_SANITIZE AND NOT dax_flags MATCHES "-fsanitize")
  set(DAX_HARDENED ON)
else()
  set(DAX_HARDENED OFF)
endif()

# dax_harden(<targets>): for code that people run, and for what is compiled once for it.
function(dax_harden)
  if(NOT DAX_HARDENED)
    return()
  endif()
  foreach(target ${ARGN})
    # A distribution's own flags may bring another level, and a second definition is a warning.
    # The property is for what goes into a shared library; CMake then gives the option for that.
    target_compile_options(${target} PRIVATE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fstack-protector-strong
                                             $<$<NOT:$<BOOL:$<TARGET_PROPERTY:POSITION_INDEPENDENT_CODE>>>:-fPIE>
                                             $<$<BOOL:${DAX_HAS_CF_PROTECTION}>:-fcf-protection>)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE")
      target_link_options(${target} PRIVATE -pie -Wl,-z,relro,-z,now)
    elseif(type STREQUAL "SHARED_LIBRARY")
      target_link_options(${target} PRIVATE -Wl,-z,relro,-z,now)
    endif()
  endforeach()
endfunction()
