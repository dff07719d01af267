# Stands in for the toolchain file of a device's SDK: where the device's libraries are, and no trace of what only the
# simulated device, the tools and the tests need. It stands beside the libraries.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-L${CMAKE_CURRENT_LIST_DIR}/lib")
set(ENV{PKG_CONFIG_LIBDIR} "${CMAKE_CURRENT_LIST_DIR}/pkgconfig")
foreach(package CLI11 nlohmann_json GTest benchmark)
  set(CMAKE_DISABLE_FIND_PACKAGE_${package} ON)
endforeach()
