# Debian packages, made by `cpack` in the build folder: libfilter-common1 with what programs need to
# run, named after the soname, and libfilter-common-dev with what is needed to build them.
#
# The stand-ins, where they are used, go into the same two packages: such packages are for
# development machines, all three sonames change together, and packages of their own would carry
# the names that belong to the device's libraries. With FILTER_COMMON_PLATFORM=device there are no
# stand-ins, and libfilter-common1 depends on the packages that the device's libraries come from.

# Debian's folder for libraries, whatever `cmake --install` uses.
if(NOT CMAKE_LIBRARY_ARCHITECTURE)
  return()
endif()

set(runtime_package libfilter-common${PROJECT_VERSION_MAJOR})
set(development_package libfilter-common-dev)
filter_common_install(
  lib/${CMAKE_LIBRARY_ARCHITECTURE} ${CMAKE_INSTALL_DATADIR}/doc/${development_package} package_
  EXCLUDE_FROM_ALL)

# The packages must name somebody, and only who makes them knows whom. Until then it is the
# administrator of the machine that they are installed on, by the address that every machine has.
set(FILTER_COMMON_CONTACT "nobody named by the packager <root@localhost>" CACHE STRING
    "Who answers for the packages, and takes reports of faults: Name <address>")

# Debian's own changelog counts the packagings of a version, the project's says what changed.
configure_file(packaging/debian/changelog.in packaging/changelog @ONLY)
set(changelog_sources ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${PROJECT_BINARY_DIR}/packaging/changelog)
set(changelogs changelog.gz changelog.Debian.gz)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${changelog_sources})
foreach(source packed IN ZIP_LISTS changelog_sources changelogs)
  execute_process(
    COMMAND gzip -9nc ${source}
    OUTPUT_FILE ${PROJECT_BINARY_DIR}/${packed}
    COMMAND_ERROR_IS_FATAL ANY)
endforeach()
list(TRANSFORM changelogs PREPEND ${PROJECT_BINARY_DIR}/)

foreach(kind runtime development)
  install(FILES packaging/debian/copyright ${changelogs}
          DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${${kind}_package}
          COMPONENT filter_common_package_${kind} EXCLUDE_FROM_ALL)
endforeach()

set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/packing_tools.cmake)
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT ${FILTER_COMMON_CONTACT})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_COMPONENTS_ALL filter_common_package_runtime filter_common_package_development)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SOURCE filter-common)
# CPack knows no Multi-Arch, but writes what it is given.
set(CPACK_DEBIAN_PACKAGE_PRIORITY "optional\nMulti-Arch: same")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

set(about "Rules of packet filters (matches, actions, policers, counters) for the control\n\
plane of switches and routers, and their way between processes as bytes.")
set(CPACK_DEBIAN_FILTER_COMMON_PACKAGE_RUNTIME_PACKAGE_NAME ${runtime_package})
set(CPACK_DEBIAN_FILTER_COMMON_PACKAGE_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_FILTER_COMMON_PACKAGE_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_FILTER_COMMON_PACKAGE_RUNTIME_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/packaging/debian/triggers)  # CPack adds scripts that say the same
set(CPACK_DEBIAN_FILTER_COMMON_PACKAGE_RUNTIME_DESCRIPTION
    "data model of packet-filter rules, shared library\n${about}")

set(CPACK_DEBIAN_FILTER_COMMON_PACKAGE_DEVELOPMENT_PACKAGE_NAME ${development_package})
set(CPACK_DEBIAN_FILTER_COMMON_PACKAGE_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_FILTER_COMMON_PACKAGE_DEVELOPMENT_PACKAGE_DEPENDS
    "${runtime_package} (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
# Most programs include no message header; apt brings what those that do need, unless told not to.
set(CPACK_DEBIAN_FILTER_COMMON_PACKAGE_DEVELOPMENT_PACKAGE_RECOMMENDS
    "libprotobuf-dev (>= ${Protobuf_VERSION}), libprotobuf-dev (<< ${Protobuf_VERSION}.1~)")
set(CPACK_DEBIAN_FILTER_COMMON_PACKAGE_DEVELOPMENT_DESCRIPTION
    "data model of packet-filter rules, development files\n${about}")

include(CPack)
