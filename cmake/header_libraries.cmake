# Libraries of headers alone: the same for every machine, so that those of the build machine serve
# where the target has none.

# Finds a package that offers a target whose headers stand in a folder, and says who needs it and
# how to do without: filter_common_find_headers(<package> <release> <target> <folder> <who> <option>)
function(filter_common_find_headers package release target folder who option)
  find_package(${package} ${release} QUIET GLOBAL CMAKE_FIND_ROOT_PATH_BOTH)
  if(NOT ${package}_FOUND)
    message(FATAL_ERROR "${who} needs ${package}, ${release} or later: run scripts/setup, or build "
                        "without it, with -D${option}=OFF")
  endif()
  # The folder that holds them may be the build machine's /usr/include, which is no place to look
  # for anything else: they are reached through a link of their own.
  if(CMAKE_CROSSCOMPILING)
    get_target_property(found ${target} INTERFACE_INCLUDE_DIRECTORIES)
    list(GET found 0 found)
    set(link ${PROJECT_BINARY_DIR}/headers_of_${package})
    file(MAKE_DIRECTORY ${link})
    file(CREATE_LINK ${found}/${folder} ${link}/${folder} SYMBOLIC)
    set_target_properties(${target} PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${link})
  endif()
endfunction()
