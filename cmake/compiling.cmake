# Sets the options of compiler and linker. filter_common_warnings has the options for our own code,
# and filter_common_shipped those for the installed libraries. Programs in C have further options.
include(CheckCXXCompilerFlag)
include(CheckLinkerFlag)

# --- Options of every target ---------------------------------------------------------------------

set(CMAKE_C_STANDARD 11)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

# The default build is optimised and has debug information.
get_property(filter_common_multi_config GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT filter_common_multi_config)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Kind of build" FORCE)
endif()

# Link-time optimisation makes libfilter_common smaller and quicker to load. It is not turned on if
# this tree is a subfolder of another project, or if the user sets
# CMAKE_INTERPROCEDURAL_OPTIMIZATION.
if(PROJECT_IS_TOP_LEVEL AND NOT DEFINED CMAKE_INTERPROCEDURAL_OPTIMIZATION)
  include(CheckIPOSupported)
  check_ipo_supported(RESULT FILTER_COMMON_HAS_LINK_TIME_OPTIMISATION LANGUAGES CXX)
endif()

# Turns on link-time optimisation for a target, but only in build types that are optimised.
function(filter_common_optimise_at_link target)
  if(FILTER_COMMON_HAS_LINK_TIME_OPTIMISATION)
    foreach(config RELEASE RELWITHDEBINFO MINSIZEREL)
      set_target_properties(${target} PROPERTIES INTERPROCEDURAL_OPTIMIZATION_${config} ON)
    endforeach()
  endif()
endfunction()

# Built libraries find each other by relative paths, so that they do not contain the build folder.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

# Where files are compiled together, this many are one file. Each such file reads all headers once,
# which takes unoptimised builds most of their time.
set(CMAKE_UNITY_BUILD_BATCH_SIZE 35 CACHE STRING "Files that are compiled together")

# A program is not linked again if only the code of a library changes, and not its interface.
set(CMAKE_LINK_DEPENDS_NO_SHARED ON)

# --- filter_common_warnings, linked PRIVATE: the warnings for our own code -----------------------

# Generated code does not link this target. CMAKE_COMPILE_WARNING_AS_ERROR, which the presets set,
# turns the warnings into errors. A switch that leaves out an enumerator is always an error, because
# the catalogues rely on it.
add_library(filter_common_warnings INTERFACE)
target_compile_options(
  filter_common_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror=switch
                                   $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>)

# --- filter_common_shipped, linked PRIVATE: the libraries that are installed ---------------------

add_library(filter_common_shipped INTERFACE)

# A build gives the same bytes in every folder. -ffile-prefix-map is not used, because it would also
# change the names by which coverage finds the sources. Link-time optimisation writes debug
# information at the link, so the linker gets the same prefix options as the compiler.
foreach(kind debug macro)
  target_compile_options(
    filter_common_shipped INTERFACE -f${kind}-prefix-map=${PROJECT_SOURCE_DIR}=.
                                    -f${kind}-prefix-map=${PROJECT_BINARY_DIR}=./build)
endforeach()
if(FILTER_COMMON_HAS_LINK_TIME_OPTIMISATION)
  target_link_options(filter_common_shipped INTERFACE -fdebug-prefix-map=${PROJECT_BINARY_DIR}=./build)
endif()

# Calls inside a library are direct. Calls to other libraries go through a table that is filled at
# load time. This makes the code smaller and faster, and the exports stay the same.
target_compile_options(filter_common_shipped INTERFACE -fno-semantic-interposition -fno-plt)

# On 32-bit PowerPC the loader expects that code reaches thread-local variables through call stubs,
# but -fno-plt leaves these out. Programs crash without the linker option below. Linkers for other
# targets do not have this option.
check_linker_flag(
  CXX LINKER:--no-tls-get-addr-optimize FILTER_COMMON_HAS_TLS_GET_ADDR_OPTIMIZE)
if(FILTER_COMMON_HAS_TLS_GET_ADDR_OPTIMIZE)
  target_link_options(filter_common_shipped INTERFACE LINKER:--no-tls-get-addr-optimize)
endif()

# The library has many short functions whose loops run only a few times. Aligned loops would make
# the code a tenth larger for little gain.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(
    filter_common_shipped INTERFACE -falign-functions=4 -fno-align-jumps -fno-align-loops)
endif()

# These options stop the process at some memory faults, such as an overrun of the stack. The checked
# functions of the C library need an optimised build. The compiler may already define another level
# of checks.
target_compile_options(
  filter_common_shipped
  INTERFACE -fstack-protector-strong
            $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>)
target_link_options(filter_common_shipped INTERFACE LINKER:-z,relro,-z,now,-z,noexecstack)

# Lets indirect jumps go only to marked places. Not every target has this option.
check_cxx_compiler_flag(-fcf-protection FILTER_COMMON_HAS_CF_PROTECTION)
if(FILTER_COMMON_HAS_CF_PROTECTION)
  target_compile_options(filter_common_shipped INTERFACE -fcf-protection)
endif()

# The library must not have undefined symbols. The symbols of a sanitizer's runtime are an
# exception, because only programs link it.
if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
  target_link_options(filter_common_shipped INTERFACE LINKER:-z,defs)
endif()

# --- Programs in C -------------------------------------------------------------------------------

# Links a program in C to the library and turns its warnings into errors, which shows that the
# headers are valid C.
function(filter_common_hold_c_program name)
  target_link_libraries(${name} PRIVATE filter_common::filter_common filter_common_warnings)
  set_target_properties(${name} PROPERTIES COMPILE_WARNING_AS_ERROR ON)
  # The sanitizers need the C++ runtime, which only the C++ compiler links.
  if(CMAKE_CXX_FLAGS MATCHES "-fsanitize=")
    set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
  endif()
endfunction()
