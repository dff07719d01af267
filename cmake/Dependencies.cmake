# The libraries that the system stands on. Boost is linked statically: a daemon that is started on demand pays for every
# shared library and every relocation at each start.
set(Boost_USE_STATIC_LIBS ON)
set(CMAKE_THREAD_PREFER_PTHREAD ON)
find_package(Threads REQUIRED)
find_package(Boost 1.74 REQUIRED COMPONENTS thread chrono filesystem program_options serialization date_time system)
find_package(PkgConfig REQUIRED)
pkg_check_modules(DBUS REQUIRED IMPORTED_TARGET dbus-1)
pkg_check_modules(GLIB REQUIRED IMPORTED_TARGET glib-2.0)
pkg_check_modules(SYSTEMD REQUIRED IMPORTED_TARGET libsystemd)
pkg_check_modules(LMDB REQUIRED IMPORTED_TARGET lmdb)
find_package(CLI11 REQUIRED)
find_package(nlohmann_json REQUIRED)
