# Installs the library, so that others find it by find_package(filter_common 1) or by `pkg-config
# filter_common`. Programs that use messages ask for the package's component `messages`, or for
# `pkg-config filter_common_messages`. All paths are relative to the installed files, so the
# installed tree may be moved.
include(CMakePackageConfigHelpers)

set(shipped_libraries filter_common)
if(FILTER_COMMON_PLATFORM STREQUAL "standin")
  # The stand-ins are installed with the library. Their targets have the names that the device's
  # packages use.
  list(APPEND shipped_libraries limid policer)
  set_target_properties(limid PROPERTIES EXPORT_NAME limid::limid)
  set_target_properties(policer PROPERTIES EXPORT_NAME policer::policer)
  set(platform_packages)
  set_target_properties(filter_common PROPERTIES INSTALL_RPATH \$ORIGIN)
else()
  set(platform_packages limid policer)
endif()
set_target_properties(filter_common PROPERTIES EXPORT_NAME filter_common::filter_common)
if(TARGET filter_inspect)
  set_target_properties(filter_inspect PROPERTIES EXPORT_NAME filter_common::inspect)
  if(FILTER_COMMON_PLATFORM STREQUAL "standin")
    set_target_properties(filter_inspect PROPERTIES INSTALL_RPATH \$ORIGIN)
  endif()
endif()
if(TARGET filter-inspect)
  string(REGEX REPLACE "[^/]+" ".." bindir_to_prefix ${CMAKE_INSTALL_BINDIR})
  if(FILTER_COMMON_PLATFORM STREQUAL "standin")
    set_target_properties(
      filter-inspect PROPERTIES INSTALL_RPATH \$ORIGIN/${bindir_to_prefix}/${CMAKE_INSTALL_LIBDIR})
  endif()
endif()

if(TARGET filter_inspect_python)
  # Debian's Python searches this folder if the prefix is /usr. With another prefix, users set
  # PYTHONPATH to the folder.
  set(FILTER_COMMON_PYTHON_DIR lib/python3/dist-packages
      CACHE STRING "Where the package for Python is installed, below the prefix")
  string(REGEX REPLACE "[^/]+" ".." package_to_prefix ${FILTER_COMMON_PYTHON_DIR}/filter_inspect)
  if(FILTER_COMMON_PLATFORM STREQUAL "standin")
    set_target_properties(
      filter_inspect_python
      PROPERTIES INSTALL_RPATH \$ORIGIN/${package_to_prefix}/${CMAKE_INSTALL_LIBDIR})
  endif()
endif()

# The installed tree can be moved, so the files below use paths relative to its root.
foreach(folder BINDIR LIBDIR INCLUDEDIR DATADIR)
  if(IS_ABSOLUTE ${CMAKE_INSTALL_${folder}})
    message(FATAL_ERROR "CMAKE_INSTALL_${folder} is '${CMAKE_INSTALL_${folder}}'; it must be relative")
  endif()
endforeach()

# Installs everything as components: filter_common_<prefix>runtime has the files to run programs,
# and filter_common_<prefix>development those to build them. The components of libfilter_inspect are
# filter_common_<prefix>inspect_runtime and filter_common_<prefix>inspect_development. Libraries go
# to libdir and documents to docdir. Further arguments are passed to every install().
function(filter_common_install libdir docdir prefix)
  set(runtime COMPONENT filter_common_${prefix}runtime ${ARGN})
  set(development COMPONENT filter_common_${prefix}development ${ARGN})
  set(generated ${PROJECT_BINARY_DIR}/${prefix}install)
  set(package_dir ${libdir}/cmake/filter_common)
  string(REGEX REPLACE "[^/]+" ".." libdir_to_prefix ${libdir})

  install(
    TARGETS ${shipped_libraries}
    EXPORT filter_common_${prefix}targets
    LIBRARY DESTINATION ${libdir} ${runtime} NAMELINK_COMPONENT filter_common_${prefix}development)
  install(DIRECTORY include/filter_common DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} ${development}
          FILES_MATCHING PATTERN "*.h" PATTERN "*.def")
  install(FILES ${message_headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/filter_common
          ${development})
  if(FILTER_COMMON_PLATFORM STREQUAL "standin")
    install(DIRECTORY platform/limid/include/ platform/policer/include/
            DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} ${development})
    install(DIRECTORY examples DESTINATION ${docdir} ${development})
  endif()
  install(FILES ${schema_files} DESTINATION ${CMAKE_INSTALL_DATADIR}/filter_common/proto
          ${development})
  install(FILES README.md SECURITY.md CHANGELOG.md CONTRIBUTING.md DESTINATION ${docdir} ${development})
  install(DIRECTORY docs DESTINATION ${docdir} ${development})

  configure_package_config_file(
    cmake/filter_commonConfig.cmake.in ${generated}/filter_commonConfig.cmake
    INSTALL_DESTINATION ${package_dir}
    NO_SET_AND_CHECK_MACRO)
  write_basic_package_version_file(
    ${generated}/filter_commonConfigVersion.cmake COMPATIBILITY SameMajorVersion)
  install(FILES ${generated}/filter_commonConfig.cmake
                ${generated}/filter_commonConfigVersion.cmake cmake/find_protobuf.cmake
          DESTINATION ${package_dir} ${development})
  install(EXPORT filter_common_${prefix}targets FILE filter_commonTargets.cmake
          DESTINATION ${package_dir} ${development})
  foreach(name filter_common filter_common_messages)
    configure_file(cmake/${name}.pc.in ${generated}/${name}.pc @ONLY)
    install(FILES ${generated}/${name}.pc DESTINATION ${libdir}/pkgconfig ${development})
  endforeach()

  if(TARGET filter_inspect)
    set(runtime COMPONENT filter_common_${prefix}inspect_runtime ${ARGN})
    set(development COMPONENT filter_common_${prefix}inspect_development ${ARGN})
    install(
      TARGETS filter_inspect
      EXPORT filter_common_${prefix}inspect_targets
      LIBRARY DESTINATION ${libdir} ${runtime}
              NAMELINK_COMPONENT filter_common_${prefix}inspect_development)
    install(DIRECTORY include/filter_inspect DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} ${development}
            FILES_MATCHING PATTERN "*.h" PATTERN "*.def")
    install(EXPORT filter_common_${prefix}inspect_targets FILE filter_commonInspectTargets.cmake
            DESTINATION ${package_dir} ${development})
    configure_file(cmake/filter_inspect.pc.in ${generated}/filter_inspect.pc @ONLY)
    install(FILES ${generated}/filter_inspect.pc DESTINATION ${libdir}/pkgconfig ${development})
  endif()

  if(TARGET filter_inspect_python)
    set(python DESTINATION ${FILTER_COMMON_PYTHON_DIR}/filter_inspect
               COMPONENT filter_common_${prefix}python ${ARGN})
    install(TARGETS filter_inspect_python LIBRARY ${python})
    install(DIRECTORY python/filter_inspect/ ${python} FILES_MATCHING PATTERN "*.py*" PATTERN py.typed
            PATTERN __pycache__ EXCLUDE)
  endif()

  if(TARGET filter-inspect)
    set(tool COMPONENT filter_common_${prefix}tool ${ARGN})
    install(TARGETS filter-inspect RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} ${tool})
    install(FILES ${command_manual} DESTINATION ${CMAKE_INSTALL_DATADIR}/man/man1 ${tool})
    install(FILES ${form_manual} DESTINATION ${CMAKE_INSTALL_DATADIR}/man/man5 ${tool})
    install(FILES docs/first-rules.md docs/vocabulary.md docs/policies.md docs/findings.md
                  docs/troubleshooting.md
            DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/filter-inspect ${tool})
    install(DIRECTORY examples/rules/
            DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/filter-inspect/examples ${tool})
    install(FILES tools/filter_inspect/filter-inspect.bash RENAME filter-inspect
            DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions ${tool})
    install(FILES tools/filter_inspect/filter-inspect.zsh RENAME _filter-inspect
            DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions ${tool})
    install(FILES tools/filter_inspect/filter-inspect.fish
            DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d ${tool})
  endif()
endfunction()

set(command_manual tools/filter_inspect/filter-inspect.1)
set(form_manual tools/filter_inspect/filter-groups.5)

filter_common_install(${CMAKE_INSTALL_LIBDIR} ${CMAKE_INSTALL_DATADIR}/doc/filter_common "")
