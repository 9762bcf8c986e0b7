// The GPU and the DSP inside the running machine: the frame scheduler's slices and DSP tick
// interrupts, the GPU's interrupt to the 68000, GPU objects, frames that end early, the PCs of
// the frame information and the instruction trace.
#include <vector>

#include "risc/risc_trace.h"
#include "risc_test_support.h"
#include "support/program_config.h"
#include "support/temp_files.h"

namespace {

using namespace risc_test;

constexpr uint32_t PROGRAM_ADDRESS = 0x4000;
constexpr uint32_t IRQ_COUNT = 0x1000;  // the 68000's level-2 handler counts here

// The 68000 side: a level-2 handler that counts and acknowledges the GPU source, the GPU
// source enabled, interrupts unmasked, then an idle loop.
const std::vector<uint8_t> host_program = {
    0x21, 0xFC, 0x00, 0x00, 0x40, 0x20, 0x01, 0x00,  // 4000 move.l #$4020,$100.w
    0x33, 0xFC, 0x00, 0x02, 0x00, 0xF0, 0x00, 0xE0,  // 4008 move.w #2,INT1
    0x46, 0xFC, 0x20, 0x00,                          // 4010 move.w #$2000,sr
    0x60, 0xFE,                                      // 4014 bra.s *
    0x4E, 0x71, 0x4E, 0x71, 0x4E, 0x71, 0x4E, 0x71, 0x4E, 0x71,  // 4016 nops
    0x52, 0xB8, 0x10, 0x00,                          // 4020 addq.l #1,$1000.w
    0x33, 0xFC, 0x02, 0x02, 0x00, 0xF0, 0x00, 0xE0,  // 4024 move.w #$0202,INT1
    0x4E, 0x73,                                      // 402C rte
};

class Machine : public testing::Test {
protected:
    void start(bool audio, bool dsp_always_run = false) {
        vemo_config config =
            test_support::program_config(test_support::write_file("risc_host.bin", host_program), PROGRAM_ADDRESS);
        config.audio_enable = audio;
        config.dsp_always_run = dsp_always_run;
        ASSERT_EQ(vemo_init(&config), 1) << vemo_get_error_string();
        bus_write32(IRQ_COUNT, 0);
        clear_message();
    }
    void TearDown() override {
        risc_trace_sink = nullptr;
        risc_trace_left[RISC_GPU] = risc_trace_left[RISC_DSP] = 0;
        vemo_shutdown();
    }
    // Starts a processor at `address` by its control registers, as a 68000 program would.
    static void go(uint32_t pc_register, uint32_t address) {
        bus_write32(pc_register, address);
        bus_write32(pc_register + 4, 1);
    }
};

// An endless loop: jr to itself with a nop in its delay slot.
const program idle = {ins(JR, 31, CC_ALWAYS), ins(NOP, 0, 0)};

// Audio at 20774 Hz (serial clock 19): the DSP's audio interrupt comes on 346 lines of the
// frame, and its handler writes one numbered sample to each side every time.
TEST_F(Machine, DspAudioInterruptsFillTheSampleBuffersForAFrame) {
    start(true);
    const uint32_t handler = DSP_RAM_BASE + 0x100, loop = DSP_RAM_BASE + 0x200;
    put(DSP_RAM_BASE + 16, movei(handler, 30) + program{ins(JUMP, 30, CC_ALWAYS), ins(NOP, 0, 0)});
    put(handler, program{ins(ADDQT, 1, 20)} + movei(0xF1A148, 21) + movei(0xF1A14C, 22) +
                     program{ins(STORE, 21, 20), ins(NOT, 0, 20), ins(STORE, 22, 20), ins(NOT, 0, 20)} +
                     handler_return(D_FLAGS, 1));
    put(loop, idle);
    bus_write32(0xF1A150, 19);  // SCLK
    bus_write32(D_FLAGS, 1u << 5);
    dsp_state.regs[31] = DSP_RAM_BASE + 0x1F00;
    go(D_PC, loop);

    ASSERT_EQ(vemo_run_frame(), 1) << vemo_get_error_string();
    vemo_frame_info info;
    vemo_get_frame_info(&info);
    EXPECT_EQ(info.audio_rate, 20774);
    ASSERT_EQ(info.audio_left_count, 346);
    ASSERT_EQ(info.audio_right_count, 346);
    for (int i = 0; i < 346; ++i) {
        ASSERT_EQ(static_cast<uint16_t>(info.audio_left[i]), i + 1) << i;
        ASSERT_EQ(static_cast<uint16_t>(info.audio_right[i]), static_cast<uint16_t>(~(i + 1))) << i;
    }
    EXPECT_EQ(info.dsp_pc & ~2u, loop);
    EXPECT_EQ(dsp_state.imask, 0u);
    EXPECT_EQ(dsp_state.regs[31], DSP_RAM_BASE + 0x1F00);
}

// The GPU's G_CTRL bit 1 reaches the 68000's level-2 handler through INT1.
TEST_F(Machine, GpuInterruptReachesThe68000Handler) {
    start(false);
    const uint32_t code = GPU_RAM_BASE + 0x100;
    put(code, movei(G_CTRL, 1) + program{ins(MOVEQ, 3, 2), ins(STORE, 1, 2), ins(MOVEQ, 0, 3), ins(STORE, 1, 3)});
    go(G_PC, code);
    ASSERT_EQ(vemo_run_frame(), 1) << vemo_get_error_string();
    EXPECT_EQ(bus_read32(IRQ_COUNT), 1u);
    EXPECT_EQ(video.int1_pending, 0u);  // acknowledged by the handler
    vemo_frame_info info;
    vemo_get_frame_info(&info);
    EXPECT_EQ(info.gpu_pc, code + 14);  // stopped after its last store
}

// Each GPU object on a displayed line raises GPU interrupt 3; the handler counts them.
TEST_F(Machine, GpuObjectsInterruptTheGpu) {
    start(false);
    const uint32_t list = 0x8000, loop = GPU_RAM_BASE + 0x200;
    bus_write32(list, 0);
    bus_write32(list + 4, 2);  // GPU object
    bus_write32(list + 8, 0);
    bus_write32(list + 12, 4);  // stop
    gpu_write16(OLP, static_cast<uint16_t>(list));
    gpu_write16(OLP + 2, 0);
    gpu_write16(VDB, 40);
    gpu_write16(VDE, 50);
    put(GPU_RAM_BASE + 0x30, program{ins(ADDQT, 1, 20)} + handler_return(G_FLAGS, 3));
    put(loop, idle);
    bus_write32(G_FLAGS, 1u << 7);
    gpu_state.regs[31] = GPU_RAM_BASE + 0xF00;
    go(G_PC, loop);
    ASSERT_EQ(vemo_run_frame(), 1) << vemo_get_error_string();
    EXPECT_EQ(gpu_state.regs[20], 5u);  // lines 40, 42, 44, 46, 48
    EXPECT_EQ(video.ob_data[3], 2u);
}

// A processor whose pc lies in no code region ends the frame at its first slice; the DSP only
// when it runs at all.
TEST_F(Machine, FramesEndEarlyOnAnInvalidPc) {
    struct {
        bool audio, always;
        uint32_t gpu_pc, dsp_pc;
        int result;
        const char* message;
    } rows[] = {
        {false, false, 0xF0B000, 0, 0, "GPU_change_pc: Invalid address 00F0B000, 00F0B000\n"},
        {true, false, 0, 0xE00000, 0, "DSP_change_pc: Invalid address 00E00000, 00E00000\n"},
        {false, true, 0, 0xE00000, 0, "DSP_change_pc: Invalid address 00E00000, 00E00000\n"},
        {false, false, 0, 0xE00000, 1, ""},
    };
    for (const auto& r : rows) {
        start(r.audio, r.always);
        bus_write32(G_PC, r.gpu_pc);
        bus_write32(D_PC, r.dsp_pc);
        EXPECT_EQ(vemo_run_frame(), r.result);
        EXPECT_STREQ(vemo_get_error_string(), r.message);
        vemo_shutdown();
    }
}

std::vector<risc_trace_entry> traced;
void collect(const risc_trace_entry& e) { traced.push_back(e); }

// Tracing reports each instruction with its words and the registers it wrote, counts down and
// stops reporting at 0; the other processor is not traced.
TEST_F(Machine, TraceReportsInstructionsUntilItsCountRunsOut) {
    start(true);
    traced.clear();
    const uint32_t code = GPU_RAM_BASE + 0x100;
    put(code, movei(0x12345678, 3) + program{ins(MOVEQ, 7, 4), ins(NOP, 0, 0)} + idle);
    go(G_PC, code);
    put(DSP_RAM_BASE, idle);
    go(D_PC, DSP_RAM_BASE);
    risc_trace_sink = collect;
    risc_trace_left[RISC_GPU] = 5;
    ASSERT_EQ(vemo_run_frame(), 1);
    ASSERT_EQ(traced.size(), 5u);
    EXPECT_EQ(risc_trace_left[RISC_GPU], 0);
    const risc_trace_entry& first = traced[0];
    EXPECT_EQ(first.processor, RISC_GPU);
    EXPECT_EQ(first.pc, code);
    EXPECT_EQ(first.word_count, 3);
    EXPECT_EQ(first.words[1], 0x5678);
    EXPECT_EQ(first.words[2], 0x1234);
    EXPECT_EQ(first.written_mask, 1u << 3);
    EXPECT_EQ(first.written[3], 0x12345678u);
    EXPECT_EQ(traced[1].pc, code + 6);
    EXPECT_EQ(traced[1].word_count, 1);
    EXPECT_EQ(traced[1].written_mask, 1u << 4);
    EXPECT_EQ(traced[2].written_mask, 0u);
    EXPECT_EQ(traced[4].pc, code + 12);  // the loop's delay slot
}

}  // namespace
