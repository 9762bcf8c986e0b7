// Reader for the 68000 single-instruction test vectors (*.json.bin): each case gives the whole
// processor state and the memory words an instruction touches, before and after that one
// instruction.
//
// Every read of the file is bounds-checked: a truncated file, a bad magic number or a size that
// does not fit makes the reader record a problem and skip the case (or the rest of the file when
// the case boundary itself is lost), never read outside the buffer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

constexpr uint32_t VECTOR_FILE_MAGIC = 0x1A3F5D71;
constexpr uint32_t VECTOR_CASE_MAGIC = 0xABC12367;
constexpr uint32_t VECTOR_NAME_MAGIC = 0x89ABCDEF;
constexpr uint32_t VECTOR_STATE_MAGIC = 0x01234567;
constexpr uint32_t VECTOR_BUS_MAGIC = 0x456789AB;

// Bus activity kinds of the real processor.
constexpr uint8_t BUS_IDLE = 0;
constexpr uint8_t BUS_READ_ADDRESS_ERROR = 4;
constexpr uint8_t BUS_WRITE_ADDRESS_ERROR = 5;
constexpr uint8_t BUS_LAST_KIND = 5;

// Register slots in file order.
enum vector_reg : int {
    VR_D0 = 0,
    VR_A0 = 8,
    VR_USP = 15,
    VR_SSP = 16,
    VR_SR = 17,
    VR_PC = 18,
    VR_COUNT = 19,
};

struct vector_word {
    uint32_t address;  // even, 24-bit
    uint16_t value;    // big-endian word at address
};

struct vector_state {
    uint32_t regs[VR_COUNT];  // D0-D7, A0-A6, USP, SSP, SR, PC (PC includes the prefetch: +4)
    uint32_t prefetch[2];
    std::vector<vector_word> memory;
};

struct vector_case {
    std::string name;
    vector_state initial;
    vector_state final;
    bool address_error;  // the real processor ended in an address error
};

struct vector_file {
    uint32_t declared_count = 0;
    std::vector<vector_case> cases;
    // One line per case that could not be read; the case is skipped.
    std::vector<std::string> problems;
    // Set when reading had to stop before the declared count (or the file is unusable).
    std::string fatal;
};

// Parses a whole file image. Returns false when the file is unusable from the start (bad magic,
// shorter than its header); otherwise true, with malformed cases listed in out.problems and a
// lost case boundary in out.fatal.
bool parse_vector_file(const uint8_t* data, size_t size, vector_file& out);

// Reads and parses a file from disk; a read failure is reported in out.fatal.
bool load_vector_file(const std::string& path, vector_file& out);
