# Installs the build (BUILD_DIR) into WORK_DIR/prefix, builds the README's minimal embedding
# against it both ways (CMake package: CONSUMER project; pkg-config: C_COMPILER with
# PKG_CONFIG's flags) and runs each on CARTRIDGE and on a missing image.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
  set(status ${status} PARENT_SCOPE)
  set(out "${out}" PARENT_SCOPE)
  set(err "${err}" PARENT_SCOPE)
endfunction()
function(must)
  run(${ARGN})
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "failed (${status}): ${ARGN}\n${out}\n${err}")
  endif()
  set(out "${out}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

# The embedding exactly as the README shows it: the C block after "A minimal embedding".
file(READ ${README} readme)
string(FIND "${readme}" "A minimal embedding" start)
if(start EQUAL -1)
  message(FATAL_ERROR "README.md has no minimal embedding")
endif()
string(SUBSTRING "${readme}" ${start} -1 readme)
if(NOT readme MATCHES "```c\n(.*)")
  message(FATAL_ERROR "no C block after 'A minimal embedding'")
endif()
string(FIND "${CMAKE_MATCH_1}" "```" end)
string(SUBSTRING "${CMAKE_MATCH_1}" 0 ${end} embedding)
file(WRITE ${WORK_DIR}/embed.c "${embedding}")

must(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
foreach(installed include/vemocore.h bin/vemo-run)
  if(NOT EXISTS ${prefix}/${installed})
    message(FATAL_ERROR "cmake --install put no ${installed} in place")
  endif()
endforeach()

# find_package(vemocore) with the imported target.
must(${CMAKE_COMMAND} -S ${CONSUMER} -B ${WORK_DIR}/consumer -G ${GENERATOR}
     -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_PREFIX_PATH=${prefix} -DEMBED_SOURCE=${WORK_DIR}/embed.c)
must(${CMAKE_COMMAND} --build ${WORK_DIR}/consumer)

# pkg-config, with the package's .pc file.
must(${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${prefix}/${LIBDIR}/pkgconfig ${PKG_CONFIG} --cflags --libs vemocore)
separate_arguments(flags UNIX_COMMAND "${out}")
must(${C_COMPILER} ${WORK_DIR}/embed.c ${flags} -Wl,-rpath,${prefix}/${LIBDIR} -o ${WORK_DIR}/embed-pkg-config)

# Both embeddings run the cartridge's 600 frames, and both report a missing image with the
# core's message.
foreach(program ${WORK_DIR}/consumer/embed ${WORK_DIR}/embed-pkg-config)
  execute_process(COMMAND ${program} ${CARTRIDGE} WORKING_DIRECTORY ${WORK_DIR}
                  RESULT_VARIABLE status ERROR_VARIABLE err)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${program} ${CARTRIDGE}: status ${status}\n${err}")
  endif()
  execute_process(COMMAND ${program} ${WORK_DIR}/missing.j64 WORKING_DIRECTORY ${WORK_DIR}
                  RESULT_VARIABLE status ERROR_VARIABLE err)
  if(NOT status EQUAL 1 OR NOT err STREQUAL "Couldn't load rom file ${WORK_DIR}/missing.j64.\n")
    message(FATAL_ERROR "${program} with a missing image: status ${status}, '${err}'")
  endif()
endforeach()

# The installed vemo-run runs (its built-in demo cartridge, as no image is named).
must(${prefix}/bin/vemo-run --frames 2)
if(NOT out MATCHES "frames run: 2 of 2")
  message(FATAL_ERROR "installed vemo-run: ${out}")
endif()
message(STATUS "installed into ${prefix}; the README's embedding ran through find_package and pkg-config")
