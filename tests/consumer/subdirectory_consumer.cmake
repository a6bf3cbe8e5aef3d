# Configures tests/consumer/subdirectory afresh in WORK_DIR (its checks run at
# configure time); with -DBUILD=ON also builds it and runs the consumer.
#   cmake -DSOURCE_DIR=<tqfgen tree> -DWORK_DIR=<scratch> [-DTOOLCHAIN_FILE=<file>]
#         [-DHOST_GENERATOR=<tqfgen_gen of a host build>] [-DBUILD=ON]
#         -P subdirectory_consumer.cmake
cmake_policy(VERSION 3.21)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    string(REPLACE ";" " " cmd "${ARGN}")
    message(FATAL_ERROR "failed (${rc}): ${cmd}")
  endif()
endfunction()

set(args -DTQF_SOURCE_DIR=${SOURCE_DIR} -DCMAKE_BUILD_TYPE=Release)
if(TOOLCHAIN_FILE)
  list(APPEND args -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN_FILE})
endif()
if(HOST_GENERATOR)
  list(APPEND args -DTQF_HOST_GENERATOR=${HOST_GENERATOR})
endif()
file(REMOVE_RECURSE ${WORK_DIR})
run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/tests/consumer/subdirectory -B ${WORK_DIR} ${args})
if(BUILD)
  run(${CMAKE_COMMAND} --build ${WORK_DIR} -j2)
  run(${WORK_DIR}/tqfgen_consumer)
endif()
