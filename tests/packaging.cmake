# Tests the library as users get it: installed, moved, packed, or built in another folder. These
# tests configure and build separate projects with the tools of this build. The label `package`
# selects them (ctest -L package) or leaves them out (ctest -LE package).

# CMake reads most of these variables from the environment, and the scripts read the other
# variables.
get_target_property(protobuf_libdir protobuf::libprotobuf LOCATION)
cmake_path(GET protobuf_libdir PARENT_PATH protobuf_libdir)
list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
string(REPLACE ";" "\\;" find_root_path "${CMAKE_FIND_ROOT_PATH}")
if(CMAKE_CROSSCOMPILING)
  # On a device, the linker and the loader find the message runtime without help. In these tests
  # they need the name of its folder.
  set(rpath_link " -Wl,-rpath-link,${protobuf_libdir}")
  set(library_path QEMU_SET_ENV=LD_LIBRARY_PATH=${protobuf_libdir})
endif()
set(tools
    CC=${CMAKE_C_COMPILER}
    CXX=${CMAKE_CXX_COMPILER}
    CFLAGS=${CMAKE_C_FLAGS}
    CXXFLAGS=${CMAKE_CXX_FLAGS}
    LDFLAGS=${CMAKE_EXE_LINKER_FLAGS}${rpath_link}
    CMAKE_BUILD_TYPE=${CMAKE_BUILD_TYPE}
    CMAKE_GENERATOR=${CMAKE_GENERATOR}
    CMAKE_TOOLCHAIN_FILE=${CMAKE_TOOLCHAIN_FILE}
    EMULATOR=${emulator}
    FIND_ROOT_PATH=${find_root_path}
    PKG_CONFIG_LIBDIR=${protobuf_libdir}/pkgconfig
    READELF=${CMAKE_READELF}
    ${library_path})

function(filter_common_add_package_test name script)
  add_test(NAME ${name} COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/${script} ${ARGN})
  set_tests_properties(
    ${name} PROPERTIES ENVIRONMENT "${tools}" LABELS package TIMEOUT 900 SKIP_RETURN_CODE 77)
endfunction()

# Installs into an empty prefix, moves it, and builds the examples there. The name of the prefix has
# a space, because such names must also work.
set(prefix "${PROJECT_BINARY_DIR}/tests/installed tree")
filter_common_add_package_test(install install_test.sh ${PROJECT_BINARY_DIR} ${prefix})
set_tests_properties(install PROPERTIES FIXTURES_SETUP installed)
filter_common_add_package_test(consumer consumer_test.sh ${prefix})
set_tests_properties(consumer PROPERTIES FIXTURES_REQUIRED installed)

# This test uses the tree as a subfolder of another project.
filter_common_add_package_test(subproject subproject_test.sh ${PROJECT_SOURCE_DIR})

# Builds with the platform libraries of platform/plain.
filter_common_add_package_test(
  device_platform device_platform/device_platform_test.sh ${PROJECT_SOURCE_DIR}
  ${PROJECT_BINARY_DIR}/tests/device_platform)
# The longest tests start first, so that others run beside them.
set_tests_properties(device_platform PROPERTIES COST 90)

# These tests run only if the build is for the build machine. All targets have the same compiler
# options, and Debian's tools pack only builds for the machine on which they run.
if(NOT CMAKE_CROSSCOMPILING)
  set(libraries $<TARGET_FILE:filter_common> $<TARGET_FILE:limid> $<TARGET_FILE:policer>)
  if(TARGET filter_inspect)
    list(APPEND libraries $<TARGET_FILE:filter_inspect>)
  endif()
  filter_common_add_package_test(
    reproducible reproducible_test.sh ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR} ${libraries})
  set_tests_properties(reproducible PROPERTIES COST 95)
  if(CMAKE_LIBRARY_ARCHITECTURE)
    filter_common_add_package_test(debian_packages debian_packages_test.sh ${PROJECT_BINARY_DIR})
  endif()
endif()
