// The 68000 core: context, dispatch-table expansion, region lookup, data access, slices,
// exceptions and interrupts.
#include "m68k/m68k_internal.h"

#include <climits>

m68k_context_t m68k_context;
m68k_handler m68k_dispatch_table[M68K_TABLE_SIZE];
m68k_run_state m68k_run;
m68k_flags m68k_cc;
m68k_data_window m68k_ram_window;
m68k_rom_window_t m68k_rom_window;

namespace {

constexpr uint32_t ADDRESS_MASK = M68K_ADDRESS_MASK;

// What the last slice left behind, so that the next one can skip its set-up: the fetch state in
// m68k_run still points at cached_pc (until a table is installed or the processor reset), and
// the unpacked condition codes still match cached_sr.
bool fetch_cached;
uint32_t cached_pc;
uint32_t cached_sr = 0xFFFFFFFF;

// An instruction near the end of its fetch region runs from a copy of its words (see
// run_at_region_edge); while it does, the fetch state points into window_words.
uint16_t window_words[M68K_MAX_INSTRUCTION_BYTES / 2];
bool in_window;
uint32_t window_consumed;  // bytes of the copy the instruction had read when it loaded a new PC
constexpr uint32_t TABLE_END = 0xFFFFFFFF;

const m68k_fetch_region* find_fetch_region(uint32_t address) {
    const m68k_fetch_region* r = m68k_context.fetch_regions;
    if (!r) return nullptr;
    for (; r->low != TABLE_END; ++r)
        if (address >= r->low && address <= r->high) return r;
    return nullptr;
}

const m68k_data_region* find_data_region(const m68k_data_region* r, uint32_t address) {
    if (!r) return nullptr;
    for (; r->low != TABLE_END; ++r)
        if (address >= r->low && address <= r->high) return r;
    return nullptr;
}

// Makes region r current for pc (an instruction running from the copy of its words leaves the
// copy here, and what it had read of it is noted).
void leave_window() {
    if (!in_window) return;
    window_consumed = static_cast<uint32_t>(m68k_run.fetch_ptr - reinterpret_cast<uintptr_t>(window_words));
    in_window = false;
}

void enter_fetch_region(const m68k_fetch_region* r, uint32_t pc) {
    leave_window();
    uint32_t address = pc & ADDRESS_MASK;
    m68k_run.fetch_ptr = r->offset + address;
    m68k_run.fetch_base = r->offset - (pc & ~ADDRESS_MASK);
    // A whole instruction fits from offsets 0 to bytes - M68K_MAX_INSTRUCTION_BYTES. A region
    // too small for one gets a limit that no host pointer passes.
    const uint64_t bytes = uint64_t{r->high} - r->low + 1;
    m68k_run.fetch_low = r->offset + r->low;
    if (r->high >= r->low && bytes >= M68K_MAX_INSTRUCTION_BYTES)
        m68k_run.fetch_limit = m68k_run.fetch_low + static_cast<uintptr_t>(bytes - M68K_MAX_INSTRUCTION_BYTES);
    else
        m68k_run.fetch_limit = 0;
}

// True when the whole instruction at the fetch pointer lies in the current region.
inline bool instruction_fits() {
    return m68k_run.fetch_ptr >= m68k_run.fetch_low && m68k_run.fetch_ptr <= m68k_run.fetch_limit;
}

// The host stores around a bus function call: the function sees the current PC and may move
// it within the current region (none of this machine's do).
inline void before_call() { m68k_context.pc = m68k_current_pc(); }
inline void after_call() { m68k_branch_to(m68k_run.fetch_base + m68k_context.pc); }

// Direct accesses that would reach past their region's last address are split into smaller
// ones, each looked up again, so no host access leaves the region.
uint32_t read_sized(uint32_t address, int size) {
    address &= ADDRESS_MASK;
    const m68k_data_region* table = size == 1   ? m68k_context.read8_regions
                                    : size == 2 ? m68k_context.read16_regions
                                                : m68k_context.read32_regions;
    const uint32_t ones = size == 4 ? 0xFFFFFFFFu : (1u << (8 * size)) - 1;
    const m68k_data_region* r = find_data_region(table, address);
    if (!r) return ones;
    if (r->memory) {
        if (address + size - 1 > r->high) {
            int half = size / 2;
            return (read_sized(address, half) << (8 * half)) | read_sized(address + half, half);
        }
        const void* p = reinterpret_cast<const void*>(r->memory + (size == 1 ? address ^ 1 : address));
        if (size == 1) return *static_cast<const uint8_t*>(p);
        if (size == 2) {
            uint16_t v;
            std::memcpy(&v, p, 2);
            return v;
        }
        uint32_t v;
        std::memcpy(&v, p, 4);
        return rotate16(v);
    }
    if (!r->read) return ones;
    before_call();
    uint32_t v = r->read(address);
    after_call();
    return v & ones;
}

void write_sized(uint32_t address, uint32_t value, int size) {
    address &= ADDRESS_MASK;
    const m68k_data_region* table = size == 1   ? m68k_context.write8_regions
                                    : size == 2 ? m68k_context.write16_regions
                                                : m68k_context.write32_regions;
    const m68k_data_region* r = find_data_region(table, address);
    if (!r) return;
    if (r->memory) {
        if (address + size - 1 > r->high) {
            int half = size / 2;
            write_sized(address, value >> (8 * half), half);
            write_sized(address + half, value, half);
            return;
        }
        void* p = reinterpret_cast<void*>(r->memory + (size == 1 ? address ^ 1 : address));
        if (size == 1) {
            *static_cast<uint8_t*>(p) = static_cast<uint8_t>(value);
        } else if (size == 2) {
            uint16_t v = static_cast<uint16_t>(value);
            std::memcpy(p, &v, 2);
        } else {
            uint32_t v = rotate16(value);
            std::memcpy(p, &v, 4);
        }
        return;
    }
    if (!r->write) return;
    before_call();
    r->write(address, value);
    after_call();
}

uint32_t read_long_at(const uint8_t* p) {
    uint32_t v;
    std::memcpy(&v, p, 4);
    return rotate16(v);
}

// The host pointer of a reset vector, only when the whole long lies in its fetch region.
const uint8_t* fetch_pointer_for_long(uint32_t address) {
    const uint8_t* p = m68k_fetch_pointer(address);
    if (!p) return nullptr;
    const m68k_fetch_region* r = find_fetch_region(address & ADDRESS_MASK);
    return (address & ADDRESS_MASK) + 3 <= r->high ? p : nullptr;
}

inline void exit_slice() {
    m68k_context.sr = m68k_get_sr();
    if (m68k_run.ended) {
        m68k_context.cycles_left = m68k_run.held_cycles;
        if (m68k_run.result == M68K_NO_FETCH_REGION) {
            m68k_context.pc = m68k_run.end_pc;
            return;
        }
    }
    m68k_context.pc = m68k_current_pc();
}

// Bytes of the copy an instruction read: relative branches move the fetch pointer away, so theirs
// follow from the opcode (Bcc.B 2; Bcc.W, BSR.W and DBcc 4).
uint32_t window_bytes_read(uint16_t op) {
    if (!in_window) return window_consumed;
    if ((op & 0xF000) == 0x6000) return (op & 0xFF) == 0 ? 4 : 2;
    if ((op & 0xF0F8) == 0x50C8) return 4;
    return static_cast<uint32_t>(m68k_run.fetch_ptr - reinterpret_cast<uintptr_t>(window_words));
}

// The instruction at the PC does not lie wholly inside the current region: the PC left it, or
// the instruction starts within M68K_MAX_INSTRUCTION_BYTES of its end. A new lookup finds the
// PC's region; a PC that no region holds (or an odd last byte) ends the slice with result 1
// before anything of the unreadable instruction runs. Deep inside its region the loop goes on
// as usual; near the end the instruction runs from a copy of its words, each looked up on its
// own. A word that no region holds reads as all ones (as unmapped data does): when the
// instruction reads it, it completes and the slice ends with result 1 at that word's address.
// False when the slice has ended.
[[gnu::noinline]] bool run_at_region_edge() {
    const uint32_t pc = m68k_current_pc();
    const uint32_t address = pc & ADDRESS_MASK;
    const m68k_fetch_region* r = find_fetch_region(address);
    if (!r || address + 1 > r->high) {
        m68k_run.end_pc = address;
        m68k_end_slice(M68K_NO_FETCH_REGION);
        return false;
    }
    enter_fetch_region(r, pc);
    if (instruction_fits()) return true;

    int missing = -1;
    for (uint32_t i = 0; i < M68K_MAX_INSTRUCTION_BYTES / 2; ++i) {
        const uint32_t a = (address + 2 * i) & ADDRESS_MASK;
        const m68k_fetch_region* w = find_fetch_region(a);
        if (w && a + 1 <= w->high) {
            std::memcpy(&window_words[i], reinterpret_cast<const void*>(w->offset + a), 2);
        } else {
            window_words[i] = 0xFFFF;
            if (missing < 0) missing = static_cast<int>(i);
        }
    }
    const uintptr_t start = reinterpret_cast<uintptr_t>(window_words);
    m68k_run.fetch_ptr = start + 2;
    m68k_run.fetch_base = start - pc;  // pc == fetch_ptr - fetch_base still holds
    in_window = true;
    const int32_t before = m68k_context.cycles_left;
    const uint16_t op = window_words[0];
    m68k_dispatch_table[op](op);

    if (missing > 0 && window_bytes_read(op) > 2 * static_cast<uint32_t>(missing)) {
        // The missing word was read first, so it decides how the slice ends.
        m68k_run.ended = true;
        m68k_run.result = M68K_NO_FETCH_REGION;
        m68k_run.end_pc = (address + 2 * missing) & ADDRESS_MASK;
        m68k_run.held_cycles = before;
        m68k_context.cycles_left = INT32_MIN / 2;
    }
    if (in_window) {
        // Sequential execution or a relative branch: the next instruction's check finds the
        // region that holds the new PC.
        in_window = false;
        enter_fetch_region(r, m68k_current_pc());
        if (!instruction_fits()) m68k_run.fetch_limit = 0;
    }
    return true;
}

inline void run_instructions() {
    for (;;) {
        const uintptr_t p = m68k_run.fetch_ptr;
        if (p > m68k_run.fetch_limit) [[unlikely]] {
            if (!run_at_region_edge()) return;
        } else {
            uint16_t op;
            std::memcpy(&op, reinterpret_cast<const void*>(p), 2);
            m68k_run.fetch_ptr = p + 2;
            m68k_dispatch_table[op](op);
        }
        if (m68k_context.cycles_left < 0) return;
    }
}

}  // namespace

const uint8_t* m68k_fetch_pointer(uint32_t address) {
    const m68k_fetch_region* r = find_fetch_region(address & ADDRESS_MASK);
    return r ? reinterpret_cast<const uint8_t*>(r->offset + (address & ADDRESS_MASK)) : nullptr;
}

bool m68k_load_pc(uint32_t pc) {
    const m68k_fetch_region* r = find_fetch_region(pc & ADDRESS_MASK);
    if (!r) {
        leave_window();
        if (!m68k_run.ended) m68k_run.end_pc = pc & ADDRESS_MASK;
        m68k_end_slice(M68K_NO_FETCH_REGION);
        return false;
    }
    enter_fetch_region(r, pc);
    return true;
}

uint32_t m68k_read8_regions(uint32_t address) { return read_sized(address, 1); }
uint32_t m68k_read16_regions(uint32_t address) { return read_sized(address, 2); }
uint32_t m68k_read32_regions(uint32_t address) { return read_sized(address, 4); }
void m68k_write8_regions(uint32_t address, uint32_t value) { write_sized(address, value, 1); }
void m68k_write16_regions(uint32_t address, uint32_t value) { write_sized(address, value, 2); }
void m68k_write32_regions(uint32_t address, uint32_t value) { write_sized(address, value, 4); }

void m68k_set_ram_window(uint8_t* buffer, uint32_t limit, uint32_t mask) {
    m68k_ram_window = {buffer, buffer ? limit : 0, mask};
}

void m68k_set_rom_window(const uint8_t* buffer, uint32_t low, uint32_t span, uint32_t size) {
    m68k_rom_window = {buffer, low, buffer ? span : 0, size};
}

namespace {
// A new data table may serve the windows' ranges differently: both close.
void close_windows() {
    m68k_set_ram_window(nullptr, 0, 0);
    m68k_set_rom_window(nullptr, 0, 0, 0);
}
}  // namespace

void m68k_set_sr(uint32_t value) {
    value &= SR_MASK;
    if ((value ^ m68k_context.sr) & 0x2000) {
        uint32_t t = m68k_context.a[7];
        m68k_context.a[7] = m68k_context.other_sp;
        m68k_context.other_sp = t;
    }
    m68k_context.sr = value;
    m68k_load_ccr(value);
}

// Switches to the supervisor stack and pushes the 6-byte frame: SR below the PC.
static void push_frame(uint32_t pc, uint32_t sr) {
    if (!(sr & 0x2000)) {
        uint32_t t = m68k_context.a[7];
        m68k_context.a[7] = m68k_context.other_sp;
        m68k_context.other_sp = t;
    }
    uint32_t sp = m68k_context.a[7];
    m68k_write32(sp - 4, pc);
    m68k_write16(sp - 6, sr);
}

void m68k_exception(uint32_t vector_address, uint32_t stacked_pc, int32_t cost) {
    uint32_t sr = m68k_get_sr();
    push_frame(stacked_pc, sr);
    // S set; T, the mask and the condition codes keep their values.
    m68k_context.sr = (sr | 0x2000) & SR_MASK;
    m68k_context.a[7] -= 6;
    if (!m68k_load_pc(m68k_read32(vector_address))) return;
    m68k_context.cycles_left -= cost;
}

void m68k_privilege_violation() { m68k_exception(0x20, m68k_current_pc() - 2, 40); }

void m68k_op_illegal(uint32_t) { m68k_exception(0x10, m68k_current_pc() - 2, 40); }
void m68k_op_illegal_instruction(uint32_t) { m68k_exception(0x10, m68k_current_pc() - 2, 40); }
void m68k_op_line_a(uint32_t) { m68k_exception(0x28, m68k_current_pc() - 2, 40); }
void m68k_op_line_f(uint32_t) { m68k_exception(0x2C, m68k_current_pc() - 2, 40); }

void m68k_check_interrupts() {
    if (m68k_context.irq_count == 0) return;
    uint32_t mask = (m68k_context.sr >> 8) & 7;
    uint32_t pc = m68k_current_pc();
    bool taken = false;
    // Ascending from the first level above the mask: each taken level raises the mask to its
    // own, so every higher waiting level is taken on top and the highest runs first.
    for (uint32_t level = mask == 7 ? 7 : mask + 1; level <= 7; ++level) {
        uint32_t vector = m68k_context.irq_vector[level - 1];
        if (!vector) continue;
        uint32_t sr = m68k_get_sr();
        push_frame(pc, sr);
        m68k_context.sr = (sr & 0x001F) | 0x2000 | (level << 8);
        m68k_context.a[7] -= 6;
        pc = m68k_read32(4 * vector + 0x98);
        m68k_context.irq_vector[level - 1] = 0;
        m68k_context.irq_count--;
        m68k_context.cycles_left -= 44;
        m68k_context.stopped = 0;
        taken = true;
    }
    if (taken) m68k_load_pc(pc);
}

// The table depends only on the generated data, so it is unpacked once per process; a restart
// finds it ready.
int m68k_init() {
    static bool unpacked = false;
    if (unpacked) return 0;
    unpacked = true;
    uint32_t entry = 0;
    uint32_t word = 0;
    const uint16_t* packed = m68k_packed_dispatch;
    const uint32_t words = m68k_packed_dispatch_words;
    auto reference = [&](uint32_t at) -> m68k_handler {
        uint32_t index = packed[at] | (uint32_t(packed[at + 1]) << 16);
        if (index >= m68k_handler_count) return m68k_op_illegal;
        return m68k_handler_parts[index / m68k_handler_part_size][index % m68k_handler_part_size];
    };
    auto put = [&](m68k_handler h, uint32_t times) {
        for (uint32_t i = 0; i < times && entry < M68K_TABLE_SIZE; ++i) m68k_dispatch_table[entry++] = h;
    };
    while (word + 1 < words) {
        if ((packed[word] | (uint32_t(packed[word + 1]) << 16)) == 0xFFFFFFFF) break;
        uint32_t cw = packed[word++];
        if ((cw & 0xC000) == 0xC000 || (cw & 0xC000) == 0x8000) {
            uint32_t n = (cw & 0xC000) == 0xC000 ? cw & 0x3FF : cw & 0x7FF;
            uint32_t times = (cw & 0xC000) == 0xC000 ? 1 : 8;
            for (uint32_t i = 0; i < n && word + 1 < words; ++i, word += 2) put(reference(word), times);
        } else {
            if (word + 1 >= words) break;
            put(reference(word), cw);
            word += 2;
        }
    }
    // Our own generated data fills the table exactly; should it ever fall short, the rest is
    // illegal rather than a null call.
    put(m68k_op_illegal, M68K_TABLE_SIZE);
    return 0;
}

// A new fetch table (or entry) may move the PC's host address; a new data table closes the
// direct windows, whose accesses that table may serve differently.
void m68k_set_fetch_regions(const m68k_fetch_region* regions) {
    m68k_context.fetch_regions = regions;
    fetch_cached = false;
}
void m68k_set_read8_regions(const m68k_data_region* regions) {
    m68k_context.read8_regions = regions;
    close_windows();
}
void m68k_set_read16_regions(const m68k_data_region* regions) {
    m68k_context.read16_regions = regions;
    close_windows();
}
void m68k_set_read32_regions(const m68k_data_region* regions) {
    m68k_context.read32_regions = regions;
    close_windows();
}
void m68k_set_write8_regions(const m68k_data_region* regions) {
    m68k_context.write8_regions = regions;
    close_windows();
}
void m68k_set_write16_regions(const m68k_data_region* regions) {
    m68k_context.write16_regions = regions;
    close_windows();
}
void m68k_set_write32_regions(const m68k_data_region* regions) {
    m68k_context.write32_regions = regions;
    close_windows();
}

void m68k_set_fetch_region(m68k_fetch_region* entry, uint32_t low, uint32_t high, uintptr_t offset) {
    fetch_cached = false;
    entry->low = low;
    entry->high = high;
    entry->offset = offset;
}

void m68k_set_data_region(m68k_data_region* entry, uint32_t low, uint32_t high, uintptr_t memory,
                          m68k_read_handler read, m68k_write_handler write) {
    close_windows();
    entry->low = low;
    entry->high = high;
    entry->memory = memory;
    entry->read = read;
    entry->write = write;
}

int m68k_reset() {
    m68k_context.stopped = 0;
    fetch_cached = false;
    const uint8_t* start = fetch_pointer_for_long(4);
    if (!start) return M68K_NO_FETCH_REGION;
    uint32_t pc = read_long_at(start);
    m68k_context.sr = 0x2700;
    m68k_context.cycles_requested = 0;
    m68k_context.cycles_left = 0;
    for (int i = 0; i < 8; ++i) m68k_context.d[i] = m68k_context.a[i] = 0;
    for (uint32_t& v : m68k_context.irq_vector) v = 0;
    m68k_context.irq_count = 0;
    if (!find_fetch_region(pc & ADDRESS_MASK)) {
        m68k_context.pc = pc & ADDRESS_MASK;
        return M68K_NO_FETCH_REGION;
    }
    m68k_context.pc = pc;
    const uint8_t* stack = fetch_pointer_for_long(0);
    if (!stack) return M68K_NO_FETCH_REGION;
    m68k_context.a[7] = m68k_context.other_sp = read_long_at(stack);
    return M68K_OK;
}

namespace {

// Looks the PC up when the last slice did not leave the fetch state at it. False, with the PC
// reduced to 24 bits, when no region holds it.
[[gnu::noinline]] bool enter_pc_region() {
    const m68k_fetch_region* r = find_fetch_region(m68k_context.pc & ADDRESS_MASK);
    if (!r) {
        m68k_context.pc &= ADDRESS_MASK;
        return false;
    }
    enter_fetch_region(r, m68k_context.pc);
    return true;
}

}  // namespace

namespace {

// The end of every slice: SR packed, the remaining count and the PC stored, and what the next
// slice may reuse noted.
inline int finish_slice() {
    exit_slice();
    fetch_cached = m68k_run.result == M68K_OK;
    cached_pc = m68k_context.pc;
    cached_sr = m68k_context.sr;
    return m68k_run.result;
}

// A slice with its whole set-up: the PC looked up, the condition codes reloaded, waiting
// interrupts taken.
[[gnu::noinline]] int execute_with_set_up() {
    if (!(fetch_cached && m68k_context.pc == cached_pc) && !enter_pc_region()) {
        fetch_cached = false;
        return M68K_NO_FETCH_REGION;
    }
    m68k_run.ended = false;
    m68k_run.result = M68K_OK;
    if (m68k_context.sr != cached_sr) m68k_load_ccr(m68k_context.sr);
    if (m68k_context.irq_count) m68k_check_interrupts();
    if (!m68k_run.ended) {
        if (m68k_context.stopped) m68k_context.cycles_left = 0;
        else run_instructions();
    }
    return finish_slice();
}

}  // namespace

int m68k_execute(int32_t cycles) {
    m68k_context.cycles_requested = cycles;
    m68k_context.cycles_left = cycles;
    // While the last slice left the PC, SR and fetch state as they are and nothing waits, the
    // set-up has nothing to do; a stopped processor then has nothing to run either.
    if (fetch_cached && m68k_context.pc == cached_pc && m68k_context.irq_count == 0) [[likely]] {
        if (m68k_context.stopped) {
            m68k_context.cycles_left = 0;
            return M68K_OK;
        }
        if (m68k_context.sr == cached_sr) {
            m68k_run.ended = false;  // the result is still M68K_OK, or nothing would be cached
            run_instructions();
            return finish_slice();
        }
    }
    return execute_with_set_up();
}

int m68k_interrupt(uint32_t level, uint32_t vector) {
    if (level == 0 || level > 7) return M68K_IRQ_BAD_LEVEL;
    if (vector < 2 || vector > 256) return M68K_IRQ_BAD_VECTOR;
    if (vector == 256) vector = 24 + level;  // autovector
    if (m68k_context.irq_vector[level - 1]) return M68K_IRQ_LEVEL_WAITING;
    m68k_context.irq_vector[level - 1] = vector;
    m68k_context.irq_count++;
    return M68K_OK;
}

uint32_t m68k_get_pc() { return m68k_context.pc; }
