# 64-bit Windows, GNU class layout.
set(machine x86_64)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
