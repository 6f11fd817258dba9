# Windows programs run on a private Wine, set up here once (some 10 s, 106 MB to
# fetch; at once when it is there). TILEPRESS_CACHE in the environment moves it.
if(WIN32 AND CMAKE_HOST_UNIX AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
  set(cache $ENV{TILEPRESS_CACHE})
  if(NOT cache)
    set(cache $ENV{HOME}/.cache/tilepress)
  endif()
  set(width 32)
  if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(width 64)
    string(APPEND cache /wine64)
  else()
    string(APPEND cache /wine)
  endif()
  execute_process(COMMAND ${PROJECT_SOURCE_DIR}/tools/wine-env.sh ${cache} ${width}
    OUTPUT_VARIABLE CMAKE_CROSSCOMPILING_EMULATOR OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
endif()
