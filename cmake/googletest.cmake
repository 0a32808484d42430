# GTest::gmock and GTest::gtest_main: from the system, or for a target that has no package of them
# built from the sources that Debian's package googletest installs.

set(FILTER_COMMON_GOOGLETEST_SOURCE "" CACHE PATH
    "Folder of GoogleTest's sources, to build it instead of looking for it")

if(FILTER_COMMON_GOOGLETEST_SOURCE)
  add_subdirectory(${FILTER_COMMON_GOOGLETEST_SOURCE} googletest EXCLUDE_FROM_ALL SYSTEM)
else()
  find_package(GTest 1.12)
  if(NOT GTest_FOUND)
    message(FATAL_ERROR "The tests need GoogleTest 1.12 or later: run scripts/setup, or build "
                        "without tests, with -DBUILD_TESTING=OFF")
  endif()
endif()
