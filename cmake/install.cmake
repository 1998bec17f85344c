# What `cmake --install` installs: the libraries, the test kit, their headers, the tools if they
# are built, a CMake package and pkg-config files. The prefix may be moved afterwards.
include(CheckCXXSymbolExists)
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# The public headers include each other by relative paths, so a host needs only the folder above
# `sensorvela/` as include root.
set(include_dir ${CMAKE_INSTALL_INCLUDEDIR}/sensorvela)
set(device_include_dir ${include_dir}/simulated_platform)
set(roots include platform/simulated/include testkit/include)
foreach(root ${roots})
  file(GLOB_RECURSE headers CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}/${root}/sensorvela
    ${PROJECT_SOURCE_DIR}/${root}/sensorvela/*.h)
  list(APPEND public_headers ${headers})
endforeach()
foreach(header ${public_headers} platform/sync.h platform/thread_annotations.h
    platform/thread_annotations_end.h)
  cmake_path(GET header PARENT_PATH folder)
  install(FILES ${PROJECT_SOURCE_DIR}/${header} DESTINATION ${include_dir}/${folder})
endforeach()
install(DIRECTORY platform/simulated/include/ DESTINATION ${device_include_dir}
  PATTERN sensorvela EXCLUDE)
install(TARGETS sensorvela sensorvela_simulated_platform sensorvela_testkit EXPORT sensorvela
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} ${device_include_dir})
if(TARGET sensorvela_recorder)
  set_target_properties(sensorvela_recorder PROPERTIES INSTALL_RPATH $ORIGIN)
  install(TARGETS sensorvela_recorder)
endif()
install(FILES LICENSE README.md CHANGELOG.md CONTRIBUTING.md TYPE DOC)
install(DIRECTORY docs examples TYPE DOC)

if(TARGET sensorvela-replay)
  file(RELATIVE_PATH to_libraries ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(sensorvela-replay sensorvela-log PROPERTIES
    INSTALL_RPATH $ORIGIN/${to_libraries})
  install(TARGETS sensorvela-replay sensorvela-log)
  if(SENSORVELA_HAS_PICTURE)
    install(FILES ${PROJECT_BINARY_DIR}/tools/LICENSE.d3 TYPE DOC)
  endif()

  # Each tool writes its manual and its completions itself, from what its help says.
  if(NOT SENSORVELA_INSTRUMENTED)
    foreach(tool sensorvela-replay sensorvela-log)
      set(manual ${PROJECT_BINARY_DIR}/manual)
      file(MAKE_DIRECTORY ${manual})
      add_custom_command(
        OUTPUT ${manual}/${tool}.1 ${manual}/${tool} ${manual}/_${tool}
        COMMAND ${tool} --generate man > ${manual}/${tool}.1
        COMMAND ${tool} --generate bash > ${manual}/${tool}
        COMMAND ${tool} --generate zsh > ${manual}/_${tool}
        DEPENDS ${tool} VERBATIM)
      list(APPEND manuals ${manual}/${tool}.1)
      install(FILES ${manual}/${tool}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
      install(FILES ${manual}/${tool}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
      install(FILES ${manual}/_${tool} DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
    endforeach()
    add_custom_target(manuals ALL DEPENDS ${manuals})
  endif()
endif()

# The interface passes types of the standard library, so a host must use the same standard library
# as this build. The packages name it but do not set it, because the choice applies to a whole
# program.
check_cxx_symbol_exists(_LIBCPP_VERSION cstddef SENSORVELA_USES_LIBCXX)
set(standard_library libstdc++)
set(standard_library_flags "-DCMAKE_CXX_COMPILER=g++ -DCMAKE_CXX_FLAGS=")
if(SENSORVELA_USES_LIBCXX)
  set(standard_library libc++)
  set(standard_library_flags "-DCMAKE_CXX_COMPILER=clang++ -DCMAKE_CXX_FLAGS=-stdlib=libc++")
endif()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/sensorvela)
set(generated ${PROJECT_BINARY_DIR}/install)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/sensorvela-config.cmake.in
  ${generated}/sensorvela-config.cmake INSTALL_DESTINATION ${package_dir}
  NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(${generated}/sensorvela-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${generated}/sensorvela-config.cmake ${generated}/sensorvela-config-version.cmake
  DESTINATION ${package_dir})
install(EXPORT sensorvela NAMESPACE sensorvela:: FILE sensorvela-targets.cmake
  DESTINATION ${package_dir})

# Every path is relative to the pkg-config file's own folder.
set(pkgconfig_dir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH to_prefix ${pkgconfig_dir} ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH to_include_dir ${pkgconfig_dir} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
foreach(package sensorvela sensorvela-simulated-platform sensorvela-testkit)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${package}.pc.in ${generated}/${package}.pc @ONLY)
  install(FILES ${generated}/${package}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
