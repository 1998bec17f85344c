# Tests the command line of sensorvela-log: its exit status and what it writes to each stream.
function(expect status arguments input out err)
  file(WRITE ${WORK}/log_input "${input}")
  execute_process(COMMAND ${LOG} ${arguments} INPUT_FILE ${WORK}/log_input
    RESULT_VARIABLE result OUTPUT_VARIABLE printed ERROR_VARIABLE complained)
  if(NOT result STREQUAL status OR NOT printed MATCHES "${out}" OR NOT complained MATCHES "${err}")
    message(FATAL_ERROR
      "${arguments}: status ${result}\nprinted: ${printed}\ncomplained: ${complained}")
  endif()
endfunction()

set(online "I/sensor-vela( 812): IStats service online.\n")
expect(0 "-" "${online}" "^ +1  lines\n.*\n +812 +- +online " "^$")
expect(0 "-;--format;jsonl" "${online}" "^{\"kind\":\"log_summary\",\"version\":1,\"lines\":1," "^$")
expect(0 "-;${WORK}/log_input" "${online}" "^ +2  lines\n" "^$")
expect(0 "-" "" "^ +0  lines\n" "^$")
expect(0 "--help" "" "threadtime" "^$")
expect(0 "--version" "" "^sensorvela-log [0-9.]+\n$" "^$")
expect(1 "no/such" "" "^$" "^sensorvela-log: no/such: No such file or directory\n$")
expect(1 "-;/" "${online}" "^$" "^sensorvela-log: /: Is a directory\n$")
expect(2 "-;--format;xml" "" "^$" "xml")
expect(2 "" "" "^$" "FILE")

execute_process(COMMAND ${LOG} --version OUTPUT_FILE /dev/full
  RESULT_VARIABLE result ERROR_VARIABLE complained)
if(NOT result STREQUAL 1 OR NOT complained MATCHES "^[^\n]*cannot write to standard output: [^\n]*\n$")
  message(FATAL_ERROR "--version to a full device: status ${result}\ncomplained: ${complained}")
endif()

# The input arrives when nobody reads the output any more.
execute_process(WORKING_DIRECTORY ${WORK} ERROR_VARIABLE complained OUTPUT_VARIABLE status
  COMMAND sh -c "rm -f log_fifo && mkfifo log_fifo && \
    { \"$@\" - <log_fifo; echo $? >log_status; } | { exec <&-; echo >log_fifo; } && cat log_status"
    sh ${LOG})
if(NOT status STREQUAL "1\n" OR NOT complained STREQUAL "")
  message(FATAL_ERROR "a closed pipe: status ${status}\ncomplained: ${complained}")
endif()
