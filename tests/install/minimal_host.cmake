# Runs the example, which must print the output in the README.
execute_process(COMMAND ${EXAMPLE} OUTPUT_VARIABLE printed RESULT_VARIABLE result)
file(READ ${CMAKE_CURRENT_LIST_DIR}/../../README.md readme)
string(FIND "${readme}" "```\n${printed}```" position)
if(NOT result EQUAL 0 OR printed STREQUAL "" OR position EQUAL -1)
  message(FATAL_ERROR "exit status ${result}; README.md does not have what it printed:\n${printed}")
endif()
