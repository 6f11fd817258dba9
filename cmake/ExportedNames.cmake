# What the shared library exports. The plain names come from one list, the classes and
# C++ functions from the public headers; tests/exports.cmake reads the same two.

set(plain_names_file ${CMAKE_CURRENT_LIST_DIR}/../src/dll/plain_names.txt)
set(public_headers_folder ${CMAKE_CURRENT_LIST_DIR}/../include/tilepress)

# Undecorated names of C functions.
function(tilepress_plain_names names)
  file(STRINGS ${plain_names_file} list)
  set(${names} ${list} PARENT_SCOPE)
endfunction()

# Exported classes, and exported functions that are not C functions.
function(tilepress_public_names classes functions)
  file(GLOB headers ${public_headers_folder}/*.h)
  foreach(header IN LISTS headers)
    file(STRINGS ${header} lines REGEX "^(class )?TILEPRESS_API ")
    foreach(line IN LISTS lines)
      if(line MATCHES "^class TILEPRESS_API ([A-Za-z0-9_]+)")
        list(APPEND found_classes ${CMAKE_MATCH_1})
      elseif(NOT line MATCHES "TILEPRESS_CALL" AND line MATCHES "([A-Za-z0-9_]+)\\(")
        list(APPEND found_functions ${CMAKE_MATCH_1})
      endif()
    endforeach()
  endforeach()
  set(${classes} ${found_classes} PARENT_SCOPE)
  set(${functions} ${found_functions} PARENT_SCOPE)
endfunction()

# Module definition of the DLL. Names without ordinals: a name keeps its meaning when others join.
function(tilepress_write_def file)
  tilepress_plain_names(names)
  list(JOIN names "\n    " names)
  file(CONFIGURE OUTPUT ${file} CONTENT "LIBRARY tilepress.dll\nEXPORTS\n    ${names}\n" @ONLY)
endfunction()

# Version script of the ELF library: a helper that lost its hidden visibility, or a
# template of the standard library, stays inside all the same.
function(tilepress_write_version_script file node)
  tilepress_plain_names(names)
  tilepress_public_names(classes functions)
  list(JOIN names "\n    " names)
  set(patterns "")
  foreach(class IN LISTS classes)
    string(APPEND patterns "\n      ${class}::*;")
    foreach(record vtable typeinfo "typeinfo name")
      string(APPEND patterns "\n      \"${record} for ${class}\";")
    endforeach()
  endforeach()
  foreach(function IN LISTS functions)
    string(APPEND patterns "\n      ${function}*;")
  endforeach()
  string(REPLACE "\n" ";\n" names "${names}")
  file(CONFIGURE OUTPUT ${file} @ONLY CONTENT
"${node} {
  global:
    ${names};
    extern \"C++\" {${patterns}
    };
  local: *;
};
")
endfunction()

set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${plain_names_file})
