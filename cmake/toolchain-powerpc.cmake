# Builds for 32-bit big-endian PowerPC Linux with Debian's cross compiler. Programs of the build run
# under the user-mode emulator. docs/porting.md says how to use this file with the sysroot of a
# device.
#
#   CMAKE_SYSROOT         the root folder of the device; the default is the cross compiler's own
#   CMAKE_FIND_ROOT_PATH  further folders with libraries of the target

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ppc)

# The user may choose another compiler on the command line.
if(NOT DEFINED CMAKE_C_COMPILER)
  set(CMAKE_C_COMPILER powerpc-linux-gnu-gcc)
endif()
if(NOT DEFINED CMAKE_CXX_COMPILER)
  set(CMAKE_CXX_COMPILER powerpc-linux-gnu-g++)
endif()

set(powerpc_root /usr/powerpc-linux-gnu)
if(CMAKE_SYSROOT)
  set(powerpc_root ${CMAKE_SYSROOT})
endif()
set(CMAKE_CROSSCOMPILING_EMULATOR "qemu-ppc;-L;${powerpc_root}"
    CACHE STRING "What runs programs of the target on the build machine")

# CMake searches for programs such as protoc on the build machine, and for everything else on the
# target.
list(APPEND CMAKE_FIND_ROOT_PATH ${powerpc_root})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
