# Installs into a prefix and moves it, then builds the example against it as a host would, with CMake
# and with pkg-config, and runs both.
function(run)
  execute_process(COMMAND ${ARGV} OUTPUT_VARIABLE output ECHO_OUTPUT_VARIABLE
    OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set(output "${output}" PARENT_SCOPE)
endfunction()

set(prefix ${WORK}/moved)
file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --config ${CONFIG} --prefix ${WORK}/prefix)
file(RENAME ${WORK}/prefix ${prefix})
# Fails if the library cannot be found by this name, or does not find the simulated platform by itself.
file(GET_RUNTIME_DEPENDENCIES LIBRARIES ${prefix}/${LIBDIR}/libsensorvela.so.1
  RESOLVED_DEPENDENCIES_VAR dependencies)
if(EXISTS ${prefix}/${BINDIR}/sensorvela-replay)
  run(${prefix}/${BINDIR}/sensorvela-replay --help)
endif()

file(COPY ${SOURCE}/tests/installed_host/ ${SOURCE}/examples/minimal_host.cc
  DESTINATION ${WORK}/cmake)
run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${WORK}/cmake -B ${WORK}/cmake
  -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_CXX_FLAGS=${CXX_FLAGS})
run(${CMAKE_COMMAND} --build ${WORK}/cmake)
set(EXAMPLE ${WORK}/cmake/minimal_host)
include(${SOURCE}/tests/minimal_host.cmake)

set(ENV{PKG_CONFIG_LIBDIR} ${prefix}/${LIBDIR}/pkgconfig)
run(${PKG_CONFIG} --cflags --libs sensorvela)
separate_arguments(flags UNIX_COMMAND "${CXX_FLAGS} ${output}")
run(${PKG_CONFIG} --variable=libdir sensorvela)
set(EXAMPLE ${WORK}/minimal_host)
run(${CXX} -std=c++17 ${SOURCE}/examples/minimal_host.cc ${flags} -Wl,-rpath,${output} -o ${EXAMPLE})
include(${SOURCE}/tests/minimal_host.cmake)
