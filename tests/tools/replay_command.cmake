# Tests the command line of sensorvela-replay: its exit status and what it writes to each stream.
include(${CMAKE_CURRENT_LIST_DIR}/command.cmake)

set(trace "{\"at_ns\":0,\"event\":\"engine_start\"}\n")
expect(0 "-" "${trace}" "^\ndelivered  .*cycles ended" "^$")
expect(0 "-;--log" "${trace}" "^00:00:00 +log  " "^$")
expect(0 "-;--format;jsonl" "${trace}" "^{\"kind\":\"replay\",\"version\":1}\n{\"kind\":\"summary\"" "^$")
expect(0 "-;--trace-out;${WORK}/trace_events.json" "${trace}" "^\ndelivered" "^$")
expect(1 "-;--trace-out;/dev/full" "${trace}" "^\ndelivered" "^[^\n]*cannot write /dev/full: No space left[^\n]*\n$")
if(HAS_PICTURE)
  expect(0 "-;--picture;${WORK}/day.html;--trace-out;${WORK}/trace_events.json" "${trace}" "^\ndelivered" "^$")
  expect(1 "-;--picture;/dev/full" "${trace}" "^\ndelivered" "^[^\n]*cannot write /dev/full: No space left[^\n]*\n$")
  expect(2 "-;--picture;${WORK}/input" "${trace}" "^$" "^[^\n]*--picture would overwrite the trace\n$")
  expect(2 "-;--picture;${WORK}/same;--trace-out;${WORK}/./same" "${trace}" "^$" "^[^\n]*expected two files\n$")
  expect(2 "--check;-;--picture;${WORK}/day.html" "${trace}" "^$" "--check")
else()
  expect(2 "-;--picture;${WORK}/day.html" "${trace}" "^$" "^[^\n]*--picture: this build has none[^\n]*\n$")
endif()
expect(0 "--help" "" "\n  --only WHAT .*\n\nEvents:\n  engine_start " "^$")
expect(0 "--version" "" "^sensorvela-replay [0-9]+\\.[0-9]+\\.[0-9]+\n$" "^$")
expect(0 "--check;-" "${trace}" "^$" "^$")
expect(2 "--check;-" "${trace}nonsense" "^$" "^<stdin>:2: malformed JSON[^\n]*\n$")
expect(2 "--check;-" "{\"at_ns\":0,\"event\":\"recording\",\"version\":1}\n${trace}" "^$" "^<stdin>:2: the recording was cut[^\n]*\n$")
expect(2 "--check;-;--trace-out;${WORK}/trace_events.json" "${trace}" "^$" "--check")
expect(2 "-" "nonsense" "^$" "^<stdin>:1: malformed JSON[^\n]*\n$")
expect(2 "no/such" "" "^$" "^no/such: No such file or directory[^\n]*\n$")
expect(2 "/" "" "^$" "^/: Is a directory[^\n]*\n$")
expect(2 "-;--trace-out;-" "${trace}" "^$" "^sensorvela-replay: --trace-out -:[^\n]*\n$")
expect(2 "-;--trace-out=" "${trace}" "^$" "FILE missing")
foreach(same - "${WORK}/input")
  expect(2 "${same};--trace-out;${WORK}/input" "${trace}" "^$" "^[^\n]*would overwrite the trace\n$")
endforeach()
expect(2 "-;--format;xml" "${trace}" "^$" "xml")
expect(2 "" "" "^$" "TRACE")
expect(2 "--bogus" "" "^$" "--bogus")

# What is printed of a run: one sensor's lines, one kind's, the summary alone.
set(named "${trace}{\"at_ns\":1,\"event\":\"sensor_name\",\"sensor_high\":1,\"sensor_low\":2,\"name\":\"left\"}
{\"at_ns\":1,\"event\":\"service_registered\"}
{\"at_ns\":2,\"event\":\"hal_error\",\"sensor_high\":1,\"sensor_low\":2,\"call\":3,\"error\":4,\"count\":11}
{\"at_ns\":3,\"event\":\"firmware_state\",\"subject_id\":1,\"state\":4,\"detail_code\":77777}\n")
foreach(what left 1/2 "left (1/2)")
  expect(0 "-;--log;--only;${what}" "${named}" "^[^\n]* SensorHalErrorDetected [^\n]* left \\(1/2\\) [^\n]*\\(10 times\\)\n[^\n]* BLOCKED [^\n]*\n\ndelivered" "^$")
endforeach()
foreach(what SensorFirmwareStateChanged 100244)
  expect(0 "-;--log;--only=${what}" "${named}" "^[^\n]* atom +SensorFirmwareStateChanged [^\n]*\n\ndelivered" "^$")
endforeach()
expect(0 "-;--summary;--log" "${named}" "^delivered" "^$")
foreach(check "" "--check;")
  expect(2 "${check}-;--only;right" "${named}" "^$" "^sensorvela-replay: --only right: [^\n]*\n$")
endforeach()
expect(2 "-;--wide;--format;jsonl" "${named}" "^$" "^sensorvela-replay: --wide[^\n]*\n$")

# On a terminal lines fit its width, and what went wrong has a colour unless NO_COLOR forbids it.
find_program(script script)
string(REGEX REPLACE "^;" "" tool "${TOOL}")
if(script AND NOT tool MATCHES ";")
  file(WRITE ${WORK}/input "${named}")
  string(ASCII 27 escape)
  foreach(case "COLUMNS=60;TERM=xterm;NO_COLOR=;33m[^\n]* BLOCKED"
               "COLUMNS=60;TERM=xterm;NO_COLOR=1;^[^${escape}]*$")
    list(POP_BACK case expected)
    execute_process(COMMAND ${CMAKE_COMMAND} -E env ${case}
        ${script} -qec "'${tool}' --only 1/2 '${WORK}/input'" /dev/null
      INPUT_FILE /dev/null OUTPUT_VARIABLE shown COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX REPLACE "${escape}.[0-9]+m" "" plain "${shown}")
    string(REGEX MATCHALL "[^\r\n]+" lines "${plain}")
    list(FILTER lines INCLUDE REGEX "^.............................................................")
    if(NOT shown MATCHES "${expected}" OR NOT lines STREQUAL "")
      message(FATAL_ERROR "${case}: ${shown}\ntoo long: ${lines}")
    endif()
  endforeach()
endif()

# The same trace from a file and through a pipe, plain and compressed.
file(WRITE ${WORK}/input "${trace}")
file(ARCHIVE_CREATE OUTPUT ${WORK}/input.gz PATHS ${WORK}/input FORMAT raw COMPRESSION GZip)
execute_process(COMMAND ${TOOL} --log ${WORK}/input OUTPUT_VARIABLE plain COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${TOOL} --log ${WORK}/input.gz OUTPUT_VARIABLE inflated COMMAND_ERROR_IS_FATAL ANY)
foreach(input input input.gz)
  execute_process(COMMAND cat ${WORK}/${input} COMMAND ${TOOL} --log - OUTPUT_VARIABLE piped COMMAND_ERROR_IS_FATAL ANY)
  if(NOT plain MATCHES "log" OR NOT plain STREQUAL inflated OR NOT plain STREQUAL piped)
    message(FATAL_ERROR "plain: ${plain}\ncompressed: ${inflated}\n${input} through a pipe: ${piped}")
  endif()
endforeach()

expect_full_device(--help)

# A run ends where a write fails: it prints no summary, and does not finish the viewer's file. When the
# reader of a pipe has gone, the file is still wanted.
string(REPEAT "long " 50 text)
string(REPEAT "{\"at_ns\":0,\"event\":\"note\",\"text\":\"${text}\"}\n" 2000 notes)
expect(1 "-;--wide;--trace-out;/dev/full" "${trace}${notes}" "long \n$" "^[^\n]*cannot write /dev/full: No space left[^\n]*\n$")
foreach(case "OUTPUT_FILE;/dev/full;^1$;^[^\n]*cannot write to standard output: No space left[^\n]*\n$;OFF"
             "COMMAND;${CMAKE_COMMAND} -E true;^1,0$;^$;ON")
  list(POP_FRONT case keyword reader status err is_finished)
  separate_arguments(reader UNIX_COMMAND "${reader}")
  execute_process(COMMAND ${TOOL} --wide ${WORK}/input --trace-out ${WORK}/trace_events.json
    ${keyword} ${reader} RESULTS_VARIABLE results ERROR_VARIABLE complained)
  list(JOIN results "," results)
  file(READ ${WORK}/trace_events.json events)
  string(REGEX MATCH "]}\n$" end "${events}")
  if(NOT results MATCHES "${status}" OR NOT complained MATCHES "${err}"
      OR (is_finished AND end STREQUAL "") OR (NOT is_finished AND NOT end STREQUAL ""))
    message(FATAL_ERROR "${keyword}: status ${results}\ncomplained: ${complained}")
  endif()
endforeach()

# The system refuses every thread, because no address space holds a stack of this size, in KiB. An
# emulator does not pass the limit on, and sanitizers need another address space.
list(LENGTH TOOL words)
if(words EQUAL 1 AND NOT INSTRUMENTED)
  list(PREPEND TOOL sh -c "ulimit -s 137438953472 && exec \"$0\" \"$@\"")
  expect(1 "-" "${trace}" "^$" "^sensorvela-replay: cannot start a thread: [^\n]*\n$")
endif()
