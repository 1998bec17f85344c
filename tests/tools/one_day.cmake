# Replays the example day twice. It must be readable: at most 98 lines, to which the demo adds two,
# of at most 120 columns, one of them about the atom that is lost. Both runs must print the same, and
# the cycles must end where the two clocks say: six hours after the one before, and later by the 5
# hours 38 minutes of sleep.
execute_process(COMMAND ${REPLAY} ${DAY} OUTPUT_FILE ${WORK}/day.text COMMAND_ERROR_IS_FATAL ANY)
file(STRINGS ${WORK}/day.text lost REGEX "^13:02:00.* DROPPED +SensorRuntimeErrorDetected +accelerometer .* runtime_error at 13:00:20")
file(STRINGS ${WORK}/day.text long LENGTH_MINIMUM 121)
file(READ ${WORK}/day.text text)
string(REGEX MATCHALL "\n" lines "${text}")
list(LENGTH lines lines)
if(lines GREATER 98 OR lost STREQUAL "" OR NOT long STREQUAL "")
  message(FATAL_ERROR "${lines} lines; lost: ${lost}; too long: ${long}")
endif()
foreach(run first second)
  execute_process(COMMAND ${REPLAY} --log ${DAY} OUTPUT_VARIABLE ${run} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
if(NOT first STREQUAL second)
  message(FATAL_ERROR "two runs of the day differ")
endif()
string(REGEX MATCHALL "[0-9:.]+ +atom +SensorSystemQueueStressReported +queue_type=[13]" uploads "${first}")
list(TRANSFORM uploads REPLACE " +atom.*" "")
list(REMOVE_DUPLICATES uploads)
if(NOT uploads STREQUAL "11:38:00;17:38:00;23:38:00"
    OR NOT first MATCHES "blocked by the cap +12 .*\ncycles ended +3\n")
  message(FATAL_ERROR "cycles ended at ${uploads}")
endif()
