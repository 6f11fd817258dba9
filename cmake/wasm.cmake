# WebAssembly for browsers and Node: clang, lld and Debian's C and C++ libraries for WASI. 32 bits, one thread, no exceptions.
set(CMAKE_SYSTEM_NAME Generic)
set(CMAKE_SYSTEM_PROCESSOR wasm32)
set(CMAKE_C_COMPILER clang-14)
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_C_COMPILER_TARGET wasm32-wasi)
set(CMAKE_CXX_COMPILER_TARGET wasm32-wasi)
set(CMAKE_AR llvm-ar-14)
set(CMAKE_RANLIB llvm-ranlib-14)
set(CMAKE_NM llvm-nm-14)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(TILEPRESS_WASM ON)

set(CMAKE_CXX_FLAGS_INIT "-msimd128 -fno-exceptions")
# Below the stack there is nothing, so that running over it traps.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-Wl,--gc-sections -Wl,--stack-first -Wl,-z,stack-size=262144")
# Test programs read the sample pages. Node's fast calls into its WASI corrupt its heap.
set(CMAKE_CROSSCOMPILING_EMULATOR node --no-warnings --no-turbo-fast-api-calls ${CMAKE_CURRENT_LIST_DIR}/../tests/wasm/run.mjs)
