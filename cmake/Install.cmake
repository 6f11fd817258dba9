# Headers, library and a package description for find_package(Tilepress).

include(CMakePackageConfigHelpers)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/Tilepress)

install(TARGETS tilepress EXPORT TilepressTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/tilepress DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT TilepressTargets NAMESPACE Tilepress:: DESTINATION ${package})

configure_package_config_file(cmake/TilepressConfig.cmake.in TilepressConfig.cmake INSTALL_DESTINATION ${package})
write_basic_package_version_file(TilepressConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TilepressConfig.cmake ${PROJECT_BINARY_DIR}/TilepressConfigVersion.cmake
  DESTINATION ${package})
