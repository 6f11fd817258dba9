cmake_minimum_required(VERSION 3.25)
# What a Windows program relies on in the DLL as a file: no run-time DLLs of the
# compiler's, relocation and no-execute flags, the version.
execute_process(COMMAND ${OBJDUMP} -p ${DLL} OUTPUT_VARIABLE dump COMMAND_ERROR_IS_FATAL ANY)
set(faults "")

string(REGEX MATCHALL "DLL Name: [^\n]+" imports "${dump}")
foreach(import IN LISTS imports)
  if(NOT import MATCHES "DLL Name: (KERNEL32|msvcrt)\\.dll$")
    list(APPEND faults "imports: ${import}")
  endif()
endforeach()

foreach(needed "file format pei-i386" "large address aware" "DYNAMIC_BASE" "NX_COMPAT" "Name [^\n]* tilepress.dll"
        "DLL Name: KERNEL32" "DLL Name: msvcrt" "DisableThreadLibraryCalls")
  if(NOT dump MATCHES "${needed}")
    list(APPEND faults "lacks ${needed}")
  endif()
endforeach()

# "FileVersion", padded to 32 bits, then the number, in 16-bit characters.
string(HEX "FileVersion" key)
string(HEX "${VERSION}" value)
string(REGEX REPLACE "(..)" "\\100" key "${key}")
string(REGEX REPLACE "(..)" "\\100" value "${value}")
file(READ ${DLL} bytes HEX)
if(NOT bytes MATCHES "${key}(0000)+${value}")
  list(APPEND faults "has no resource with version ${VERSION}")
endif()

if(faults)
  list(JOIN faults "\n  " faults)
  message(FATAL_ERROR "${DLL}:\n  ${faults}")
endif()
