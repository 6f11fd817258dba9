# Flags for every target, and functions that make targets strict.

if(TILEPRESS_SANITIZE)
  add_compile_options(-fsanitize=${TILEPRESS_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TILEPRESS_SANITIZE})
  # Instrumented code makes GCC see uninitialised values where there are none.
  add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()

# What kernels demand of their callers is checked wherever speed does not count.
add_compile_definitions($<$<NOT:$<CONFIG:Release>>:TILEPRESS_CHECKED>)

# On 32-bit x86 the compiler's default is the x87 unit, whose 80-bit
# intermediates round differently from every other target.
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND NOT TILEPRESS_WASM)
  add_compile_options(-msse2 -mfpmath=sse)
endif()

# For tests: every warning that does not forbid plain literals and mixed integers.
function(tilepress_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow)
endfunction()

# For the library and the tool. Clang counts -Wsign-conversion to -Wconversion, GCC does not.
function(tilepress_strict target)
  tilepress_warnings(${target})
  target_compile_options(${target} PRIVATE -Wconversion $<$<CXX_COMPILER_ID:Clang>:-Wno-sign-conversion>)
endfunction()

# What holds for the library alone: it throws nothing, and no code of it runs
# when it is loaded.
function(tilepress_library_code target)
  target_compile_options(${target} PRIVATE -fno-exceptions $<$<CXX_COMPILER_ID:Clang>:-Wglobal-constructors>)
endfunction()
