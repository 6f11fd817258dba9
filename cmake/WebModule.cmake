# The library as a WebAssembly module: the plain C page interface and nothing else, since what the old interfaces offer is
# left out with the code that only they need.

tilepress_plain_names(names)
list(FILTER names INCLUDE REGEX "^tp_")
list(TRANSFORM names PREPEND LINKER:--export=)
file(WRITE ${PROJECT_BINARY_DIR}/empty.cpp "")
set_target_properties(tilepress_objects PROPERTIES POSITION_INDEPENDENT_CODE OFF)
add_executable(tilepress_module ${PROJECT_BINARY_DIR}/empty.cpp $<TARGET_OBJECTS:tilepress_objects>)
set_target_properties(tilepress_module PROPERTIES OUTPUT_NAME tilepress SUFFIX .wasm)
# A page may fill the memory that it gets, and no more of the browser's.
target_link_options(tilepress_module PRIVATE -mexec-model=reactor ${names}
  LINKER:--strip-all LINKER:--max-memory=536870912)
