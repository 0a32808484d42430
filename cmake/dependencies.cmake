# The dependencies: the message runtime, the device's two libraries, header-only libraries and
# GoogleTest.

# --- The message runtime, protobuf::libprotobuf, and its compiler, ${protoc} ---------------------

include(${CMAKE_CURRENT_LIST_DIR}/find_protobuf.cmake)
if(NOT "${Protobuf_VERSION}" VERSION_GREATER_EQUAL 3.6.0)
  message(FATAL_ERROR "The protocol-buffer runtime is needed, release 3.6.0 or later; "
                      "found '${Protobuf_VERSION}'")
endif()
message(STATUS "Protocol buffers ${Protobuf_VERSION}")

# When this build cross-compiles, it uses the protoc of the build machine. The target's runtime may
# include a protoc too, but that program may not run here.
set(protoc protobuf::protoc)
if(CMAKE_CROSSCOMPILING)
  find_program(Protobuf_PROTOC_EXECUTABLE protoc REQUIRED)
  set(protoc ${Protobuf_PROTOC_EXECUTABLE})
endif()

# --- The two libraries of the device: limid::limid and policer::policer --------------------------

set(FILTER_COMMON_PLATFORM standin CACHE STRING
    "Where limid and policer come from: the stand-ins in platform/, or the device's own packages")
set_property(CACHE FILTER_COMMON_PLATFORM PROPERTY STRINGS standin device)

if(FILTER_COMMON_PLATFORM STREQUAL "standin")
  add_subdirectory(platform/limid)
  add_subdirectory(platform/policer)
  target_link_libraries(limid PRIVATE filter_common_shipped filter_common_warnings)
  target_link_libraries(policer PRIVATE filter_common_shipped filter_common_warnings)
elseif(FILTER_COMMON_PLATFORM STREQUAL "device")
  find_package(limid REQUIRED)
  find_package(policer REQUIRED)
else()
  message(FATAL_ERROR "FILTER_COMMON_PLATFORM is '${FILTER_COMMON_PLATFORM}'; "
                      "it must be 'standin' or 'device'")
endif()

# --- Header-only libraries -----------------------------------------------------------------------

# Header-only libraries are the same for every machine. If the target lacks them, the headers of the
# build machine are used.
#
# Finds the package of a header-only library, its target, and the folder of its headers. If it is
# missing, an error says which part (<who>) needs it and which option builds without that part:
#   filter_common_find_headers(<package> <release> <target> <folder> <who> <option>)
function(filter_common_find_headers package release target folder who option)
  find_package(${package} ${release} QUIET GLOBAL CMAKE_FIND_ROOT_PATH_BOTH)
  if(NOT ${package}_FOUND)
    message(FATAL_ERROR "${who} needs ${package}, ${release} or later: run scripts/setup, or build "
                        "without it, with -D${option}=OFF")
  endif()
  # The headers may be in /usr/include of the build machine. The compiler must not find the other
  # headers there, so it gets a folder with only a link to these headers.
  if(CMAKE_CROSSCOMPILING)
    get_target_property(found ${target} INTERFACE_INCLUDE_DIRECTORIES)
    list(GET found 0 found)
    set(link ${PROJECT_BINARY_DIR}/headers_of_${package})
    file(MAKE_DIRECTORY ${link})
    file(CREATE_LINK ${found}/${folder} ${link}/${folder} SYMBOLIC)
    set_target_properties(${target} PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${link})
  endif()
endfunction()

# --- GoogleTest ----------------------------------------------------------------------------------

set(FILTER_COMMON_GOOGLETEST_SOURCE "" CACHE PATH
    "Folder of GoogleTest's sources, to build it instead of looking for it")

# Provides GTest::gmock and GTest::gtest_main of the system for this folder and its subfolders. If
# the target has no package, they are built from the sources that Debian's package googletest
# installs.
macro(filter_common_find_googletest)
  if(NOT FILTER_COMMON_GOOGLETEST_SOURCE)
    find_package(GTest 1.12)
    if(NOT GTest_FOUND)
      message(FATAL_ERROR "The tests need GoogleTest 1.12 or later: run scripts/setup, or build "
                          "without tests, with -DBUILD_TESTING=OFF")
    endif()
  elseif(NOT TARGET GTest::gtest)
    add_subdirectory(${FILTER_COMMON_GOOGLETEST_SOURCE} googletest EXCLUDE_FROM_ALL SYSTEM)
  endif()
endmacro()
