// The disassembler against the assembler macros: every line of programs/disasm_table.s, assembled
// at build time, must read back exactly as written; and words whose text follows from the
// instruction set alone (immediate encodings, movei's word order, jr's reach).
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "risc/risc_disasm.h"
#include "support/temp_files.h"

namespace {

std::string disassemble(risc_processor processor, uint32_t pc, std::array<uint16_t, 3> words, int* length = nullptr) {
    char text[64];
    const int words_used = risc_disassemble(processor, pc, words.data(), text, sizeof text);
    if (length) *length = words_used;
    return text;
}

// A source line without its comment and surrounding blanks.
std::string instruction_text(const std::string& line) {
    std::string text = line.substr(0, line.find('|'));
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string::npos) return "";
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

TEST(RiscDisassembler, EveryAssembledTableLineReadsBackAsWritten) {
    const std::vector<uint8_t> image = test_support::read_file(std::string(VEMO_PROGRAM_DIR) + "/risc_disasm_table.bin");
    std::ifstream source(std::string(VEMO_RISC_PROGRAM_SOURCES) + "/disasm_table.s");
    ASSERT_TRUE(source) << "table source missing";
    ASSERT_FALSE(image.empty()) << "assembled table missing";

    std::array<std::array<bool, 64>, 2> seen{};
    risc_processor processor = RISC_GPU;
    uint32_t pc = 0;
    size_t offset = 0;
    bool in_block = false;
    for (std::string line; std::getline(source, line);) {
        const std::string text = instruction_text(line);
        if (text.empty() || text[0] == '.') continue;
        if (text.rfind("risc_begin", 0) == 0) {
            processor = text.find("dsp") != std::string::npos ? RISC_DSP : RISC_GPU;
            pc = static_cast<uint32_t>(std::stoul(text.substr(text.find(',') + 1), nullptr, 16));
            in_block = true;
            continue;
        }
        if (text == "risc_end") {
            in_block = false;
            continue;
        }
        ASSERT_TRUE(in_block) << text;
        ASSERT_LE(offset + 2, image.size()) << "image ends before " << text;
        std::array<uint16_t, 3> words{};
        for (size_t i = 0; i < 3 && offset + 2 * i + 1 < image.size(); ++i)
            words[i] = static_cast<uint16_t>(image[offset + 2 * i] << 8 | image[offset + 2 * i + 1]);
        int length = 0;
        EXPECT_EQ(disassemble(processor, pc, words, &length), text) << "word " << std::hex << words[0] << " at " << pc;
        seen[processor][risc_opcode_of(words[0])] = true;
        offset += 2 * static_cast<size_t>(length);
        pc += 2 * static_cast<uint32_t>(length);
    }
    EXPECT_EQ(offset, image.size()) << "the image holds words no line accounts for";
    for (int p = 0; p < 2; ++p)
        for (unsigned op = 0; op < 64; ++op) EXPECT_TRUE(seen[p][op]) << (p ? "DSP" : "GPU") << " opcode " << op << " not in the table";
}

struct known_word {
    risc_processor processor;
    uint32_t pc;
    std::array<uint16_t, 3> words;
    const char* text;
    int length;
};

// Words built by hand from the instruction format (opcode << 10 | n << 5 | d).
TEST(RiscDisassembler, HandBuiltWordsShowWhatTheProcessorDoes) {
    const known_word cases[] = {
        {RISC_GPU, 0xF03000, {38u << 10 | 3, 0x5678, 0x0034}, "movei #0x345678,r3", 3},  // low word first
        {RISC_GPU, 0xF03010, {53u << 10 | 31u << 5 | 0}, "jr t,0xF03010", 1},               // d = -1: itself
        {RISC_GPU, 0xF03010, {53u << 10 | 16u << 5 | 1}, "jr ne,0xF02FF2", 1},              // d = -16
        {RISC_GPU, 0xF03010, {53u << 10 | 15u << 5 | 2}, "jr eq,0xF03030", 1},              // d = 15
        {RISC_GPU, 0x000010, {53u << 10 | 20u << 5 | 8}, "jr cs,0xFFFFFFFA", 1},            // wraps below 0
        {RISC_GPU, 0, {52u << 10 | 7u << 5 | 24}, "jump mi,(r7)", 1},
        {RISC_GPU, 0, {52u << 10 | 7u << 5 | 12}, "jump 12,(r7)", 1},  // asks for C set and clear
        {RISC_GPU, 0, {2u << 10 | 0u << 5 | 4}, "addq #32,r4", 1},
        {RISC_GPU, 0, {31u << 10 | 16u << 5 | 4}, "cmpq #-16,r4", 1},
        {RISC_GPU, 0, {24u << 10 | 1u << 5 | 4}, "shlq #31,r4", 1},
        {RISC_GPU, 0, {24u << 10 | 0u << 5 | 4}, "shlq #32,r4", 1},
        {RISC_GPU, 0, {35u << 10 | 0u << 5 | 4}, "moveq #0,r4", 1},
        {RISC_GPU, 0, {43u << 10 | 0u << 5 | 4}, "load (r14+32),r4", 1},
        {RISC_GPU, 0, {50u << 10 | 3u << 5 | 4}, "store r4,(r15+3)", 1},
        {RISC_GPU, 0, {45u << 10 | 3u << 5 | 4}, "storeb r4,(r3)", 1},
        {RISC_GPU, 0, {63u << 10 | 5u << 5 | 4}, "unpack r4", 1},  // any n but 0 unpacks
        {RISC_DSP, 0, {63u << 10 | 0u << 5 | 4}, "addqmod #32,r4", 1},
        {RISC_DSP, 0, {48u << 10 | 3u << 5 | 4}, "dc.w 0xC064", 1},  // not executed by the DSP
        {RISC_DSP, 0, {42u << 10 | 4}, "sat32s r4", 1},
        {RISC_GPU, 0, {42u << 10 | 3u << 5 | 4}, "loadp (r3),r4", 1},
    };
    for (const known_word& c : cases) {
        int length = 0;
        EXPECT_EQ(disassemble(c.processor, c.pc, c.words, &length), c.text);
        EXPECT_EQ(length, c.length) << c.text;
    }
}

TEST(RiscDisassembler, TextIsCutToTheBufferAndAlwaysTerminated) {
    const uint16_t movei[3] = {38u << 10 | 3, 0x5678, 0x1234};
    char text[8];
    std::memset(text, 'x', sizeof text);
    EXPECT_EQ(risc_disassemble(RISC_GPU, 0, movei, text, 4), 3);
    EXPECT_STREQ(text, "mov");
    EXPECT_EQ(text[4], 'x');
    EXPECT_EQ(risc_disassemble(RISC_GPU, 0, movei, text, 0), 3);  // length only, nothing written
    EXPECT_EQ(text[0], 'm');
}

}  // namespace
