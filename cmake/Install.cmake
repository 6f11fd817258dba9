# What an installed Tilepress consists of. Nothing in it holds the prefix, so the
# folder may be moved.

include(CMakePackageConfigHelpers)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/Tilepress)

set(libraries tilepress)
if(TARGET tilepress_static)
  list(APPEND libraries tilepress_static)
endif()
install(TARGETS ${libraries} EXPORT TilepressTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/tilepress DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES LICENSE README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs examples bindings DESTINATION ${CMAKE_INSTALL_DOCDIR}
  PATTERN CMakeLists.txt EXCLUDE PATTERN __pycache__ EXCLUDE PATTERN Doxyfile EXCLUDE PATTERN *.in EXCLUDE)
if(WIN32)
  install(FILES ${PROJECT_BINARY_DIR}/tilepress.def DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()

# For find_package(Tilepress).
install(EXPORT TilepressTargets NAMESPACE Tilepress:: DESTINATION ${package})
configure_package_config_file(cmake/TilepressConfig.cmake.in TilepressConfig.cmake INSTALL_DESTINATION ${package})
write_basic_package_version_file(TilepressConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TilepressConfig.cmake ${PROJECT_BINARY_DIR}/TilepressConfigVersion.cmake
  DESTINATION ${package})

# For pkg-config, whose file finds the prefix from its own place.
set(pc_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pc_to_prefix ${CMAKE_CURRENT_BINARY_DIR}/${pc_folder} ${CMAKE_CURRENT_BINARY_DIR})
string(REGEX REPLACE "/$" "" pc_to_prefix "${pc_to_prefix}")
configure_file(cmake/tilepress.pc.in tilepress.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tilepress.pc DESTINATION ${pc_folder})
if(TARGET tilepress_static)
  configure_file(cmake/tilepress-static.pc.in tilepress-static.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/tilepress-static.pc DESTINATION ${pc_folder})
endif()

if(TARGET tilepress_tool)
  file(RELATIVE_PATH to_library /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
  # The second folder is that of other projects' libraries, in a package that brings them. As RPATH, not RUNPATH: it
  # holds for what those need, too.
  set_target_properties(tilepress_tool PROPERTIES INSTALL_RPATH "$ORIGIN/${to_library}:$ORIGIN/../lib/tilepress")
  target_link_options(tilepress_tool PRIVATE LINKER:--disable-new-dtags)
  add_custom_command(OUTPUT tilepress.1 DEPENDS tilepress_tool tools/make-man docs/tilepress.1.in
    COMMAND tools/make-man $<TARGET_FILE:tilepress_tool> docs/tilepress.1.in ${PROJECT_VERSION}
      >${PROJECT_BINARY_DIR}/tilepress.1
    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
  add_custom_target(manual ALL DEPENDS ${PROJECT_BINARY_DIR}/tilepress.1)
  install(FILES ${PROJECT_BINARY_DIR}/tilepress.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES tools/completion.bash RENAME tilepress
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
endif()
