// The 68000 disassembler: the cases of disasm_cases.txt assembled by the m68k cross assembler,
// every opcode word against the dispatch table, and instructions whose words run short.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "m68k/m68k_disasm.h"
#include "m68k/m68k_internal.h"

namespace {

constexpr uint32_t ADDRESS = 0x4000;  // where the cases' words are taken to lie
constexpr size_t SLOT_BYTES = 16;

struct disasm_case {
    std::string source, expected;
};

// The lines of disasm_cases.txt as the build assembled them: comments and blank lines skipped,
// the source before "=>", the expected text after it.
std::string trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string::npos) return "";
    return text.substr(first, text.find_last_not_of(" \t") + 1 - first);
}

std::vector<disasm_case> read_cases() {
    std::ifstream file(VEMO_DISASM_CASES);
    std::vector<disasm_case> cases;
    for (std::string line; std::getline(file, line);) {
        if (trimmed(line).empty() || trimmed(line)[0] == '#') continue;
        const size_t arrow = line.find("=>");
        if (arrow == std::string::npos) ADD_FAILURE() << "not a case: " << line;
        else cases.push_back({trimmed(line.substr(0, arrow)), trimmed(line.substr(arrow + 2))});
    }
    return cases;
}

std::string disassemble(const std::vector<uint16_t>& words, int& length, uint32_t address = ADDRESS) {
    char text[128];
    length = m68k_disassemble(address, words.data(), static_cast<int>(words.size()), text, sizeof text);
    return text;
}

TEST(Disassembler, EveryCaseTheCrossAssemblerAssembledReadsBackAsWritten) {
    const std::vector<disasm_case> cases = read_cases();
    std::ifstream file(std::string(VEMO_PROGRAM_DIR) + "/disasm_cases.bin", std::ios::binary);
    std::vector<uint8_t> image{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    ASSERT_GT(cases.size(), 100u);
    ASSERT_GT(image.size(), (cases.size() - 1) * SLOT_BYTES);
    image.resize(cases.size() * SLOT_BYTES);  // the last slot's padding is not in the file
    auto word_at = [&](size_t at) { return static_cast<uint16_t>(image[at] << 8 | image[at + 1]); };
    for (size_t i = 0; i < cases.size(); ++i) {
        const size_t slot = i * SLOT_BYTES;
        std::vector<uint16_t> words;
        for (int w = 0; w < M68K_MAX_INSTRUCTION_WORDS; ++w) words.push_back(word_at(slot + 2 + 2 * w));
        int length = 0;
        EXPECT_EQ(disassemble(words, length), cases[i].expected) << cases[i].source;
        EXPECT_EQ(2 * length, word_at(slot)) << cases[i].source;
    }
}

// The processor executes a word as an instruction exactly when the disassembler shows one: the
// two decode the same opcode map with the same addressing-mode rules.
TEST(Disassembler, ShowsAnInstructionForExactlyTheWordsTheProcessorExecutes) {
    ASSERT_EQ(m68k_init(), 0);
    int mismatches = 0;
    for (uint32_t op = 0; op <= 0xFFFF && mismatches < 10; ++op) {
        int length = 0;
        const std::string text = disassemble({static_cast<uint16_t>(op), 0, 0, 0, 0}, length);
        const m68k_handler h = m68k_dispatch_table[op];
        const bool not_executed = h == m68k_op_illegal || h == m68k_op_line_a || h == m68k_op_line_f;
        const bool shown_as_data = text.rfind("dc.w ", 0) == 0;
        if (shown_as_data != not_executed) {
            ++mismatches;
            ADD_FAILURE() << std::hex << op << ": " << text;
        }
    }
}

TEST(Disassembler, EdgesOfTheWordsGivenAndOfTheEncodings) {
    const struct {
        std::vector<uint16_t> words;
        std::string text;
        int length;
    } cases[] = {
        {{0x203C, 0x1234}, "dc.w $203C", 1},                    // move.l #imm,d0 missing its low word
        {{0x33C0, 0x00F0}, "dc.w $33C0", 1},                    // move.w d0,abs.l cut short
        {{0x4E71, 0x4E71}, "nop", 1},                           // only the first instruction
        {{0x60FF}, "bra.s $4001", 1},                           // 0xFF is a displacement here
        {{0x6000, 0x7FFE}, "bra.w $C000", 2},                   // largest forward branch
        {{0x4CD0, 0x0000}, "movem.l (a0),#0", 2},               // an empty list
        {{0x48A7, 0x8001}, "movem.w d0/a7,-(a7)", 2},           // -(An) lists are reversed
        {{0x3030, 0x1F02}, "move.w 2(a0,d1.l),d0", 2},          // brief word bits 10-8 ignored
        {{0x0800, 0xFF03}, "btst #3,d0", 2},                    // bit number: its low byte
    };
    for (const auto& c : cases) {
        int length = 0;
        EXPECT_EQ(disassemble(c.words, length), c.text) << c.text;
        EXPECT_EQ(length, c.length) << c.text;
    }
    // No words: nothing. A short text buffer: cut and terminated.
    EXPECT_EQ(m68k_disassemble(ADDRESS, nullptr, 0, nullptr, 0), 0);
    const uint16_t words[] = {0x2039, 0x00F0, 0x0028};
    char small[8];
    EXPECT_EQ(m68k_disassemble(ADDRESS, words, 3, small, sizeof small), 3);
    EXPECT_STREQ(small, "move.l ");
    int length = 0;
    EXPECT_EQ(disassemble({0x6100, 0x0000}, length, 0xFFFFFFFE), "bsr.w $0");  // wraps at 2^32
}

}  // namespace
