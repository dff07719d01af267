# The libraries that the system stands on, each with the oldest version that has what is called here; of CLI11,
# nlohmann-json and GoogleTest the oldest that the build is tried with.
#
# Boost is linked statically: a daemon that is started on demand pays for every shared library and every relocation at each
# start.
option(DAX_BOOST_STATIC "Link Boost statically" ON)
set(Boost_USE_STATIC_LIBS ${DAX_BOOST_STATIC})
set(CMAKE_THREAD_PREFER_PTHREAD ON)
find_package(Threads REQUIRED)
find_package(Boost 1.74 REQUIRED COMPONENTS thread chrono filesystem program_options serialization date_time system)
find_package(PkgConfig REQUIRED)
pkg_check_modules(DBUS REQUIRED IMPORTED_TARGET dbus-1>=1.12)
pkg_check_modules(GLIB REQUIRED IMPORTED_TARGET glib-2.0>=2.52)

# What only the simulated device, and the tools that are used with it, need.
if(KOVAN_PLATFORM STREQUAL "host")
  pkg_check_modules(SYSTEMD REQUIRED IMPORTED_TARGET libsystemd>=209)
  pkg_check_modules(LMDB REQUIRED IMPORTED_TARGET lmdb>=0.9)
endif()
if(KOVAN_PLATFORM STREQUAL "host" OR DAX_BUILD_CLIENTS)
  find_package(CLI11 2.1 REQUIRED)
  find_package(nlohmann_json 3.11 REQUIRED)
  pkg_check_modules(PCAP REQUIRED IMPORTED_TARGET libpcap>=1.9) # 1.9 reads and writes captures of a D-Bus
endif()
