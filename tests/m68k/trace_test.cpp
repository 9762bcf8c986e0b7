// The traced 68000 slice: the same run as untraced slices, slice by slice, and an entry for
// every instruction with its words, the registers it wrote and the interrupts before it.
#include <vector>

#include "m68k/m68k_trace.h"
#include "m68k_test_machine.h"

namespace {

using m68k_test::CODE;
using m68k_test::HANDLER;

std::vector<m68k_trace_entry> entries;
void collect(const m68k_trace_entry& e) { entries.push_back(e); }

// What a slice leaves behind.
struct slice_outcome {
    int result;
    uint32_t pc, sr, stopped, d1, d7, a7;
    int32_t cycles_left, irq_count;
    bool operator==(const slice_outcome&) const = default;
};

class Trace : public m68k_test::Machine {
protected:
    // A loop whose register writes raise interrupts mid-slice, a handler that counts them, a
    // STOP that waits for the next one, and an overrun by RESET.
    void load_program() {
        code({
            0x7005,                  // 1000 moveq #5,d0
            0x33C0, 0x00F0, 0x0000,  // 1002 move.w d0,$F00000.l    raises level 2
            0x5281,                  // 1008 addq.l #1,d1
            0x51C8, 0xFFF6,          // 100A dbra d0,$1002
            0x4E72, 0x2000,          // 100E stop #$2000
            0x4E70,                  // 1012 reset                  132 cycles
            0x60EA,                  // 1014 bra.s $1000
        });
        code(HANDLER, {0x5287, 0x4E73});  // addq.l #1,d7; rte
        m68k_test::io_write_raises_interrupt = true;
    }
    std::vector<slice_outcome> run_slices(int count, bool traced) {
        std::vector<slice_outcome> out;
        for (int i = 0; i < count; ++i) {
            const int result = traced ? m68k_execute_traced(60) : m68k_execute(60);
            const m68k_context_t& c = m68k_context;
            out.push_back({result, c.pc, c.sr, c.stopped, c.d[1], c.d[7], c.a[7], c.cycles_left, c.irq_count});
        }
        return out;
    }
    void TearDown() override {
        m68k_trace_sink = nullptr;
        m68k_trace_left = 0;
    }
};

TEST_F(Trace, TracedSlicesEndExactlyAsUntracedOnesWhetherTheTraceLastsOrRunsOut) {
    load_program();
    const std::vector<slice_outcome> plain = run_slices(40, false);
    EXPECT_GE(m68k_context.d[7], 3u);  // the handler ran, more than once
    for (int64_t budget : {int64_t{1} << 40, int64_t{9}}) {
        start(CODE);
        entries.clear();
        m68k_trace_sink = collect;
        m68k_trace_left = budget;
        EXPECT_EQ(run_slices(40, true), plain) << budget;
        EXPECT_EQ(entries.size() == 9, budget == 9) << budget;
    }
}

TEST_F(Trace, EachEntryHoldsTheInstructionItsWrittenRegistersAndTheInterruptsBeforeIt) {
    load_program();
    m68k_trace_sink = collect;
    m68k_trace_left = 8;
    entries.clear();
    while (m68k_trace_left > 0) m68k_execute_traced(60);
    ASSERT_EQ(entries.size(), 8u);
    const struct {
        uint32_t pc;
        int word_count;
        uint16_t first_word;
        uint32_t interrupts, written_mask;
    } expected[] = {
        {0x1000, 5, 0x7005, 0, 1u << 0},                      // moveq: d0 (flags unchanged: Z, N clear)
        {0x1002, 5, 0x33C0, 0, 0},                            // the write changes no register
        {0x1008, 5, 0x5281, 0, 1u << 1},                      // d1
        {0x100A, 5, 0x51C8, 0, 1u << 0},                      // dbra: d0
        {0x1002, 5, 0x33C0, 0, 0},
        {0x1008, 5, 0x5281, 0, 1u << 1},
        {HANDLER, 5, 0x5287, 1u << 2, 1u << 7},  // next slice; the interrupt's own writes are not the instruction's
        {HANDLER + 2, 5, 0x4E73, 0, 1u << 15 | 1u << M68K_TRACE_SR},              // rte
    };
    for (size_t i = 0; i < std::size(expected); ++i) {
        const m68k_trace_entry& e = entries[i];
        EXPECT_EQ(e.pc, expected[i].pc) << i;
        EXPECT_EQ(e.word_count, expected[i].word_count) << i;
        EXPECT_EQ(e.words[0], expected[i].first_word) << i;
        EXPECT_EQ(e.interrupt_levels, expected[i].interrupts) << i;
        EXPECT_EQ(e.written_mask, expected[i].written_mask) << i;
    }
    EXPECT_EQ(entries[0].written[0], 5u);
    EXPECT_EQ(entries[6].written[7], 1u);  // d7 after addq
    EXPECT_EQ(entries[7].written[15], m68k_test::STACK);  // rte: a7 back
    // The words are read as far as the fetch region holds them: at its last word, only that one.
    start(m68k_test::RAM_SIZE - 2);
    put16(m68k_test::RAM_SIZE - 2, 0x4E71);
    entries.clear();
    m68k_trace_left = 1;
    m68k_execute_traced(0);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].word_count, 1);
}

}  // namespace
