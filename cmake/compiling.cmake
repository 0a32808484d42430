# How everything of this project is compiled and linked: filter_common_warnings for our own code,
# filter_common_shipped for the libraries that are installed, and programs that are C.
include(CheckCXXCompilerFlag)
include(CheckLinkerFlag)

# --- What every target shares --------------------------------------------------------------------

set(CMAKE_C_STANDARD 11)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

# Optimised and debuggable unless the caller wants something else.
get_property(filter_common_multi_config GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT filter_common_multi_config)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Kind of build" FORCE)
endif()

# Built libraries find each other by relative paths, so that a build's folder leaves no trace in them.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

# A program is linked again when an interface changes, and not when code behind it does.
set(CMAKE_LINK_DEPENDS_NO_SHARED ON)

# --- filter_common_warnings, linked PRIVATE: what our own code is held to ------------------------

# Generated code does not link it. CMAKE_COMPILE_WARNING_AS_ERROR, set by the presets, turns the
# warnings into errors. A switch that leaves out an enumerator is one always: the catalogues rely on
# it.
add_library(filter_common_warnings INTERFACE)
target_compile_options(
  filter_common_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror=switch
                                   $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>)

# --- filter_common_shipped, linked PRIVATE: the libraries that are installed ---------------------

add_library(filter_common_shipped INTERFACE)

# The same bytes from whichever folder they are built in. -ffile-prefix-map would map a third kind
# of names too, by which coverage finds the sources.
foreach(kind debug macro)
  target_compile_options(
    filter_common_shipped INTERFACE -f${kind}-prefix-map=${PROJECT_SOURCE_DIR}=.
                                    -f${kind}-prefix-map=${PROJECT_BINARY_DIR}=./build)
endforeach()

# Calls within a library go straight to their target, and those that leave it through its table of
# addresses, which is filled while it is loaded: smaller and faster, with the same exports.
target_compile_options(filter_common_shipped INTERFACE -fno-semantic-interposition -fno-plt)

# The linker for 32-bit PowerPC has the loader expect that thread-local variables are reached by way
# of that table, and without it programs crash. Others have no such option.
check_linker_flag(
  CXX LINKER:--no-tls-get-addr-optimize FILTER_COMMON_HAS_TLS_GET_ADDR_OPTIMIZE)
if(FILTER_COMMON_HAS_TLS_GET_ADDR_OPTIMIZE)
  target_link_options(filter_common_shipped INTERFACE LINKER:--no-tls-get-addr-optimize)
endif()

# Functions here are short and many, and their loops run a few times: room between them is not worth
# a tenth of the code.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(
    filter_common_shipped INTERFACE -falign-functions=4 -fno-align-jumps -fno-align-loops)
endif()

# Faults that get through stop the process. The checked functions of the C library need an optimised
# build; a compiler may already define a level of its own.
target_compile_options(
  filter_common_shipped
  INTERFACE -fstack-protector-strong
            $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>)
target_link_options(filter_common_shipped INTERFACE LINKER:-z,relro,-z,now,-z,noexecstack)

# Marks the places where jumps may land; not every target has it.
check_cxx_compiler_flag(-fcf-protection FILTER_COMMON_HAS_CF_PROTECTION)
if(FILTER_COMMON_HAS_CF_PROTECTION)
  target_compile_options(filter_common_shipped INTERFACE -fcf-protection)
endif()

# Nothing is left for a user to resolve. A sanitizer's runtime is, since only programs link it.
if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
  target_link_options(filter_common_shipped INTERFACE LINKER:-z,defs)
endif()

# --- Programs in C -------------------------------------------------------------------------------

# Holds a program in C over the library to the warnings, as errors: it shows that the headers are C.
function(filter_common_hold_c_program name)
  target_link_libraries(${name} PRIVATE filter_common::filter_common filter_common_warnings)
  set_target_properties(${name} PROPERTIES COMPILE_WARNING_AS_ERROR ON)
  # What the sanitizers need of the C++ runtime, only the C++ compiler links.
  if(CMAKE_CXX_FLAGS MATCHES "-fsanitize=")
    set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
  endif()
endfunction()
