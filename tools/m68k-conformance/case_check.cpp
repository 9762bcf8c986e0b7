#include "case_check.h"

#include <bit>
#include <cstdio>

namespace {

constexpr uint32_t SR_T = 0x8000;
constexpr uint32_t SR_S = 0x2000;
constexpr uint32_t CC_N = 0x08;
constexpr uint32_t CC_Z = 0x04;
constexpr uint32_t CC_V = 0x02;
constexpr uint32_t CC_C = 0x01;

// Bits forgiven in each register slot and in the stacked SR word, kept per reason so that a
// masked case is counted under the reasons whose bits actually differed.
struct case_masks {
    uint32_t regs[MASK_REASON_COUNT][VR_COUNT] = {};
    bool has_stacked_sr = false;
    uint32_t stacked_sr_address = 0;
    uint32_t stacked_sr[MASK_REASON_COUNT] = {};

    static int index(mask_reason reason) { return std::countr_zero(unsigned(reason)); }
    void reg(int slot, uint32_t bits, mask_reason reason) { regs[index(reason)][slot] |= bits; }
    void stacked(uint32_t address, uint16_t bits, mask_reason reason) {
        has_stacked_sr = true;
        stacked_sr_address = address & 0xFFFFFF;
        stacked_sr[index(reason)] |= bits;
    }
};

bool is_divide(uint16_t op) { return (op & 0xF0C0) == 0x80C0 && (op & 0x0038) != 0x0008; }
bool is_chk(uint16_t op) { return (op & 0xF1C0) == 0x4180; }
bool is_bcd(uint16_t op) {
    return (op & 0xF1F0) == 0xC100 || (op & 0xF1F0) == 0x8100 || (op & 0xFFC0) == 0x4800;
}
bool is_movem_postincrement_load(uint16_t op) { return (op & 0xFFB8) == 0x4C98; }

// The vector of the exception an instruction can enter on this machine (other than by
// interrupt), or 0 when it cannot trap.
uint32_t trap_vector(uint16_t op) {
    if ((op & 0xF000) == 0xA000) return 10;                   // line A
    if ((op & 0xF000) == 0xF000) return 11;                   // line F
    if ((op & 0xFFF0) == 0x4E40) return 32 + (op & 15);       // TRAP #n
    if (is_chk(op)) return 6;
    if (is_divide(op)) return 5;
    if ((op & 0xFFF0) == 0x4E60 || (op & 0xFFC0) == 0x46C0) return 8;  // MOVE USP, MOVE to SR
    switch (op) {
    case 0x4AFC: return 4;  // ILLEGAL
    case 0x4E76: return 7;  // TRAPV
    case 0x4E70:            // RESET
    case 0x4E72:            // STOP
    case 0x4E73:            // RTE
    case 0x007C:            // ORI to SR
    case 0x027C:            // ANDI to SR
    case 0x0A7C:            // EORI to SR
        return 8;
    default:
        return 0;
    }
}

// The real processor's final state shows entry through `vector`: supervisor mode, and the PC is
// the vector's target (the vector's two words are among the memory the case lists). The stack
// pointer's change is no evidence: CHK (A7)+ moves it before the frame is pushed.
bool entered_exception(const vector_case& c, uint32_t vector) {
    if (!vector || !(c.final.regs[VR_SR] & SR_S)) return false;
    int found = 0;
    uint32_t target = 0;
    for (const vector_word& w : c.final.memory) {
        if (w.address == vector * 4) target |= uint32_t(w.value) << 16, found |= 1;
        if (w.address == vector * 4 + 2) target |= w.value, found |= 2;
    }
    return found == 3 && c.final.regs[VR_PC] == target + 4;
}

case_masks masks_for(const vector_case& c) {
    case_masks m;
    const uint16_t op = uint16_t(c.initial.prefetch[0]);
    const uint32_t final_sr = c.final.regs[VR_SR];
    const bool trapped = entered_exception(c, trap_vector(op));
    const uint32_t frame = c.final.regs[VR_SSP];

    // Exception entry here sets S and keeps T; the real processor clears T.
    if (trapped) m.reg(VR_SR, SR_T, MASK_EXCEPTION_KEEPS_T);

    if (is_divide(op)) {
        if (trapped) {
            // Division by zero clears N, Z and V here (the real chip leaves them undefined);
            // they are also in the stacked SR.
            m.reg(VR_SR, CC_N | CC_Z | CC_V, MASK_DIV_ZERO_FLAGS);
            m.stacked(frame, CC_N | CC_Z | CC_V, MASK_DIV_ZERO_FLAGS);
        } else if (final_sr & CC_V) {
            // Overflow leaves N and Z clear here; the real chip leaves them undefined.
            m.reg(VR_SR, CC_N | CC_Z, MASK_DIV_OVERFLOW_FLAGS);
        }
    }
    if (is_chk(op)) {
        // CHK defines Z (register word zero), V = C = 0 and N = 0 within bounds here; on the real
        // chip those are undefined (its N is defined only when the exception is taken).
        if (trapped) {
            m.reg(VR_SR, CC_Z | CC_V | CC_C, MASK_CHK_FLAGS);
            m.stacked(frame, CC_Z | CC_V | CC_C, MASK_CHK_FLAGS);
        } else {
            m.reg(VR_SR, CC_N | CC_Z | CC_V | CC_C, MASK_CHK_FLAGS);
        }
    }
    // ABCD, SBCD and NBCD define N and V here; undefined on the real chip.
    if (is_bcd(op)) m.reg(VR_SR, CC_N | CC_V, MASK_BCD_FLAGS);

    if (is_movem_postincrement_load(op)) {
        // MOVEM (An)+ loading An: here the loaded value stays when An is the last register
        // loaded; the real chip always leaves the final address in An.
        const uint16_t list = uint16_t(c.initial.prefetch[1]);
        const int an = op & 7;
        const int bit = 8 + an;
        if (((list >> bit) & 1) && (list >> (bit + 1)) == 0) {
            const int slot = an < 7 ? VR_A0 + an : ((final_sr & SR_S) ? VR_SSP : VR_USP);
            m.reg(slot, 0xFFFFFFFF, MASK_MOVEM_LOADED_AN);
        }
    }
    return m;
}

const char* const REG_NAMES[VR_COUNT] = {"D0", "D1", "D2", "D3", "D4", "D5", "D6", "D7", "A0", "A1",
                                         "A2", "A3", "A4", "A5", "A6", "USP", "SSP", "SR", "PC"};

}  // namespace

const char* mask_reason_text(int i) {
    static const char* const texts[MASK_REASON_COUNT] = {
        "exception entry keeps the trace bit",
        "DIVU/DIVS overflow clears N and Z",
        "division by zero clears N, Z and V",
        "CHK defines Z, V, C and N within bounds",
        "ABCD/SBCD/NBCD define N and V",
        "MOVEM (An)+ keeps the value loaded into An when An is loaded last",
    };
    return i >= 0 && i < MASK_REASON_COUNT ? texts[i] : "?";
}

check_result check_case(const vector_case& c, const observed_state& got) {
    check_result result;
    const case_masks m = masks_for(c);
    bool unforgiven = false;

    // by_reason[i]: the bits that reason i forgives in this value.
    auto compare = [&](std::string what, uint32_t expected, uint32_t actual, const uint32_t* by_reason) {
        const uint32_t diff = expected ^ actual;
        if (!diff) return;
        uint32_t forgiven = 0;
        unsigned reasons = 0;
        for (int i = 0; by_reason && i < MASK_REASON_COUNT; ++i) {
            if (diff & by_reason[i]) reasons |= 1u << i;
            forgiven |= diff & by_reason[i];
        }
        result.differences.push_back({std::move(what), expected, actual, forgiven, reasons});
        if (diff & ~forgiven) unforgiven = true;
        result.reasons |= reasons;
    };

    for (int slot = 0; slot < VR_COUNT; ++slot) {
        uint32_t by_reason[MASK_REASON_COUNT];
        for (int i = 0; i < MASK_REASON_COUNT; ++i) by_reason[i] = m.regs[i][slot];
        compare(REG_NAMES[slot], c.final.regs[slot], got.regs[slot], by_reason);
    }

    for (size_t i = 0; i < c.final.memory.size(); ++i) {
        const vector_word& w = c.final.memory[i];
        const uint16_t actual = i < got.memory.size() ? got.memory[i] : uint16_t(~w.value);
        const bool stacked_sr = m.has_stacked_sr && w.address == m.stacked_sr_address;
        char what[32];
        std::snprintf(what, sizeof what, "mem 0x%06X", unsigned(w.address));
        compare(what, w.value, actual, stacked_sr ? m.stacked_sr : nullptr);
    }

    if (unforgiven) {
        result.outcome = verdict::failed;
        result.reasons = 0;
    } else if (!result.differences.empty()) {
        result.outcome = verdict::masked;
    }
    return result;
}
