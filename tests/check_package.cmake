# Installs the built library into a scratch prefix, then builds and runs a small C program
# against it twice: through find_package(krocc) and through pkg-config.
#   -DBUILD_DIR=<library build tree> -DSOURCE_DIR=<tests/package> -DWORK_DIR=<scratch>
#   -DLIBDIR=<library folder relative to the prefix>
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed (${rc}): ${ARGN}\n${out}\n${err}")
  endif()
  set(last_output "${out}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
set(libdir ${prefix}/${LIBDIR})

# The CMake package.
run(${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/cmake -DCMAKE_PREFIX_PATH=${prefix}
    -DCMAKE_BUILD_TYPE=Release)
run(${CMAKE_COMMAND} --build ${WORK_DIR}/cmake)
run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${libdir} ${WORK_DIR}/cmake/consumer)
if(NOT last_output MATCHES "9.0.1")
  message(FATAL_ERROR "consumer printed: ${last_output}")
endif()

# pkg-config.
find_program(PKG_CONFIG pkg-config)
if(PKG_CONFIG)
  set(ENV{PKG_CONFIG_PATH} ${libdir}/pkgconfig)
  run(${PKG_CONFIG} --cflags --libs krocc)
  separate_arguments(flags UNIX_COMMAND "${last_output}")
  run(cc -std=c99 -o ${WORK_DIR}/consumer_pc ${SOURCE_DIR}/consumer.c ${flags})
  run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${libdir} ${WORK_DIR}/consumer_pc)
else()
  message(WARNING "pkg-config not found: only the CMake package was checked")
endif()
