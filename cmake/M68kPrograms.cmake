# 68000 test programs: assembly sources turned into raw big-endian binaries at build time with
# the m68k cross binutils.
#
#   vemo_add_m68k_program(TARGET name SOURCE file.s [OUTPUT_DIR dir])
#
# produces <dir>/<name>.bin (default dir: ${CMAKE_BINARY_DIR}/programs) and a target <name>
# that builds it. A program is assembled at address 0 with '-m68000'; use '.org' or position-
# independent code, and give the image's load address in the test. The source may
# '.include "risc.inc"' (this folder) to carry GPU and DSP code in the same file.
find_program(M68K_AS m68k-linux-gnu-as REQUIRED)
find_program(M68K_OBJCOPY m68k-linux-gnu-objcopy REQUIRED)
set(VEMO_PROGRAM_DIR ${CMAKE_BINARY_DIR}/programs)
set(VEMO_RISC_INC ${CMAKE_CURRENT_LIST_DIR}/risc.inc)

function(vemo_add_m68k_program)
  cmake_parse_arguments(P "" "TARGET;SOURCE;OUTPUT_DIR" "" ${ARGN})
  if(NOT P_OUTPUT_DIR)
    set(P_OUTPUT_DIR ${VEMO_PROGRAM_DIR})
  endif()
  get_filename_component(src ${P_SOURCE} ABSOLUTE)
  get_filename_component(src_dir ${src} DIRECTORY)
  set(obj ${CMAKE_CURRENT_BINARY_DIR}/${P_TARGET}.o)
  set(bin ${P_OUTPUT_DIR}/${P_TARGET}.bin)
  add_custom_command(
    OUTPUT ${bin}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${P_OUTPUT_DIR}
    COMMAND ${M68K_AS} -m68000 -I ${src_dir} -I ${CMAKE_SOURCE_DIR}/cmake -o ${obj} ${src}
    COMMAND ${M68K_OBJCOPY} -O binary ${obj} ${bin}
    DEPENDS ${src} ${VEMO_RISC_INC}
    COMMENT "Assembling 68000 program ${P_TARGET}"
    VERBATIM)
  add_custom_target(${P_TARGET} DEPENDS ${bin})
endfunction()
