# The warnings that our own code is held to. Link filter_common_warnings PRIVATE; generated code
# does not. CMAKE_COMPILE_WARNING_AS_ERROR, set by the presets, turns them into errors. A switch that
# leaves out an enumerator is one always: the catalogues rely on it.

add_library(filter_common_warnings INTERFACE)
target_compile_options(
  filter_common_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror=switch
                                   $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>)
