# GCC for Windows as Debian has it; ${machine} is the processor. Its posix variant has std::thread, for tests; nothing
# of its threads gets into the DLL. Included by the toolchain files of both widths.
set(triple ${machine}-w64-mingw32)
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${machine})
set(CMAKE_C_COMPILER ${triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triple}-g++-posix)
set(CMAKE_CXX_FLAGS_INIT -gdwarf-4)   # the newest that Wine reads: a crash prints functions and lines
set(CMAKE_AR ${triple}-ar)
set(CMAKE_RANLIB ${triple}-ranlib)
set(CMAKE_STRIP ${triple}-strip)
set(CMAKE_OBJDUMP ${triple}-objdump)
set(TILEPRESS_WINDRES ${triple}-windres)

# -static: no libgcc or libstdc++ DLL beside the program.
set(link "-static -Wl,--dynamicbase,--nxcompat,--no-insert-timestamp")
if(machine STREQUAL i686)
  string(APPEND link ",--large-address-aware")
endif()
set(CMAKE_EXE_LINKER_FLAGS_INIT "${link}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${link}")
unset(link)

set(CMAKE_FIND_ROOT_PATH /usr/${triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)   # an install tree elsewhere counts
