# Installs into a prefix and moves it, then builds the examples against it as a host would, with CMake
# and with pkg-config, and runs them.
function(run)
  execute_process(COMMAND ${ARGV} OUTPUT_VARIABLE output ECHO_OUTPUT_VARIABLE
    OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set(output "${output}" PARENT_SCOPE)
endfunction()

set(prefix ${WORK}/moved)
file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --config ${CONFIG} --prefix ${WORK}/prefix)
file(RENAME ${WORK}/prefix ${prefix})
# Fails if the installed library does not have this name, or does not find the simulated platform.
file(GET_RUNTIME_DEPENDENCIES LIBRARIES ${prefix}/${LIBDIR}/libsensorvela.so.1
  RESOLVED_DEPENDENCIES_VAR dependencies)
if(EXISTS ${prefix}/${BINDIR}/sensorvela-replay)
  foreach(tool sensorvela-replay sensorvela-log)
    run(${prefix}/${BINDIR}/${tool} --version)
    set(bash_completion bash-completion/completions/${tool})
    foreach(file man/man1/${tool}.1 ${bash_completion} zsh/site-functions/_${tool})
      file(STRINGS ${prefix}/share/${file} help REGEX "-format")
      if(help STREQUAL "")
        message(FATAL_ERROR "${file} does not have the options")
      endif()
    endforeach()
    run(bash -n ${prefix}/share/${bash_completion})
  endforeach()
endif()
set(recorder ${prefix}/${LIBDIR}/libsensorvela_recorder.so)

file(COPY ${SOURCE}/tests/install/host/ ${SOURCE}/examples/minimal_host.cc
  ${SOURCE}/examples/hal_test.cc DESTINATION ${WORK}/cmake)
set(configure ${CMAKE_COMMAND} -G ${GENERATOR} -DCMAKE_PREFIX_PATH=${prefix}
  -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_CXX_FLAGS=${CXX_FLAGS} -DGTEST_SOURCE=${GTEST_SOURCE})
run(${configure} -S ${WORK}/cmake -B ${WORK}/cmake)
run(${CMAKE_COMMAND} --build ${WORK}/cmake)
set(EXAMPLE ${WORK}/cmake/minimal_host)
include(${SOURCE}/tests/install/minimal_host.cmake)
run(${WORK}/cmake/hal_test)

# A project without C++ gets an error message that says so.
file(WRITE ${WORK}/no_cxx/CMakeLists.txt "cmake_minimum_required(VERSION 3.25)
project(no_cxx NONE)\nfind_package(sensorvela CONFIG REQUIRED)\n")
execute_process(COMMAND ${configure} -S ${WORK}/no_cxx -B ${WORK}/no_cxx
  RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE complaint)
if(result EQUAL 0 OR NOT complaint MATCHES "sensorvela is a C\\+\\+ library")
  message(FATAL_ERROR "exit status ${result}, and: ${complaint}")
endif()

# The recorder in front of the example, and the replay of what it has recorded.
if(EXISTS ${recorder} AND EXISTS ${prefix}/${BINDIR}/sensorvela-replay)
  run(${CMAKE_COMMAND} -E env LD_PRELOAD=${recorder} SENSORVELA_RECORDING=${WORK}/recording.jsonl.gz
    ${EXAMPLE})
  set(recorded "${output}")
  run(${prefix}/${BINDIR}/sensorvela-replay --format jsonl ${WORK}/recording.jsonl.gz)
  string(REGEX MATCHALL "\n[A-Z]" atoms "\n${recorded}")
  string(REGEX MATCHALL "\"kind\":\"atom\"" replayed "${output}")
  list(LENGTH atoms atoms)
  list(LENGTH replayed replayed)
  if(NOT atoms EQUAL replayed OR atoms EQUAL 0)
    message(FATAL_ERROR "${atoms} atoms, ${replayed} in the replay: ${output}")
  endif()
endif()

set(ENV{PKG_CONFIG_LIBDIR} ${prefix}/${LIBDIR}/pkgconfig)
run(${PKG_CONFIG} --cflags --libs sensorvela-testkit)
separate_arguments(flags UNIX_COMMAND "${CXX_FLAGS} ${output}")
run(${PKG_CONFIG} --variable=libdir sensorvela)
list(APPEND flags -Wl,-rpath,${output})
run(${CXX} -std=c++17 ${SOURCE}/examples/minimal_host.cc ${flags} -o ${WORK}/minimal_host)
set(EXAMPLE ${WORK}/minimal_host)
include(${SOURCE}/tests/install/minimal_host.cmake)
run(${CXX} -std=c++17 ${SOURCE}/examples/hal_test.cc -I${GTEST_SOURCE}/googletest/include
  -I${GTEST_SOURCE}/googlemock/include ${GTEST_LIBRARIES} ${flags} -o ${WORK}/hal_test)
run(${WORK}/hal_test)
