cmake_minimum_required(VERSION 3.25)
# Passes when COMMAND ends well and prints what matches OUTPUT.
execute_process(COMMAND ${COMMAND} OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "\r" "" printed "${printed}")
if(NOT printed MATCHES "${OUTPUT}")
  message(FATAL_ERROR "printed:\n${printed}\nnot:\n${OUTPUT}")
endif()
