# The shared library.

add_library(tilepress SHARED $<TARGET_OBJECTS:tilepress_objects>)
add_library(Tilepress::tilepress ALIAS tilepress)
target_include_directories(tilepress PUBLIC
  $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
set_target_properties(tilepress PROPERTIES
  LINKER_LANGUAGE CXX
  VERSION ${PROJECT_VERSION}
  SOVERSION ${PROJECT_VERSION_MAJOR})
if(WIN32)
  include(cmake/WindowsLibrary.cmake)
else()
  set(version_script ${PROJECT_BINARY_DIR}/tilepress.map)
  tilepress_write_version_script(${version_script} TILEPRESS_${PROJECT_VERSION_MAJOR})
  target_link_options(tilepress PRIVATE LINKER:--version-script=${version_script})
  set_target_properties(tilepress PROPERTIES LINK_DEPENDS ${version_script})
endif()
