# Installs the build into a fresh prefix, checks what was installed, moves the
# prefix elsewhere, and builds and runs the consumer program against the moved
# prefix twice: as a CMake project (find_package(tqfgen CONFIG), tqfgen::tqfgen)
# and with the C compiler and `pkg-config --cflags --libs tqfgen`.
#   cmake -DBUILD_DIR=<tqfgen build> -DSOURCE_DIR=<tqfgen tree> -DWORK_DIR=<scratch>
#         -DLIBDIR=<lib folder, relative> -DINCLUDEDIR=<include folder, relative>
#         -DVERSION=<x.y.z> -DC_COMPILER=<cc> -DC_FLAGS=<flags> -DLINK_FLAGS=<flags>
#         [-DTOOLCHAIN_FILE=<file>] [-DEMULATOR=<runner>] -DREADELF=<readelf>
#         -DPKG_CONFIG=<pkg-config> -P install_consumers.cmake
cmake_policy(VERSION 3.21)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    string(REPLACE ";" " " cmd "${ARGN}")
    message(FATAL_ERROR "failed (${rc}): ${cmd}\n${out}\n${err}")
  endif()
  set(run_output "${out}" PARENT_SCOPE)
endfunction()

if(NOT PKG_CONFIG)
  message(FATAL_ERROR "pkg-config was not found (scripts/deps.sh installs it)")
endif()
separate_arguments(c_flags UNIX_COMMAND "${C_FLAGS}")
separate_arguments(link_flags UNIX_COMMAND "${LINK_FLAGS}")
set(emulator ${EMULATOR})

file(REMOVE_RECURSE ${WORK_DIR})
set(stage ${WORK_DIR}/stage)
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${stage})

# The shared libraries: each reachable by its SONAME and by its link name, and
# none carrying a search path other than its own folder ($ORIGIN).
foreach(lib tqfgenv8 tqfcore)
  set(link ${stage}/${LIBDIR}/lib${lib}.so)
  if(NOT EXISTS ${link})
    message(FATAL_ERROR "lib${lib}.so is not installed in ${stage}/${LIBDIR}")
  endif()
  run(${READELF} -d ${link})
  if(NOT run_output MATCHES "\\(SONAME\\)[^\n]*\\[([^]\n]+)\\]")
    message(FATAL_ERROR "lib${lib}.so has no SONAME")
  endif()
  if(NOT EXISTS ${stage}/${LIBDIR}/${CMAKE_MATCH_1})
    message(FATAL_ERROR "lib${lib}.so: no file named after its SONAME ${CMAKE_MATCH_1}")
  endif()
  string(REGEX MATCHALL "\\((RPATH|RUNPATH)\\)[^\n]*\\[[^]\n]*\\]" paths "${run_output}")
  foreach(entry IN LISTS paths)
    string(REGEX REPLACE ".*\\[(.*)\\]" "\\1" entry "${entry}")
    string(REPLACE ":" ";" dirs "${entry}")
    foreach(dir IN LISTS dirs)
      if(NOT dir MATCHES "^\\$ORIGIN(/|$)")
        message(FATAL_ERROR "installed lib${lib}.so searches ${dir} (only \$ORIGIN is allowed)")
      endif()
    endforeach()
  endforeach()
endforeach()

# Text files name no folder of the build, the sources or the prefix itself:
# every path in them is relative, so the prefix can move.
file(GLOB_RECURSE texts ${stage}/${INCLUDEDIR}/* ${stage}/${LIBDIR}/cmake/* ${stage}/${LIBDIR}/pkgconfig/*)
if(NOT texts)
  message(FATAL_ERROR "no headers, CMake package or pkg-config file installed")
endif()
foreach(f IN LISTS texts)
  file(READ ${f} text)
  foreach(dir ${BUILD_DIR} ${SOURCE_DIR} ${stage})
    string(FIND "${text}" "${dir}" at)
    if(at GREATER -1)
      message(FATAL_ERROR "${f} names ${dir}")
    endif()
  endforeach()
endforeach()

set(prefix ${WORK_DIR}/moved)
file(RENAME ${stage} ${prefix})
set(libdir ${prefix}/${LIBDIR})

# A CMake project that finds the package; CMake links the program with the
# moved prefix's library folder as its search path.
set(cmake_consumer ${WORK_DIR}/cmake-consumer)
set(configure_args -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_BUILD_TYPE=Release
    -DCMAKE_C_COMPILER=${C_COMPILER} "-DCMAKE_C_FLAGS=${C_FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${LINK_FLAGS}")
if(TOOLCHAIN_FILE)
  list(APPEND configure_args -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN_FILE})
endif()
run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/tests/consumer -B ${cmake_consumer} ${configure_args})
run(${CMAKE_COMMAND} --build ${cmake_consumer})
run(${emulator} ${cmake_consumer}/tqfgen_consumer ${libdir})
message(STATUS "find_package consumer: ${run_output}")

# A plain compile line from pkg-config, run with the prefix's library folder.
set(ENV{PKG_CONFIG_PATH} ${libdir}/pkgconfig)
run(${PKG_CONFIG} --modversion tqfgen)
string(STRIP "${run_output}" pc_version)
if(NOT pc_version STREQUAL VERSION)
  message(FATAL_ERROR "pkg-config gives version ${pc_version}, the project is ${VERSION}")
endif()
run(${PKG_CONFIG} --cflags --libs tqfgen)
separate_arguments(pc_flags UNIX_COMMAND "${run_output}")
set(pc_consumer ${WORK_DIR}/pkg-config-consumer)
run(${C_COMPILER} ${c_flags} ${SOURCE_DIR}/tests/consumer/consumer.c -o ${pc_consumer}
    ${pc_flags} ${link_flags} -lm -ldl)
set(ENV{LD_LIBRARY_PATH} ${libdir})
run(${emulator} ${pc_consumer} ${libdir})
message(STATUS "pkg-config consumer: ${run_output}")
