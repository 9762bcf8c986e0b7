// Judging one executed test case: the state the core left against the real processor's final
// state, with the few bits where this machine's 68000 is defined differently forgiven.
//
// A case passes when everything matches exactly, counts as masked when it matches only because
// of such a forgiven difference, and fails otherwise.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "vector_file.h"

// Why bits are forgiven; one bit per reason.
enum mask_reason : unsigned {
    MASK_EXCEPTION_KEEPS_T = 1u << 0,
    MASK_DIV_OVERFLOW_FLAGS = 1u << 1,
    MASK_DIV_ZERO_FLAGS = 1u << 2,
    MASK_CHK_FLAGS = 1u << 3,
    MASK_BCD_FLAGS = 1u << 4,
    MASK_MOVEM_LOADED_AN = 1u << 5,
};
constexpr int MASK_REASON_COUNT = 6;

// Short text for reason bit number i (0 .. MASK_REASON_COUNT - 1).
const char* mask_reason_text(int i);

// What the core left behind, in the vectors' terms: regs in file order with PC already advanced
// by the prefetch (core pc + 4), and memory[i] the word at case.final.memory[i].address.
struct observed_state {
    uint32_t regs[VR_COUNT];
    std::vector<uint16_t> memory;
};

enum class verdict { passed, masked, failed };

struct difference {
    std::string what;       // "D4", "SR", "mem 0x001234"
    uint32_t expected;
    uint32_t got;
    uint32_t forgiven;      // bits of the difference that a mask forgives
    unsigned reasons;       // mask reasons behind `forgiven`
};

struct check_result {
    verdict outcome = verdict::passed;
    unsigned reasons = 0;  // for masked cases: the reasons that were needed
    std::vector<difference> differences;
};

check_result check_case(const vector_case& c, const observed_state& got);
