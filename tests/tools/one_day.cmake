# Replays the example day twice. Both runs must print the same, and the cycles must end where the two
# clocks say: six hours after the one before, and later by the 5 hours 38 minutes of sleep.
foreach(run first second)
  execute_process(COMMAND ${REPLAY} --log ${DAY} OUTPUT_VARIABLE ${run} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
if(NOT first STREQUAL second)
  message(FATAL_ERROR "two runs of the day differ")
endif()
string(REGEX MATCHALL "[0-9:.]+  atom       SensorSystemQueueStressReported \\(100029\\) +queue_type=[13]" uploads "${first}")
list(TRANSFORM uploads REPLACE "  atom.*" "")
list(REMOVE_DUPLICATES uploads)
if(NOT uploads STREQUAL "11:38:00.000000000;17:38:00.000000000;23:38:00.000000000"
    OR NOT first MATCHES "blocked by the cap +12 .*\ncycles ended +3\n")
  message(FATAL_ERROR "cycles ended at ${uploads}")
endif()
