# How the libraries that are shipped are compiled and linked. Link filter_common_shipped PRIVATE.
include(CheckCXXCompilerFlag)
include(CheckLinkerFlag)

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
