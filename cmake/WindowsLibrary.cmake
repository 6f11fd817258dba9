# The Windows side of the shared library: load entry, version resource, exported names.

tilepress_write_def(${PROJECT_BINARY_DIR}/tilepress.def)
target_sources(tilepress PRIVATE src/dll/entry.cpp src/dll/runtime.cpp ${PROJECT_BINARY_DIR}/tilepress.def)
set_target_properties(tilepress PROPERTIES
  PREFIX ""                       # tilepress.dll
  DLL_NAME_WITH_SOVERSION OFF)

# GNU windres serves every Windows toolchain; CMake's RC language would want
# another resource compiler for each.
configure_file(src/dll/version.rc.in version.rc @ONLY)
add_custom_command(OUTPUT version.o DEPENDS ${PROJECT_BINARY_DIR}/version.rc
  COMMAND ${TILEPRESS_WINDRES} -O coff ${PROJECT_BINARY_DIR}/version.rc version.o)
set_source_files_properties(${PROJECT_BINARY_DIR}/version.o PROPERTIES EXTERNAL_OBJECT ON)
target_sources(tilepress PRIVATE ${PROJECT_BINARY_DIR}/version.o)

# The DLL's entry is its own: that of the compiler's start-up code would run constructors, of which there are none, and
# ask for a call back at each thread. The system's version numbers in the file are the oldest that have what is imported.
if(TILEPRESS_MSVC_ABI)
  target_sources(tilepress PRIVATE src/dll/msvc_runtime.cpp)
  target_link_options(tilepress PRIVATE LINKER:/entry:DllMain "SHELL:-Xlinker /subsystem:console,4.0")
elseif(CMAKE_SIZEOF_VOID_P EQUAL 8)
  target_link_options(tilepress PRIVATE -nostartfiles LINKER:-e,DllMain,--disable-auto-import)
else()
  target_link_options(tilepress PRIVATE -nostartfiles LINKER:-e,_DllMain@12,--disable-auto-import)
endif()
