# Installs into a prefix and moves it, then builds the example against it as a host would, with CMake
# and with pkg-config, and runs both.
function(run)
  execute_process(COMMAND ${ARGV} OUTPUT_VARIABLE output OUTPUT_STRIP_TRAILING_WHITESPACE
    COMMAND_ERROR_IS_FATAL ANY)
  set(output "${output}" PARENT_SCOPE)
endfunction()

set(prefix ${WORK}/moved)
file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --config ${CONFIG} --prefix ${WORK}/prefix)
file(RENAME ${WORK}/prefix ${prefix})
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
separate_arguments(package_flags UNIX_COMMAND "${output}")
run(${PKG_CONFIG} --variable=libdir sensorvela)
separate_arguments(flags UNIX_COMMAND "${CXX_FLAGS} -std=c++17 -Wl,-rpath,${output}")
set(EXAMPLE ${WORK}/minimal_host)
run(${CXX} ${flags} ${SOURCE}/examples/minimal_host.cc ${package_flags} -o ${EXAMPLE})
include(${SOURCE}/tests/minimal_host.cmake)
