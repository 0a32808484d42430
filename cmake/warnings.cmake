# The warnings that our own code is held to. Link filter_common_warnings PRIVATE; generated code
# does not. CMAKE_COMPILE_WARNING_AS_ERROR, set by the presets, turns them into errors.

add_library(filter_common_warnings INTERFACE)
target_compile_options(
  filter_common_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wswitch)
