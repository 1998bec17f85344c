# Runs the example: it must succeed and print an atom for each of its events and for its diagnostics.
execute_process(COMMAND ${EXAMPLE} OUTPUT_VARIABLE printed RESULT_VARIABLE result)
set(expected "")
foreach(atom "100242 with 7" "100245 with 3" "100024 with 4" "100242 with 7" "100028 with 4"
    "100029 with 7" "100029 with 7" "100029 with 7")
  string(APPEND expected "atom ${atom} values\n")
endforeach()
if(NOT result EQUAL 0 OR NOT printed STREQUAL expected)
  message(FATAL_ERROR "exit status ${result}, printed:\n${printed}")
endif()
