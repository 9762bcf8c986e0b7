// The CD-ROM unit's registers: answers the probes of start-up code, logs everything else.
#include "core/cdrom.h"

#include "core/host.h"

namespace {

constexpr uint32_t DS_DATA = 0xDFFF0A;     // data word, echoed back
constexpr uint32_t BUTCH = 0xDFFF00;       // interrupt control: bit 13 flickers
constexpr uint32_t DSCNTRL = 0xDFFF04;
constexpr uint32_t I2CNTRL = 0xDFFF10;
constexpr uint32_t SBCNTRL = 0xDFFF2C;

// The one probe value that start-up code writes here reads back with bit 9 set; any other
// value is echoed unchanged.
constexpr uint16_t DS_DATA_PROBE = 0x150A;
constexpr uint16_t DS_DATA_PROBE_ANSWER = 0x170A;

uint16_t data_word;

// The flickering status bit comes from a generator of the unit's own, restarted with the
// machine, rather than from the process's shared one.
uint32_t flicker_state = 1;

uint32_t next_flicker_bit() {
    flicker_state = flicker_state * 1103515245u + 12345u;
    return (flicker_state >> 16) & 1;
}

}  // namespace

void cdrom_reset() {
    data_word = 0;
    flicker_state = 1;
}

uint16_t cdrom_read16(uint32_t address) {
    if (address == DS_DATA) return data_word == DS_DATA_PROBE ? DS_DATA_PROBE_ANSWER : data_word;
    log_printf("CD-ROM: Read16 from %08X\n", address);
    return 1;
}

uint32_t cdrom_read32(uint32_t address) {
    switch (address) {
        case BUTCH:
            // Code polling this register sees its status bit change from read to read.
            return next_flicker_bit() << 13;
        case DSCNTRL:
            return 0;
        case SBCNTRL:
            return 1;
        default:
            log_printf("CD-ROM: Read32 from %08X\n", address);
            return 1;
    }
}

void cdrom_write16(uint32_t address, uint16_t value) {
    if (address == DS_DATA) {
        data_word = value;
        return;
    }
    log_printf("CD-ROM: Write16 %04X to %08X\n", value, address);
}

void cdrom_write32(uint32_t address, uint32_t value) {
    switch (address) {
        case BUTCH:
        case DSCNTRL:
        case I2CNTRL:
        case SBCNTRL:
            return;
        default:
            log_printf("CD-ROM: Write32 %08X to %08X\n", value, address);
            return;
    }
}
