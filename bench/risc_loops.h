// The GPU's and the DSP's benchmark loops, shared by the benchmark programs: a mixed loop for
// each processor in its local RAM, R10 counting the iterations.
#pragma once

#include <cstdint>
#include <vector>

#include "core/bus.h"
#include "risc/dsp.h"
#include "risc/gpu.h"

namespace risc_loops {

constexpr uint16_t ins(unsigned opcode, unsigned first, unsigned second) {
    return static_cast<uint16_t>(opcode << 10 | (first & 31) << 5 | (second & 31));
}
constexpr unsigned ADD = 0, ADDQ = 2, ADDQT = 3, SUB = 4, OR = 10, XOR = 11, IMULTN = 18, RESMAC = 19,
                   IMACN = 20, SHRQ = 25, SHARQ = 27, CMPQ = 31, SAT16S = 33, IMULT = 17, LOAD_R14 = 43,
                   STORE = 47, STORE_R15 = 50, JR = 53, ADDQMOD = 63, MOVEI = 38, LOAD = 41, BCLR = 15,
                   BSET = 14, JUMP = 52;

// Each loop is 11 instructions, the last two a jr back to the start and its delay slot; R10
// counts the iterations.
constexpr int LOOP_INSTRUCTIONS = 11;
constexpr unsigned JR_BACK = 32 - 10;  // from the tenth instruction to the first

// load (R14+1),R1  add R1,R2  addq #3,R3  imult R3,R4  xor R2,R4  shrq #2,R4
// store R4,(R15+2)  cmpq #0,R5  addqt #1,R10  jr T,loop  sub R4,R6
const std::vector<uint16_t> GPU_LOOP = {
    ins(LOAD_R14, 1, 1), ins(ADD, 1, 2), ins(ADDQ, 3, 3), ins(IMULT, 3, 4), ins(XOR, 2, 4), ins(SHRQ, 2, 4),
    ins(STORE_R15, 2, 4), ins(CMPQ, 0, 5), ins(ADDQT, 1, 10), ins(JR, JR_BACK, 0), ins(SUB, 4, 6)};

// load (R14+1),R1  imultn R1,R2  imacn R3,R4  resmac R5  sat16s R5  addqmod #4,R6
// sharq #1,R5  store R5,(R15)  addqt #1,R10  jr T,loop  or R5,R7
const std::vector<uint16_t> DSP_LOOP = {
    ins(LOAD_R14, 1, 1), ins(IMULTN, 1, 2), ins(IMACN, 3, 4), ins(RESMAC, 0, 5), ins(SAT16S, 0, 5),
    ins(ADDQMOD, 4, 6), ins(SHARQ, 1, 5), ins(STORE, 15, 5), ins(ADDQT, 1, 10), ins(JR, JR_BACK, 0),
    ins(OR, 5, 7)};

void put(uint32_t address, const std::vector<uint16_t>& words) {
    for (uint16_t w : words) {
        bus_write16(address, w);
        address += 2;
    }
}

void start_gpu_loop() {
    put(GPU_RAM_BASE + 0x100, GPU_LOOP);
    gpu_state.regs[14] = GPU_RAM_BASE + 0x800;  // a table in local RAM
    gpu_state.regs[15] = 0x8000;                 // results in main RAM
    gpu_state.regs[1] = 0x1234;
    gpu_state.pc = GPU_RAM_BASE + 0x100;
    gpu_state.running = 1;
}

void start_dsp_loop() {
    put(DSP_RAM_BASE + 0x100, DSP_LOOP);
    dsp_state.regs[14] = DSP_RAM_BASE + 0x800;
    dsp_state.regs[15] = DSP_RAM_BASE + 0x900;
    dsp_state.regs[3] = 0x7FF;
    dsp_state.regs[4] = 0x123;
    dsp_state.modulo = 0xFFFFFF00;
    dsp_state.pc = DSP_RAM_BASE + 0x100;
    dsp_state.running = 1;
}

}  // namespace risc_loops
