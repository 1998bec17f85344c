# Tests the command line of sensorvela-log: its exit status and what it writes to each stream.
include(${CMAKE_CURRENT_LIST_DIR}/command.cmake)

set(online "I/sensor-vela( 812): IStats service online.\n")
expect(0 "-" "${online}" "^ +1  lines\n.*\n +812 +- +online " "^$")
expect(0 "-;--format;jsonl" "${online}" "^{\"kind\":\"log_summary\",\"version\":1,\"lines\":1," "^$")
expect(0 "-;${WORK}/input" "${online}" "^ +2  lines\n" "^$")
expect(0 "-" "" "^ +0  lines\n" "^$")
expect(0 "--help" "" "threadtime" "^$")
expect(0 "--version" "" "^sensorvela-log [0-9.]+\n$" "^$")
expect(1 "no/such" "" "^$" "^sensorvela-log: no/such: No such file or directory\n$")
expect(1 "-;/" "${online}" "^$" "^sensorvela-log: /: Is a directory\n$")
expect(2 "-;--format;xml" "" "^$" "xml")
expect(2 "" "" "^$" "FILE")

string(ASCII 239 187 191 mark)
expect(0 "-" "${mark}${online}" "^ +1  lines\n +1  library lines\n" "^$")
string(ASCII 255 254 utf16)
expect(1 "-" "${utf16}I" "^$" "^sensorvela-log: -: is UTF-16: convert it to UTF-8 first\n$")
string(ASCII 80 75 3 4 zip)
expect(1 "-" "${zip}" "^$" "^sensorvela-log: -: is a zip archive: unzip it first\n$")
string(ASCII 31 139 8 gzip)
expect(1 "-" "${gzip}" "^$" "^sensorvela-log: -: its gzip data is cut or damaged\n$")
file(WRITE ${WORK}/log "${online}")
execute_process(COMMAND gzip -fk log WORKING_DIRECTORY ${WORK})
expect(0 "${WORK}/log.gz" "" "^ +1  lines\n +1  library lines\n" "^$")

expect_full_device(--version)

# The input arrives when nobody reads the output any more.
execute_process(WORKING_DIRECTORY ${WORK} ERROR_VARIABLE complained OUTPUT_VARIABLE status
  COMMAND sh -c "rm -f log_fifo && mkfifo log_fifo && \
    { \"$@\" - <log_fifo; echo $? >log_status; } | { exec <&-; echo >log_fifo; } && cat log_status"
    sh ${TOOL})
if(NOT status STREQUAL "1\n" OR NOT complained STREQUAL "")
  message(FATAL_ERROR "a closed pipe: status ${status}\ncomplained: ${complained}")
endif()
