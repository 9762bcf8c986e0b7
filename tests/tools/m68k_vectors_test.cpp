// The 68000 test-vector reader and case judge, on hand-built vector files.
#include <gtest/gtest.h>

#include <cstring>

#include "case_check.h"
#include "vector_file.h"

namespace {

// Writes vector-file bytes (little-endian) the way the real files are laid out.
struct file_builder {
    std::vector<uint8_t> bytes;

    explicit file_builder(uint32_t count) { u32(VECTOR_FILE_MAGIC), u32(count); }
    void u8(uint8_t v) { bytes.push_back(v); }
    void u16(uint16_t v) { u8(uint8_t(v)), u8(uint8_t(v >> 8)); }
    void u32(uint32_t v) { u16(uint16_t(v)), u16(uint16_t(v >> 16)); }
    void text(const std::string& t) { bytes.insert(bytes.end(), t.begin(), t.end()); }
    // A block is its size (known once the body is written), its magic, then the body.
    template <class Body> void block(uint32_t magic, Body body) {
        const size_t at = bytes.size();
        u32(0), u32(magic), body();
        for (int i = 0; i < 4; ++i) bytes[at + i] = uint8_t((bytes.size() - at) >> (8 * i));
    }
    void state(const vector_state& s) {
        block(VECTOR_STATE_MAGIC, [&] {
            for (uint32_t r : s.regs) u32(r);
            for (uint32_t p : s.prefetch) u32(p);
            u32(uint32_t(s.memory.size()));
            for (const vector_word& w : s.memory) u32(w.address), u16(w.value);
        });
    }
    void add_case(const vector_case& c, uint8_t bus_kind) {
        block(VECTOR_CASE_MAGIC, [&] {
            block(VECTOR_NAME_MAGIC, [&] { u32(uint32_t(c.name.size())), text(c.name); });
            state(c.initial), state(c.final);
            block(VECTOR_BUS_MAGIC, [&] {
                u32(8), u32(2), u8(BUS_IDLE), u32(4);  // 8 cycles: idle for 4, then an access of bus_kind
                u8(bus_kind), u32(4), u32(6), u32(0x1000), u32(0x4E71), u32(1), u32(1);
            });
        });
    }
};

vector_case sample_case(const char* name, uint16_t opcode) {
    vector_case c{name, {}, {}, false};
    for (int i = 0; i < VR_COUNT; ++i) c.initial.regs[i] = 0x11111111u * uint32_t(i % 15 + 1);
    c.initial.regs[VR_SR] = 0x2700, c.initial.regs[VR_SSP] = 0x2000, c.initial.regs[VR_PC] = 0x1004;
    c.initial.prefetch[0] = opcode, c.initial.prefetch[1] = 0x4E71;
    c.initial.memory = {{0x1000, opcode}, {0x1002, 0x4E71}};
    c.final = c.initial;
    c.final.regs[VR_PC] = 0x1006, c.final.prefetch[0] = 0x4E71;
    return c;
}

observed_state observe_expected(const vector_case& c) {
    observed_state got{};
    std::memcpy(got.regs, c.final.regs, sizeof got.regs);
    for (const vector_word& w : c.final.memory) got.memory.push_back(w.value);
    return got;
}

// How each field is read is checked by the conformance run over the real vector files; here,
// what a file of hand-built cases yields, whole or cut short.
TEST(M68kVectorFile, WholeCasesAreReadBadOnesSkippedAndCutFilesNeverOverRead) {
    file_builder f(3);
    f.add_case(sample_case("000 NOP 4e71", 0x4E71), 2);
    const size_t first_case_end = f.bytes.size();
    vector_case odd = sample_case("001 bad address", 0x4E71);
    odd.final.memory.push_back({0x1235, 0});
    f.add_case(odd, 2);
    f.add_case(sample_case("002 MOVE.w (A0), D1 3210", 0x3210), BUS_READ_ADDRESS_ERROR);

    vector_file file;
    ASSERT_TRUE(parse_vector_file(f.bytes.data(), f.bytes.size(), file));
    EXPECT_TRUE(file.fatal.empty());
    ASSERT_EQ(file.problems.size(), 1u);
    EXPECT_NE(file.problems[0].find("memory address out of range"), std::string::npos);
    ASSERT_EQ(file.cases.size(), 2u);
    EXPECT_EQ(file.cases[0].name, "000 NOP 4e71");
    EXPECT_EQ(file.cases[0].final.regs[VR_PC], 0x1006u);
    EXPECT_FALSE(file.cases[0].address_error);
    EXPECT_EQ(file.cases[1].name, "002 MOVE.w (A0), D1 3210");
    EXPECT_TRUE(file.cases[1].address_error);

    // Every cut point: never a crash or an over-read (the sanitizer build watches), never a case
    // that was not complete, and always a complaint.
    for (size_t cut = 0; cut < f.bytes.size(); ++cut) {
        std::vector<uint8_t> part(f.bytes.begin(), f.bytes.begin() + cut);
        vector_file cut_file;
        parse_vector_file(part.data(), part.size(), cut_file);
        EXPECT_LE(cut_file.cases.size(), cut >= first_case_end ? 1u : 0u) << "cut at " << cut;
        EXPECT_FALSE(cut_file.fatal.empty() && cut_file.problems.empty()) << "cut at " << cut;
    }
    f.bytes[0] ^= 0xFF;
    EXPECT_FALSE(parse_vector_file(f.bytes.data(), f.bytes.size(), file = {}));
    EXPECT_EQ(file.fatal, "bad file magic");
}

TEST(M68kCaseCheck, ExactMatchPassesAndDivideOverflowForgivesOnlyNAndZ) {
    vector_case c = sample_case("DIVU D1, D0 80c1", 0x80C1);
    c.final.regs[VR_SR] = 0x2700 | 0x0A;  // the real chip: N and V
    c.final.memory.push_back({0x3000, 0xBEEF});
    observed_state got = observe_expected(c);
    EXPECT_EQ(check_case(c, got).outcome, verdict::passed);
    got.memory[2] = 0xBEEE;
    check_result r = check_case(c, got);
    EXPECT_EQ(r.outcome, verdict::failed);
    ASSERT_EQ(r.differences.size(), 1u);
    EXPECT_EQ(r.differences[0].what, "mem 0x003000");

    got = observe_expected(c);
    got.regs[VR_SR] = 0x2700 | 0x02;  // this machine: V only
    r = check_case(c, got);
    EXPECT_EQ(r.outcome, verdict::masked);
    EXPECT_EQ(r.reasons, unsigned(MASK_DIV_OVERFLOW_FLAGS));
    got.regs[VR_SR] = 0x2700 | 0x0B;  // C is defined on both: still a fault
    EXPECT_EQ(check_case(c, got).outcome, verdict::failed);
    // The same difference on an instruction without the exemption is a fault.
    c.initial.prefetch[0] = 0xC0C1;  // MULU
    got.regs[VR_SR] = 0x2700 | 0x02;
    EXPECT_EQ(check_case(c, got).outcome, verdict::failed);
}

TEST(M68kCaseCheck, TraceBitKeptOnlyWhenTheInstructionTrapped) {
    vector_case trap = sample_case("TRAP #1 4e41", 0x4E41);
    trap.initial.regs[VR_SR] = 0xA700, trap.final.regs[VR_SR] = 0x2700;  // the real chip clears T
    trap.final.regs[VR_SSP] = trap.initial.regs[VR_SSP] - 6, trap.final.regs[VR_PC] = 0x5004;
    trap.final.memory.insert(trap.final.memory.end(), {{0x84, 0x0000}, {0x86, 0x5000}});  // vector 33 -> 0x5000
    observed_state got = observe_expected(trap);
    got.regs[VR_SR] = 0xA700;
    EXPECT_EQ(check_case(trap, got).outcome, verdict::masked);

    // TRAP #2 would have gone through another vector: the real chip did not take this one.
    trap.initial.prefetch[0] = 0x4E42;
    EXPECT_EQ(check_case(trap, got).outcome, verdict::failed);
    // LINK A7,#-2 moves SSP by 6 too, but enters no exception: T must match.
    trap.initial.prefetch[0] = 0x4E57;
    EXPECT_EQ(check_case(trap, got).outcome, verdict::failed);
}

}  // namespace
