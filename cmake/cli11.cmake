# Command lines, as CLI11::CLI11: headers alone, the same for every machine, so that those of the
# build machine serve where the target has none.

set(cli11_release 2.1)
find_package(CLI11 ${cli11_release} QUIET CMAKE_FIND_ROOT_PATH_BOTH)
if(NOT CLI11_FOUND)
  message(FATAL_ERROR "filter-inspect needs CLI11, ${cli11_release} or later: run scripts/setup, or "
                      "build without it, with -DFILTER_COMMON_BUILD_TOOLS=OFF")
endif()

# The folder that holds them may be the build machine's /usr/include, which is no place to look for
# anything else: they are reached through a link of their own.
if(CMAKE_CROSSCOMPILING)
  get_target_property(cli11_folder CLI11::CLI11 INTERFACE_INCLUDE_DIRECTORIES)
  list(GET cli11_folder 0 cli11_folder)
  set(cli11_link ${PROJECT_BINARY_DIR}/cli11_headers)
  file(MAKE_DIRECTORY ${cli11_link})
  file(CREATE_LINK ${cli11_folder}/CLI ${cli11_link}/CLI SYMBOLIC)
  set_target_properties(CLI11::CLI11 PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${cli11_link})
endif()
