# Run by cpack between installing a package's files and packing them.
set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY})
set(here ${CMAKE_CURRENT_LIST_DIR})
if(CPACK_GENERATOR STREQUAL DEB)
  set(root ${root}/usr)
endif()
file(GLOB_RECURSE tool ${root}/bin/tilepress)
set(documents ${root}/share/doc/tilepress)

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# As Debian's policy has it: copyright and changelog, manual pages compressed, and a tool that finds the library where
# the system has libraries.
function(finish_deb)
  file(STRINGS ${here}/../../LICENSE lines)
  list(FILTER lines INCLUDE REGEX "^Copyright ")
  string(REGEX REPLACE "^Copyright (\\(c\\) )?" "" copyright "${lines}")
  file(READ ${here}/../../LICENSE licence)
  string(REGEX REPLACE ".*\n\n(Permission)" "\\1" licence "${licence}")
  string(STRIP "${licence}" licence)
  string(REGEX REPLACE "\n\n" "\n.\n" licence "${licence}")
  string(REPLACE "\n" "\n " licence " ${licence}")
  configure_file(${here}/copyright ${documents}/copyright @ONLY)
  string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
  configure_file(${here}/changelog ${documents}/changelog @ONLY)
  file(REMOVE ${documents}/LICENSE)
  configure_file(${here}/lintian-overrides ${root}/share/lintian/overrides/tilepress COPYONLY)
  file(GLOB_RECURSE pages ${root}/share/man/*.1)
  run(gzip -9n ${documents}/changelog ${pages})
  file(RPATH_REMOVE FILE ${tool})
  execute_process(COMMAND chmod -R u=rwX,go=rX ${root})
endfunction()

# The libraries that a machine lacks on which nothing but Debian's base system is: those that the tool needs, beside our
# own, with their licences. The base system's own have other names there and here, or none that we could ship.
function(finish_tar)
  file(GET_RUNTIME_DEPENDENCIES EXECUTABLES ${tool} DIRECTORIES ${CPACK_LIBRARY_FOLDER}
    RESOLVED_DEPENDENCIES_VAR needed UNRESOLVED_DEPENDENCIES_VAR missing
    PRE_EXCLUDE_REGEXES "^libtilepress" "^ld-linux" "^lib(c|m|dl|rt|pthread|gcc_s|stdc\\+\\+)\\.so" "^lib(z|lzma|zstd)\\.so")
  if(missing)
    message(FATAL_ERROR "not to be found: ${missing}")
  endif()
  foreach(library IN LISTS needed)
    file(REAL_PATH ${library} real)
    get_filename_component(name ${library} NAME)
    configure_file(${real} ${root}/lib/tilepress/${name} COPYONLY)
    execute_process(COMMAND dpkg -S ${real} OUTPUT_VARIABLE package OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX REPLACE ":.*" "" package "${package}")
    configure_file(/usr/share/doc/${package}/copyright ${documents}/third-party/${package} COPYONLY)
  endforeach()
endfunction()

if(CPACK_GENERATOR STREQUAL DEB)
  finish_deb()
else()
  finish_tar()
endif()
