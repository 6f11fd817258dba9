cmake_minimum_required(VERSION 3.25)
# The names that LIBRARY exports are the public ones: all of them and nothing else.
#
#   KIND elf     read with NM
#   KIND gnu     DLL with GNU names, read with OBJDUMP
#   KIND msvc    DLL with Microsoft's names; those of MEMBERS that are not private
include(${CMAKE_CURRENT_LIST_DIR}/../cmake/ExportedNames.cmake)
set(faults "")

function(compare what found expected)
  list(SORT found)
  list(SORT expected)
  set(extra ${found})
  list(REMOVE_ITEM extra ${expected})
  list(REMOVE_ITEM expected ${found})
  foreach(name IN LISTS expected)
    list(APPEND faults "${what} lacks ${name}")
  endforeach()
  foreach(name IN LISTS extra)
    list(APPEND faults "${what} should not have ${name}")
  endforeach()
  set(faults ${faults} PARENT_SCOPE)
endfunction()

tilepress_plain_names(plain)

if(KIND STREQUAL elf)
  execute_process(COMMAND ${NM} -DC --defined-only --without-symbol-versions ${LIBRARY}
    OUTPUT_VARIABLE exported COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX REPLACE "\n[0-9a-f]* A [^\n]*" "" exported "\n${exported}")  # the version's own entry
  string(REGEX REPLACE "\n[0-9a-f]* [A-Za-z] " "\n" exported "${exported}")
else()
  execute_process(COMMAND ${OBJDUMP} -p ${LIBRARY} OUTPUT_VARIABLE exported COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX REPLACE ".*\n\\[Ordinal/Name Pointer\\] Table" "" exported "${exported}")
  string(REGEX REPLACE "\n\n.*" "" exported "${exported}")
  string(REGEX REPLACE "\n\t\\[ *[0-9]+\\] " "\n" exported "${exported}")
  if(KIND STREQUAL gnu)
    file(WRITE ${SCRATCH} "${exported}\n")
    execute_process(COMMAND c++filt INPUT_FILE ${SCRATCH} OUTPUT_VARIABLE exported COMMAND_ERROR_IS_FATAL ANY)
  endif()
endif()
string(STRIP "${exported}" exported)
string(REPLACE "\n" ";" exported "${exported}")

set(found ${exported})
list(FILTER found INCLUDE REGEX "^[A-Za-z0-9_]+$")
compare(${LIBRARY} "${found}" "${plain}")
list(FILTER exported EXCLUDE REGEX "^[A-Za-z0-9_]+$")

if(KIND STREQUAL msvc)
  file(STRINGS ${MEMBERS} members)
  list(FILTER exported EXCLUDE REGEX "^\\?[^@]*(@[A-Za-z0-9_]+)*@@[A-F]")
  compare(${LIBRARY} "${exported}" "${members}")
else()
  tilepress_public_names(classes functions)
  set(owners "")
  foreach(name IN LISTS exported)
    string(REGEX REPLACE "^(vtable|typeinfo|typeinfo name) for |^guard variable for " "" owner "${name}")
    string(REGEX REPLACE "(::|\\().*" "" owner "${owner}")
    list(APPEND owners ${owner})
  endforeach()
  list(REMOVE_DUPLICATES owners)
  compare(${LIBRARY} "${owners}" "${classes};${functions}")
endif()

if(faults)
  list(JOIN faults "\n  " faults)
  message(FATAL_ERROR "exports:\n  ${faults}")
endif()
