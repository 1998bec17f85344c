# expect(STATUS ARGUMENTS INPUT OUT ERR): runs ${TOOL} and demands the exit status, and that what it
# writes to its two streams matches. ${WORK}/input holds the input afterwards.
function(expect status arguments input out err)
  file(WRITE ${WORK}/input "${input}")
  execute_process(COMMAND ${TOOL} ${arguments} INPUT_FILE ${WORK}/input
    RESULT_VARIABLE result OUTPUT_VARIABLE printed ERROR_VARIABLE complained)
  if(NOT result STREQUAL status OR NOT printed MATCHES "${out}" OR NOT complained MATCHES "${err}")
    message(FATAL_ERROR
      "${arguments}: status ${result}\nprinted: ${printed}\ncomplained: ${complained}")
  endif()
endfunction()

# ${TOOL} ARGUMENT fails when the device that it writes to is full.
function(expect_full_device argument)
  execute_process(COMMAND ${TOOL} ${argument} OUTPUT_FILE /dev/full
    RESULT_VARIABLE result ERROR_VARIABLE complained)
  if(NOT result STREQUAL 1
      OR NOT complained MATCHES "^[^\n]*cannot write to standard output: [^\n]*\n$")
    message(FATAL_ERROR "${argument} to a full device: status ${result}\ncomplained: ${complained}")
  endif()
endfunction()
