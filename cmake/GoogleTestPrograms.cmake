# GoogleTest from source: every toolchain and sanitizer needs its own build. It is
# not under test itself: unoptimised and without sanitizers it compiles in 6 s;
# optimised with them it takes a minute or more.
set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
if(TILEPRESS_WASM)
  set(gtest_disable_pthreads ON CACHE BOOL "" FORCE)
endif()
add_subdirectory(/usr/src/googletest ${PROJECT_BINARY_DIR}/tests/googletest EXCLUDE_FROM_ALL)
foreach(part gtest gtest_main)
  target_compile_options(${part} PRIVATE -O0 -g0 -w -fno-sanitize=all)
  set_target_properties(${part} PROPERTIES COMPILE_WARNING_AS_ERROR OFF)
endforeach()
if(TILEPRESS_WASM)
  target_compile_definitions(gtest PUBLIC GTEST_HAS_STREAM_REDIRECTION=0)
  target_compile_options(gtest PRIVATE -fno-exceptions)  # it asks for them
endif()

# One ctest entry for each of a few shares of a program's cases: a process for each
# case would take seconds under Wine and sanitizers.
function(tilepress_test_program name shares)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_compile_definitions(${name} PRIVATE TILEPRESS_TEST_DIR="${PROJECT_SOURCE_DIR}/tests")
  target_link_libraries(${name} PRIVATE GTest::gtest_main)
  target_precompile_headers(${name} PRIVATE <gtest/gtest.h>)
  tilepress_warnings(${name})
  if(TILEPRESS_WASM)
    target_compile_options(${name} PRIVATE -O1)
  elseif(TILEPRESS_SANITIZE)
    # The library is under test, not the tests: four times faster to compile so, and
    # their buffers are still guarded.
    target_compile_options(${name} PRIVATE -O0 -fno-sanitize=undefined)
  endif()
  math(EXPR last "${shares} - 1")
  foreach(share RANGE ${last})
    math(EXPR number "${share} + 1")
    add_test(NAME ${name}.${number} COMMAND ${name})
    set_tests_properties(${name}.${number} PROPERTIES
      ENVIRONMENT "GTEST_TOTAL_SHARDS=${shares};GTEST_SHARD_INDEX=${share}")
  endforeach()
endfunction()
