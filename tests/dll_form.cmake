cmake_minimum_required(VERSION 3.25)
# What a Windows program relies on in the DLL as a file: no run-time DLLs of the
# compiler's, relocation and no-execute flags, the version.
execute_process(COMMAND ${OBJDUMP} -p ${DLL} OUTPUT_VARIABLE dump COMMAND_ERROR_IS_FATAL ANY)
set(faults "")

# What is imported: of the system one function that every Windows has, of the C library what its first version has.
# What comes with a compiler's threads, exceptions and thread-local storage is not there.
set(allowed KERNEL32:DisableThreadLibraryCalls
  msvcrt:_errno msvcrt:_iob msvcrt:__iob_func msvcrt:__setusermatherr msvcrt:abort msvcrt:fputs msvcrt:calloc msvcrt:free msvcrt:malloc
  msvcrt:realloc msvcrt:memcmp msvcrt:memcpy msvcrt:memmove msvcrt:memset msvcrt:strcmp msvcrt:strlen msvcrt:floor
  msvcrt:ceil msvcrt:cos msvcrt:sin msvcrt:tan msvcrt:cosh msvcrt:sinh msvcrt:tanh msvcrt:_hypot)
string(REGEX REPLACE ".*\nThe Import Tables" "" imports "${dump}")
string(REGEX REPLACE "\nThe Export Tables.*" "" imports "${imports}")
string(REGEX MATCHALL "DLL Name: [^\n]+|\n\t[0-9a-f]+\t +[0-9]+  [^\n]+" imports "${imports}")
foreach(import IN LISTS imports)
  if(import MATCHES "DLL Name: (.*)\\.dll")
    set(library ${CMAKE_MATCH_1})
  else()
    string(REGEX REPLACE ".*  " "" import "${import}")
    if(NOT "${library}:${import}" IN_LIST allowed)
      list(APPEND faults "imports ${import} of ${library}")
    endif()
  endif()
endforeach()
if(NOT imports)
  list(APPEND faults "has no imports that can be read")
endif()

# The oldest Windows that takes the file, which docs/windows-dll.md states.
set(format "file format pei-i386" "large address aware" "MajorOSystemVersion\t4\n" "MajorSubsystemVersion\t4\n")
if(dump MATCHES "pei-x86-64")
  set(format "HIGH_ENTROPY_VA" "MajorSubsystemVersion\t5\nMinorSubsystemVersion\t2\n")
endif()
foreach(needed ${format} "DYNAMIC_BASE" "NX_COMPAT" "Name [^\n]* tilepress.dll" "DisableThreadLibraryCalls"
        "\nEntry 9 0+ 0+ Thread Storage")
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
