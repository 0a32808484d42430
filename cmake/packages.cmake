# Debian packages, which `cpack` makes in the build folder. libfilter-common1 (named after the
# soname) has the files to run programs, and libfilter-common-dev those to build them. If
# libfilter_inspect is built, there are also libfilter-inspect1, libfilter-inspect-dev, and
# filter-inspect with the program. The package for Python, if it is built, is in
# python3-filter-inspect. With FILTER_COMMON_BUILD_DOCS there is libfilter-common-doc with the book.
#
# A build with the stand-ins puts them into the first two packages. Such packages are for
# development machines. They hold three libraries, whose sonames change together. Separate packages
# would need the names of the device's libraries. With FILTER_COMMON_PLATFORM=device there are no
# stand-ins, and libfilter-common1 depends on the packages of the device's libraries.

# Packages use Debian's folder for libraries, even if `cmake --install` uses another one.
if(NOT CMAKE_LIBRARY_ARCHITECTURE)
  return()
endif()

# The components that are packed, and the package of each.
set(kinds runtime development)
set(runtime_package libfilter-common${PROJECT_VERSION_MAJOR})
set(development_package libfilter-common-dev)
if(TARGET filter_inspect)
  list(APPEND kinds inspect_runtime inspect_development)
  set(inspect_runtime_package libfilter-inspect${PROJECT_VERSION_MAJOR})
  set(inspect_development_package libfilter-inspect-dev)
endif()
if(TARGET filter-inspect)
  list(APPEND kinds tool)
  set(tool_package filter-inspect)
endif()
if(TARGET filter_inspect_python)
  list(APPEND kinds python)
  set(python_package python3-filter-inspect)
endif()
if(FILTER_COMMON_BUILD_DOCS)
  find_program(FILTER_COMMON_DOXYGEN doxygen REQUIRED)
  list(APPEND kinds documentation)
  set(documentation_package libfilter-common-doc)
  set(book ${PROJECT_BINARY_DIR}/docs/html)
  file(GLOB pages CONFIGURE_DEPENDS *.md docs/* include/filter_*/*.h)
  add_custom_command(
    OUTPUT ${book}/index.html
    COMMAND ${PROJECT_SOURCE_DIR}/scripts/docs ${PROJECT_BINARY_DIR}/docs
    DEPENDS ${pages}
    VERBATIM)
  add_custom_target(book ALL DEPENDS ${book}/index.html)
  install(DIRECTORY ${book} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${documentation_package}
          COMPONENT filter_common_package_documentation EXCLUDE_FROM_ALL)
endif()
set(command_manual ${PROJECT_BINARY_DIR}/filter-inspect.1.gz)
set(form_manual ${PROJECT_BINARY_DIR}/filter-groups.5.gz)
filter_common_install(
  lib/${CMAKE_LIBRARY_ARCHITECTURE} ${CMAKE_INSTALL_DATADIR}/doc/${development_package} package_
  EXCLUDE_FROM_ALL)

# A package must name a maintainer, but only the packager knows one. The default is the address of
# the administrator, which every machine has.
set(FILTER_COMMON_CONTACT "nobody named by the packager <root@localhost>" CACHE STRING
    "Who answers for the packages, and takes reports of faults: Name <address>")

# Debian's changelog counts the packagings of a version; the project's changelog lists the changes.
configure_file(packaging/debian/changelog.in packaging/changelog @ONLY)
set(changelog_sources ${PROJECT_SOURCE_DIR}/CHANGELOG.md ${PROJECT_BINARY_DIR}/packaging/changelog)
set(changelogs changelog.gz changelog.Debian.gz)
set(manuals ${PROJECT_SOURCE_DIR}/tools/filter_inspect)
set(packed_sources ${changelog_sources} ${manuals}/filter-inspect.1 ${manuals}/filter-groups.5)
set(packed_files ${changelogs} filter-inspect.1.gz filter-groups.5.gz)
foreach(source packed IN ZIP_LISTS packed_sources packed_files)
  add_custom_command(
    OUTPUT ${packed}
    COMMAND gzip -9nc ${source} > ${packed}
    DEPENDS ${source}
    VERBATIM)
endforeach()
add_custom_target(packed_documents ALL DEPENDS ${packed_files})
list(TRANSFORM changelogs PREPEND ${PROJECT_BINARY_DIR}/)

foreach(kind IN LISTS kinds)
  install(FILES packaging/debian/copyright ${changelogs}
          DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${${kind}_package}
          COMPONENT filter_common_package_${kind} EXCLUDE_FROM_ALL)
endforeach()

set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/packing_tools.cmake)
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT ${FILTER_COMMON_CONTACT})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
list(TRANSFORM kinds PREPEND filter_common_package_ OUTPUT_VARIABLE CPACK_COMPONENTS_ALL)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SOURCE filter-common)
# CPack has no variable for Multi-Arch, but it writes the text of other fields unchanged.
set(CPACK_DEBIAN_PACKAGE_PRIORITY "optional\nMulti-Arch: same")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# The folders in which dpkg-shlibdeps finds the libraries that other libraries of this build need.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    ${PROJECT_BINARY_DIR} ${PROJECT_BINARY_DIR}/src/inspect ${PROJECT_BINARY_DIR}/platform/limid
    ${PROJECT_BINARY_DIR}/platform/policer)

# describe_package(<kind> <section> <summary> <about>) and further fields: <field> <value>...
function(describe_package kind section summary about)
  string(TOUPPER CPACK_DEBIAN_FILTER_COMMON_PACKAGE_${kind} fields)
  set(${fields}_PACKAGE_NAME ${${kind}_package} PARENT_SCOPE)
  set(${fields}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(${fields}_DESCRIPTION "${summary}\n${about}" PARENT_SCOPE)
  if(NOT section MATCHES "^(libdevel|doc)$")
    set(${fields}_PACKAGE_SHLIBDEPS ON PARENT_SCOPE)
  endif()
  if(section STREQUAL "libs")
    # The trigger runs ldconfig. CPack would add the scripts postinst and postrm, which also run
    # ldconfig. It adds neither if scripts with these names are given. The files given here do not
    # exist, so CPack warns of them and packs no script.
    set(${fields}_PACKAGE_CONTROL_EXTRA
        "${PROJECT_SOURCE_DIR}/packaging/debian/triggers;none/postinst;none/postrm" PARENT_SCOPE)
  endif()
  cmake_parse_arguments(PARSE_ARGV 4 extra "" "RECOMMENDS" "DEPENDS")
  # All packages of a build depend on the same version.
  list(TRANSFORM extra_DEPENDS APPEND " (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
  list(JOIN extra_DEPENDS ", " depends)
  set(${fields}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
  set(${fields}_PACKAGE_RECOMMENDS "${extra_RECOMMENDS}" PARENT_SCOPE)
endfunction()

set(about "Rules of packet filters (matches, actions, policers, counters) for the control\n\
plane of switches and routers, and their way between processes as bytes.")
describe_package(
  runtime libs "data model of packet-filter rules, shared library" "${about}")
# Most programs include no message header, so the package that these headers need is only
# recommended. apt installs recommended packages by default.
describe_package(
  development libdevel "data model of packet-filter rules, development files" "${about}"
  DEPENDS ${runtime_package}
  RECOMMENDS
    "libprotobuf-dev (>= ${Protobuf_VERSION}), libprotobuf-dev (<< ${Protobuf_VERSION}.1~)")
if(TARGET filter_inspect)
  set(about "Says why rules of packet filters are refused, and what their bytes lose\n\
when they are read. libfilter-common itself answers with a bare code or with\n\
nothing.")
  describe_package(
    inspect_runtime libs "reports on packet-filter rules, shared library" "${about}"
    DEPENDS ${runtime_package})
  describe_package(
    inspect_development libdevel "reports on packet-filter rules, development files" "${about}"
    DEPENDS ${inspect_runtime_package} ${development_package})
endif()
if(TARGET filter-inspect)
  set(about "Shows, checks, compares and converts what the processes of a device hand\n\
to each other, and says what stages and types of groups admit.")
  describe_package(
    tool utils "look into groups of packet-filter rules" "${about}"
    DEPENDS ${inspect_runtime_package} ${runtime_package})
  # Packages of every architecture can depend on this one.
  set(CPACK_DEBIAN_FILTER_COMMON_PACKAGE_TOOL_PACKAGE_PRIORITY "optional\nMulti-Arch: foreign")
endif()

if(TARGET filter_inspect_python)
  set(about "Makes, checks and compares groups of packet-filter rules in Python programs,\n\
and has assertions for test suites of rules.")
  describe_package(
    python python "reports on packet-filter rules, package for Python" "${about}"
    DEPENDS ${inspect_runtime_package} ${runtime_package})
  # The compiled module works only with the Python release with which it was built.
  math(EXPR next "${Python_VERSION_MINOR} + 1")
  string(APPEND CPACK_DEBIAN_FILTER_COMMON_PACKAGE_PYTHON_PACKAGE_DEPENDS
         ", python3 (>= 3.${Python_VERSION_MINOR}~), python3 (<< 3.${next}~)")
endif()

if(FILTER_COMMON_BUILD_DOCS)
  set(about "Describes how to write rules of packet filters, what each part of a rule\n\
means, what filter-inspect says about them, and every class and function.")
  describe_package(documentation doc "data model of packet-filter rules, book" "${about}")
  set(CPACK_DEBIAN_FILTER_COMMON_PACKAGE_DOCUMENTATION_PACKAGE_PRIORITY
      "optional\nMulti-Arch: foreign")
  set(CPACK_DEBIAN_FILTER_COMMON_PACKAGE_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
  set(CPACK_DEBIAN_FILTER_COMMON_PACKAGE_DOCUMENTATION_PACKAGE_SHLIBDEPS OFF)
endif()

include(CPack)
