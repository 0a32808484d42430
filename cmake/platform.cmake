# The two libraries of the device that this one calls: limid::limid and policer::policer.

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
