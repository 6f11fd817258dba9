# Packages for Linux, made by cpack in a build folder; tools/package makes that for Windows.

set(CPACK_GENERATOR TGZ DEB)
set(CPACK_PACKAGE_NAME tilepress)
set(CPACK_PACKAGE_VENDOR "The Tilepress authors")
set(CPACK_PACKAGE_CONTACT "The Tilepress authors")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Raster images compressed as CCITT Group 4 tiles")
set(CPACK_PACKAGE_DESCRIPTION "A library that holds bilevel, palette and RGB images, keeps large
bilevel pages compressed and scales them while they are decoded,
with its headers and the command-line tool tilepress.")
set(CPACK_PACKAGE_FILE_NAME tilepress-${PROJECT_VERSION}-linux-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})  # the tool needs our own library
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
