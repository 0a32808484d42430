# JSON, as nlohmann_json::nlohmann_json: headers alone, the same for every machine, so that those of
# the build machine serve where the target has none.

set(json_release 3.11)
find_package(nlohmann_json ${json_release} QUIET CMAKE_FIND_ROOT_PATH_BOTH)
if(NOT nlohmann_json_FOUND)
  message(FATAL_ERROR "libfilter_inspect needs nlohmann-json, ${json_release} or later: run "
                      "scripts/setup, or build without it, with -DFILTER_COMMON_BUILD_INSPECT=OFF")
endif()

# The folder that holds them may be the build machine's /usr/include, which is no place to look for
# anything else: they are reached through a link of their own.
if(CMAKE_CROSSCOMPILING)
  get_target_property(json_folder nlohmann_json::nlohmann_json INTERFACE_INCLUDE_DIRECTORIES)
  list(GET json_folder 0 json_folder)
  set(json_link ${PROJECT_BINARY_DIR}/json_headers)
  file(MAKE_DIRECTORY ${json_link})
  file(CREATE_LINK ${json_folder}/nlohmann ${json_link}/nlohmann SYMBOLIC)
  set_target_properties(
    nlohmann_json::nlohmann_json PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${json_link})
endif()
