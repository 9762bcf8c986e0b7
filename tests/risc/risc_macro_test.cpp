// The assembler macros of cmake/risc.inc, run on snippets: what a program observes in the
// assembled image (run addresses, storage inside the 68000 program, word order, aliases) and
// the mistakes the macros refuse. The encoding of every instruction form is checked against the
// disassembler by the table test.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "support/temp_files.h"

namespace {

struct assembly {
    bool ok;
    std::vector<uint16_t> words;  // the image as big-endian words
    std::string messages;
};

std::string run(const std::string& command) {
    std::string output;
    if (FILE* pipe = popen((command + " 2>&1").c_str(), "r")) {
        char buffer[512];
        while (size_t n = std::fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, n);
        if (pclose(pipe) != 0) output += "\n(failed)";
    }
    return output;
}

assembly assemble(const std::string& body) {
    const auto dir = test_support::scratch_dir();
    const std::string source = test_support::write_file("snippet.s", {});
    {
        FILE* out = std::fopen(source.c_str(), "w");
        std::fprintf(out, "        .include \"risc.inc\"\n%s\n", body.c_str());
        std::fclose(out);
    }
    const std::string object = (dir / "snippet.o").string(), image = (dir / "snippet.bin").string();
    assembly result{};
    result.messages = run(std::string(VEMO_M68K_AS) + " -m68000 -I " + VEMO_RISC_INC_DIR + " -o " + object + " " + source);
    result.ok = result.messages.find("(failed)") == std::string::npos;
    if (!result.ok) return result;
    result.messages += run(std::string(VEMO_M68K_OBJCOPY) + " -O binary " + object + " " + image);
    const std::vector<uint8_t> bytes = test_support::read_file(image);
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) result.words.push_back(static_cast<uint16_t>(bytes[i] << 8 | bytes[i + 1]));
    return result;
}

using words = std::vector<uint16_t>;

TEST(RiscMacros, BlockIsStoredInTheProgramAndLabelsHoldRunAddresses) {
    const assembly a = assemble(R"(
        move.l  #entry,%d0              | a 68000 instruction naming a GPU label
        risc_begin gpu, 0xF03100
entry:  movei   #data,r14               | a later label, low word first
        jr      back2                   | no condition: always
        nop
back2:  jr      back2                   | d = -1
        jump    (r14)
        risc_align 8
data:   dc.l    0x12345678
        dc.w    0xABCD
        risc_end
        nop                             | the 68000's nop again
)");
    ASSERT_TRUE(a.ok) << a.messages;
    EXPECT_EQ(a.words, (words{0x203C, 0x00F0, 0x3100,                 // move.l #0xF03100,d0
                              0x980E, 0x3110, 0x00F0,                 // movei #0xF03110,r14
                              0xD420, 0xE400, 0xD7E0, 0xD1C0,         // jr t,+1; nop; jr t,-1; jump t,(r14)
                              0xE400,                                 // padding to 0xF03110
                              0x1234, 0x5678, 0xABCD, 0x4E71}));
}

TEST(RiscMacros, AliasesSpellingsAndTheDspBlock) {
    const assembly a = assemble(R"(
        .equ    count, r5
        risc_begin dsp, 0xF1B000
        addq    #4,count
        add     R1,R2
        jr      nz,0xF1B000
        jr      c,0xF1B000
        jr      nn,0xF1B000
        cmpq    #-1,r0
        load    (r15),r3
        store   r3,(r14+r2)
        addqmod #1,r7
        move    PC,r9
        dc.w    1,2,3,4,5
        risc_end
)");
    ASSERT_TRUE(a.ok) << a.messages;
    EXPECT_EQ(a.words, (words{0x0885, 0x0022, 0xD7A1, 0xD788, 0xD774, 0x7FE0, 0xA5E3, 0xF043, 0xFC27, 0xCC09, 1, 2, 3, 4, 5}));
}

struct refused {
    const char* body;
    const char* message;
};

TEST(RiscMacros, MistakesAreRefusedWithAMessage) {
    const refused cases[] = {
        {"risc_begin gpu, 0xF03000\n jr ne,far\n .rept 16\n nop\n .endr\nfar: nop\n risc_end", "out of range"},  // 16
        {"risc_begin gpu, 0xF03000\nback: .rept 16\n nop\n .endr\n jr ne,back\n risc_end", "out of range"},  // -17
        {"risc_begin gpu, 0xF03000\n addq #0,r1\n risc_end", "quick value 0 is not 1-32"},
        {"risc_begin gpu, 0xF03000\n subq #33,r1\n risc_end", "quick value 33 is not 1-32"},
        {"risc_begin gpu, 0xF03000\n cmpq #16,r1\n risc_end", "not -16..15"},
        {"risc_begin gpu, 0xF03000\n shlq #0,r1\n risc_end", "shift count 0 is not 1-32"},
        {"risc_begin gpu, 0xF03000\n moveq #32,r1\n risc_end", "value 32 is not 0-31"},
        {"risc_begin gpu, 0xF03000\n addq 4,r1\n risc_end", "an immediate starts with #"},
        {"risc_begin gpu, 0xF03000\n add 5,r1\n risc_end", "5 is not a register"},
        {"risc_begin gpu, 0xF03000\n add r1,r2,r3\n risc_end", "too many operands"},
        {"risc_begin gpu, 0xF03000\n add r1,r2,r3,r4\n risc_end", "too many positional arguments"},
        {"risc_begin gpu, 0xF03000\n load (r3+1),r1\n risc_end", "only r14 and r15 take a displacement"},
        {"risc_begin gpu, 0xF03000\n load (r14+33),r1\n risc_end", "only r14 and r15 take a displacement"},
        {"risc_begin gpu, 0xF03000\n loadb (r14+1),r1\n risc_end", "only load and store take"},
        {"risc_begin gpu, 0xF03000\n jr 32,0xF03000\n risc_end", "condition 32 is not a name or 0-31"},
        {"risc_begin gpu, 0xF03000\n sat16s r1\n risc_end", "sat16s is a DSP instruction"},
        {"risc_begin dsp, 0xF1B000\n pack r1\n risc_end", "pack is a GPU instruction"},
        {"risc_begin dsp, 0xF1B000\n storep r1,(r2)\n risc_end", "storep is a GPU instruction"},
        {"risc_begin cpu, 0xF03000\n risc_end", "the processor is gpu or dsp"},
        {"risc_begin gpu, 0xF03001\n risc_end", "even address"},
        {"risc_end", "risc_end without risc_begin"},
        {"risc_begin gpu, 0xF03000\n risc_begin gpu, 0xF03000\n risc_end", "risc_begin inside a block"},
    };
    for (const refused& c : cases) {
        const assembly a = assemble(c.body);
        EXPECT_FALSE(a.ok) << c.body;
        EXPECT_NE(a.messages.find(c.message), std::string::npos) << c.body << "\n" << a.messages;
    }
}

TEST(RiscMacros, RangeLimitsThemselvesAssemble) {
    const assembly a = assemble(R"(
        risc_begin gpu, 0xF03000
back:   .rept   15
        nop
        .endr
        jr      back                    | d = -16
        jr      ahead                   | d = 15
        .rept   15
        nop
        .endr
ahead:  addq    #32,r1
        cmpq    #15,r1
        cmpq    #-16,r1
        shlq    #32,r1
        load    (r14+32),r1
        risc_end
)");
    ASSERT_TRUE(a.ok) << a.messages;
    ASSERT_EQ(a.words.size(), 37u);
    EXPECT_EQ(a.words[15], 0xD600);
    EXPECT_EQ(a.words[16], 0xD5E0);
    EXPECT_EQ(words(a.words.begin() + 32, a.words.end()), (words{0x0801, 0x7DE1, 0x7E01, 0x6001, 0xAC01}));
}

}  // namespace
