cmake_minimum_required(VERSION 3.25)
# What a Windows program relies on in the DLL as a file: the names that it exports
# (those of the list NAMES at least), no run-time DLLs of the compiler's, relocation
# and no-execute flags.
execute_process(COMMAND ${OBJDUMP} -p ${DLL} OUTPUT_VARIABLE dump COMMAND_ERROR_IS_FATAL ANY)
set(faults "")

string(REGEX REPLACE ".*\n\\[Ordinal/Name Pointer\\] Table" "" table "${dump}")
string(REGEX MATCHALL "\n\t\\[[^\n]+" table "${table}")
list(TRANSFORM table REPLACE ".* " "")
set(names "")
if(EXISTS ${NAMES})
  file(STRINGS ${NAMES} names)
endif()
list(TRANSFORM names STRIP)
list(REMOVE_ITEM names EXPORTS)
foreach(name IN LISTS names)
  if(NOT name IN_LIST table)
    list(APPEND faults "${name} is not exported")
  endif()
endforeach()

string(REGEX MATCHALL "DLL Name: [^\n]+" imports "${dump}")
foreach(import IN LISTS imports)
  if(NOT import MATCHES "DLL Name: (KERNEL32|msvcrt)\\.dll$")
    list(APPEND faults "imports: ${import}")
  endif()
endforeach()

foreach(flag "large address aware" "DYNAMIC_BASE" "NX_COMPAT")
  if(NOT dump MATCHES "${flag}")
    list(APPEND faults "lacks ${flag}")
  endif()
endforeach()

if(faults)
  list(JOIN faults "\n  " faults)
  message(FATAL_ERROR "${DLL}:\n  ${faults}")
endif()
