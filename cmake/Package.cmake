# Packages for Linux, made by cpack in a build folder; tools/package makes that for Windows.

set(CPACK_GENERATOR TGZ DEB)
set(CPACK_PACKAGE_NAME tilepress)
set(CPACK_PACKAGE_VENDOR "The Tilepress authors")
set(CPACK_PACKAGE_CONTACT "${TILEPRESS_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "raster images compressed as CCITT Group 4 tiles")
set(CPACK_PACKAGE_DESCRIPTION "Tilepress holds bilevel, palette and RGB images, keeps large
bilevel pages compressed and scales them while they are decoded. This
package has the library, its headers and manual, packages for other
languages, examples, and the command-line tool tilepress.")
set(CPACK_PACKAGE_FILE_NAME tilepress-${PROJECT_VERSION}-linux-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
# What differs between the two: what Debian wants of a package, and what a machine without packages lacks.
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/package/finish.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/package/without_scripts.cmake)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})  # the tool needs our own library
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
configure_file(cmake/package/shlibs.in shlibs @ONLY)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/package/triggers ${PROJECT_BINARY_DIR}/shlibs)
include(CPack)
