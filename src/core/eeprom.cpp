// The cartridge's serial EEPROM: a nine-bit command (start bit, two-bit opcode, six-bit word
// address, most significant bit first) followed by sixteen data bits for reads and writes.
#include "core/eeprom.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "core/host.h"
#include "core/memory.h"

namespace {

enum eeprom_mode : int32_t { MODE_COMMAND = 0, MODE_READ = 1, MODE_WRITE = 2 };

constexpr uint32_t COMMAND_BITS = 9;
constexpr uint32_t WORD_BITS = 16;
constexpr uint32_t EEPROM_WORDS = EEPROM_SIZE / 2;

// Decoded command: the start bit together with the opcode.
constexpr uint32_t OP_EXTENDED = 4;  // start, 00: the sub-command sits in the address's top bits
constexpr uint32_t OP_WRITE = 5;     // start, 01
constexpr uint32_t OP_READ = 6;      // start, 10
constexpr uint32_t SUB_WRITE_DISABLE = 0;
constexpr uint32_t SUB_WRITE_ENABLE = 3;

eeprom_mode mode = MODE_COMMAND;
// Unsigned so that bits arriving after an unrecognised command keep counting (and wrap their
// shift modulo 32) without overflow.
uint32_t bit_counter;
uint32_t command;
uint32_t word_address;

// The image exists only between vemo_init and vemo_shutdown; outside that the serial lines
// still work but there are no words to hold.
uint16_t read_word(uint32_t n) { return eeprom_image ? eeprom_image[n % EEPROM_WORDS] : 0xFFFF; }

void write_word(uint32_t n, uint16_t value) {
    if (eeprom_image) eeprom_image[n % EEPROM_WORDS] = value;
}

void back_to_idle() {
    mode = MODE_COMMAND;
    command = 0;
    bit_counter = 0;
}

// Sixteen read or write clocks end the transfer; the command register keeps its bits.
void count_data_bit() {
    if (++bit_counter == WORD_BITS) {
        mode = MODE_COMMAND;
        bit_counter = 0;
    }
}

void decode_command() {
    switch ((command >> 6) & 7) {
        case OP_EXTENDED:
            switch ((command >> 4) & 3) {
                case SUB_WRITE_ENABLE:
                    break;  // writes are never gated
                case SUB_WRITE_DISABLE:
                    eeprom_save();
                    break;
                default:  // write all, erase all
                    log_printf("Unknown eeprom command %04X\n", command);
                    break;
            }
            back_to_idle();
            return;
        case OP_WRITE:
            word_address = command & 0x3F;
            write_word(word_address, 0);
            bit_counter = 0;
            mode = MODE_WRITE;
            return;
        case OP_READ:
            word_address = command & 0x3F;
            bit_counter = 0;
            mode = MODE_READ;
            return;
        default:
            // No start bit, or erase: the bits keep collecting until a reset.
            log_printf("Unknown eeprom command %04X\n", command);
            return;
    }
}

// Writes the 128 bytes to path, least-significant byte of each word first. false on failure,
// with the message logged; a partly written file is removed.
bool write_image(const char* path) {
    uint8_t bytes[EEPROM_SIZE];
    for (uint32_t n = 0; n < EEPROM_WORDS; ++n) {
        const uint16_t word = read_word(n);
        bytes[2 * n] = static_cast<uint8_t>(word);
        bytes[2 * n + 1] = static_cast<uint8_t>(word >> 8);
    }
    FILE* file = std::fopen(path, "w+b");
    if (!file) {
        log_printf("Couldn't save eeprom file %s: cannot create %s (%s).\n", eeprom_file_path, path,
                   std::strerror(errno));
        return false;
    }
    const bool written = std::fwrite(bytes, 2, EEPROM_WORDS, file) == EEPROM_WORDS &&
                         std::fflush(file) == 0 && !std::ferror(file);
    const bool closed = std::fclose(file) == 0;
    if (!written || !closed) {
        log_printf("Couldn't save eeprom file %s: writing %s failed.\n", eeprom_file_path, path);
        std::remove(path);
        return false;
    }
    return true;
}

}  // namespace

int eeprom_reset() {
    back_to_idle();
    return 1;
}

void eeprom_write_bit(uint16_t value) {
    const uint32_t bit = value & 1;
    switch (mode) {
        case MODE_COMMAND:
            command |= bit << ((8u - bit_counter) & 31u);
            if (++bit_counter >= COMMAND_BITS) decode_command();
            return;
        case MODE_WRITE:
            write_word(word_address,
                       static_cast<uint16_t>(read_word(word_address) | (bit << (15 - bit_counter))));
            count_data_bit();
            return;
        case MODE_READ:
            log_printf("Unknown eeprom mode: %d !\n", MODE_READ);
            return;
    }
}

int eeprom_read_bit() {
    if (mode != MODE_READ) return 1;
    const int bit = (read_word(word_address) >> (15 - bit_counter)) & 1;
    count_data_bit();
    return bit;
}

// A save must never lose the previous one: the new contents go to a file beside the target,
// which then replaces it in one rename. Until the rename succeeds the old file is untouched.
void eeprom_save() {
    if (eeprom_file_path[0] == '\0') {
        log_printf("Couldn't save eeprom file: no EEPROM file is configured.\n");
        return;
    }
    char temporary[PATH_SIZE + 8];
    std::snprintf(temporary, sizeof temporary, "%s.tmp", eeprom_file_path);
    if (!write_image(temporary)) return;
    if (std::rename(temporary, eeprom_file_path) != 0) {
        log_printf("Couldn't save eeprom file %s: %s.\n", eeprom_file_path, std::strerror(errno));
        std::remove(temporary);
    }
}
