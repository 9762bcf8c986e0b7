// The cartridge's serial EEPROM: a nine-bit command (start bit, two-bit opcode, six-bit word
// address, most significant bit first) followed by sixteen data bits for reads and writes.
#include "core/eeprom.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#ifdef _WIN32
#include <io.h>
#include <windows.h>
#endif

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

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

// The file a save replaces: the configured path, or the file its symbolic links lead to, so that
// a link keeps pointing at the save rather than being replaced. False, with the reason, when the
// links cannot be followed.
bool resolve_links(std::string& target, const char*& reason) {
    target = eeprom_file_path;
#ifdef _WIN32
    // Windows saves replace the named file itself: its links are not followed here.
    (void)reason;
    return true;
#else
    for (int hops = 0; hops < 40; ++hops) {
        struct stat info;
        if (lstat(target.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) return true;
        char link[PATH_SIZE];
        const ssize_t n = readlink(target.c_str(), link, sizeof link - 1);
        if (n < 0) {
            reason = std::strerror(errno);
            return false;
        }
        link[n] = '\0';
        const size_t slash = target.rfind('/');
        target = (link[0] == '/' || slash == std::string::npos) ? std::string(link)
                                                                : target.substr(0, slash + 1) + link;
    }
    reason = "its symbolic links go round in a circle";
    return false;
#endif
}

bool write_all(int descriptor, const uint8_t* bytes, size_t size) {
    while (size > 0) {
        const ssize_t n = write(descriptor, bytes, size);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        bytes += n;
        size -= static_cast<size_t>(n);
    }
    return true;
}

// Writes the 128 bytes, least-significant byte of each word first, into a new file beside the
// target, with the target's permissions (a new save gets the usual ones), flushed to the disk.
// Returns its descriptor's success; the file is removed on failure.
bool write_temporary(const std::string& temporary, const struct stat* existing, const char*& reason) {
    uint8_t bytes[EEPROM_SIZE];
    for (uint32_t n = 0; n < EEPROM_WORDS; ++n) {
        const uint16_t word = read_word(n);
        bytes[2 * n] = static_cast<uint8_t>(word);
        bytes[2 * n + 1] = static_cast<uint8_t>(word >> 8);
    }
#ifdef _WIN32
    const int descriptor = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_BINARY, 0666);
#else
    const int descriptor = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
#endif
    if (descriptor < 0) {
        reason = std::strerror(errno);
        return false;
    }
    bool ok = true;
#ifdef _WIN32
    (void)existing;  // Windows files have no mode bits or owner to carry over
    ok = write_all(descriptor, bytes, sizeof bytes) && _commit(descriptor) == 0;
#else
    if (existing) {
        ok = fchmod(descriptor, existing->st_mode & 07777) == 0;
        if (fchown(descriptor, existing->st_uid, existing->st_gid) != 0) {
            // Only the owner's own saves keep their group and owner; nothing else is lost.
        }
    }
    ok = ok && write_all(descriptor, bytes, sizeof bytes) && fsync(descriptor) == 0;
#endif
    if (!ok) reason = std::strerror(errno);
    if (close(descriptor) != 0 && ok) {
        reason = std::strerror(errno);
        ok = false;
    }
    if (!ok) unlink(temporary.c_str());
    return ok;
}

// The rename is on the disk once the folder that holds it is.
void flush_folder(const std::string& target) {
#ifdef _WIN32
    (void)target;  // Windows writes the rename through (MOVEFILE_WRITE_THROUGH)
#else
    const size_t slash = target.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : slash == 0 ? "/" : target.substr(0, slash);
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    fsync(descriptor);
    close(descriptor);
#endif
}

// Puts the new file in the target's place in one step (Windows's rename refuses an existing target).
bool replace_file(const std::string& from, const std::string& to) {
#ifdef _WIN32
    if (MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) return true;
    errno = EACCES;
    return false;
#else
    return std::rename(from.c_str(), to.c_str()) == 0;
#endif
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

// A save must never lose the previous one: the new contents go to a file in the target's own
// folder, flushed to the disk, which then replaces the target in one rename. Until the rename
// succeeds the old file is untouched. The target is the file that symbolic links lead to; what
// is not a regular file (a device, a FIFO, a directory) is never replaced. A failure stays at
// the front of the message text until a save succeeds.
void eeprom_save() {
    if (eeprom_file_path[0] == '\0') {
        log_save_failure("Couldn't save eeprom file: no EEPROM file is configured.\n");
        return;
    }
    std::string target;
    const char* reason = "";
    if (!resolve_links(target, reason)) {
        log_save_failure("Couldn't save eeprom file %s: %s.\n", eeprom_file_path, reason);
        return;
    }
    struct stat existing;
    const bool exists = stat(target.c_str(), &existing) == 0;
    if (exists && !S_ISREG(existing.st_mode)) {
        log_save_failure("Couldn't save eeprom file %s: %s is %s, not a regular file, and is left as it is.\n",
                         eeprom_file_path, target.c_str(), file_kind(target.c_str()));
        return;
    }
    static unsigned saves;
    const std::string temporary = target + ".saving-" + std::to_string(getpid()) + "-" + std::to_string(++saves);
    if (!write_temporary(temporary, exists ? &existing : nullptr, reason)) {
        log_save_failure("Couldn't save eeprom file %s: writing %s failed (%s).\n", eeprom_file_path,
                         temporary.c_str(), reason);
        return;
    }
    if (!replace_file(temporary, target)) {
        log_save_failure("Couldn't save eeprom file %s: %s.\n", eeprom_file_path, std::strerror(errno));
        unlink(temporary.c_str());
        return;
    }
    flush_folder(target);
    log_save_succeeded();
}
