# The Windows side of the shared library: load entry, version resource, exported names.

tilepress_write_def(${PROJECT_BINARY_DIR}/tilepress.def)
target_sources(tilepress PRIVATE src/dll/entry.cpp ${PROJECT_BINARY_DIR}/tilepress.def)
set_target_properties(tilepress PROPERTIES
  PREFIX ""                       # tilepress.dll
  DLL_NAME_WITH_SOVERSION OFF)

# GNU windres serves both Windows toolchains; CMake's RC language would want
# another resource compiler for each.
configure_file(src/dll/version.rc.in version.rc @ONLY)
add_custom_command(OUTPUT version.o DEPENDS ${PROJECT_BINARY_DIR}/version.rc
  COMMAND i686-w64-mingw32-windres -O coff ${PROJECT_BINARY_DIR}/version.rc version.o)
set_source_files_properties(${PROJECT_BINARY_DIR}/version.o PROPERTIES EXTERNAL_OBJECT ON)
target_sources(tilepress PRIVATE ${PROJECT_BINARY_DIR}/version.o)

if(TILEPRESS_MSVC_ABI)
  target_sources(tilepress PRIVATE src/dll/msvc_runtime.cpp)
  target_link_options(tilepress PRIVATE LINKER:/entry:DllMain)
endif()
