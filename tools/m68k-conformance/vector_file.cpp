#include "vector_file.h"

#include <algorithm>
#include <fstream>

namespace {

// Vector files are a few hundred kilobytes; anything far larger is not one.
constexpr size_t MAX_FILE_SIZE = 256u << 20;
// Smallest possible case: header, empty name, two states without memory, empty bus activity.
constexpr size_t MIN_CASE_SIZE = 8 + 12 + 2 * (8 + 21 * 4 + 4) + 16;
constexpr size_t MAX_NAME_LENGTH = 4096;

// A window [pos, end) of the file; every read checks that it stays inside.
struct reader {
    const uint8_t* data;
    size_t pos;
    size_t end;

    size_t left() const { return end - pos; }

    bool u8(uint8_t& v) {
        if (left() < 1) return false;
        v = data[pos++];
        return true;
    }
    bool u16(uint16_t& v) {
        if (left() < 2) return false;
        v = uint16_t(data[pos] | data[pos + 1] << 8);
        pos += 2;
        return true;
    }
    bool u32(uint32_t& v) {
        if (left() < 4) return false;
        v = uint32_t(data[pos]) | uint32_t(data[pos + 1]) << 8 | uint32_t(data[pos + 2]) << 16 |
            uint32_t(data[pos + 3]) << 24;
        pos += 4;
        return true;
    }
};

// Opens a block: checks its size and magic and narrows `block` to it. On return `outer` is
// already past the block.
const char* open_block(reader& outer, uint32_t magic, reader& block) {
    size_t start = outer.pos;
    uint32_t size = 0, found = 0;
    if (!outer.u32(size) || !outer.u32(found)) return "truncated block header";
    if (size < 8 || size - 8 > outer.left()) return "block size out of range";
    if (found != magic) return "bad block magic";
    block = reader{outer.data, outer.pos, start + size};
    outer.pos = start + size;
    return nullptr;
}

const char* read_name(reader& r, std::string& name) {
    uint32_t length = 0;
    if (!r.u32(length)) return "truncated name";
    if (length > r.left() || length > MAX_NAME_LENGTH) return "name length out of range";
    name.assign(reinterpret_cast<const char*>(r.data + r.pos), length);
    r.pos += length;
    return nullptr;
}

const char* read_state(reader& r, vector_state& s) {
    for (uint32_t& reg : s.regs)
        if (!r.u32(reg)) return "truncated registers";
    for (uint32_t& word : s.prefetch)
        if (!r.u32(word)) return "truncated prefetch";
    uint32_t count = 0;
    if (!r.u32(count)) return "truncated memory count";
    if (count > r.left() / 6) return "memory count out of range";
    s.memory.resize(count);
    for (vector_word& w : s.memory) {
        if (!r.u32(w.address) || !r.u16(w.value)) return "truncated memory";
        if (w.address > 0xFFFFFF || (w.address & 1)) return "memory address out of range";
    }
    return nullptr;
}

const char* read_bus_activity(reader& r, bool& address_error) {
    uint32_t cycles = 0, count = 0;
    if (!r.u32(cycles) || !r.u32(count)) return "truncated bus activity";
    address_error = false;
    for (uint32_t i = 0; i < count; ++i) {
        uint8_t kind = 0;
        uint32_t word = 0;
        if (!r.u8(kind) || !r.u32(word)) return "truncated bus activity";
        if (kind > BUS_LAST_KIND) return "unknown bus activity kind";
        if (kind == BUS_READ_ADDRESS_ERROR || kind == BUS_WRITE_ADDRESS_ERROR) address_error = true;
        if (kind != BUS_IDLE) {
            // function code, address, data, UDS, LDS
            for (int field = 0; field < 5; ++field)
                if (!r.u32(word)) return "truncated bus activity";
        }
    }
    return nullptr;
}

const char* read_case(reader& r, vector_case& c) {
    uint32_t magic = 0;
    if (!r.u32(magic)) return "truncated case header";
    if (magic != VECTOR_CASE_MAGIC) return "bad case magic";
    reader block{};
    const char* err = open_block(r, VECTOR_NAME_MAGIC, block);
    if (!err) err = read_name(block, c.name);
    if (!err) err = open_block(r, VECTOR_STATE_MAGIC, block);
    if (!err) err = read_state(block, c.initial);
    if (!err) err = open_block(r, VECTOR_STATE_MAGIC, block);
    if (!err) err = read_state(block, c.final);
    if (!err) err = open_block(r, VECTOR_BUS_MAGIC, block);
    if (!err) err = read_bus_activity(block, c.address_error);
    return err;
}

}  // namespace

bool parse_vector_file(const uint8_t* data, size_t size, vector_file& out) {
    out = vector_file{};
    reader file{data, 0, size};
    uint32_t magic = 0;
    if (!file.u32(magic) || !file.u32(out.declared_count)) {
        out.fatal = "file shorter than its header";
        return false;
    }
    if (magic != VECTOR_FILE_MAGIC) {
        out.fatal = "bad file magic";
        return false;
    }
    // A truncated file still yields the cases it holds; the count only bounds the reservation.
    out.cases.reserve(std::min<size_t>(out.declared_count, file.left() / MIN_CASE_SIZE));
    for (uint32_t i = 0; i < out.declared_count; ++i) {
        size_t start = file.pos;
        uint32_t case_size = 0;
        if (!file.u32(case_size) || case_size < 8 || case_size - 4 > file.left()) {
            // Without a trustworthy size there is no way to find the next case.
            out.fatal = "case " + std::to_string(i) + ": truncated or size out of range; " +
                        std::to_string(out.declared_count - i) + " cases not read";
            return true;
        }
        reader body{data, file.pos, start + case_size};
        file.pos = start + case_size;
        vector_case c;
        if (const char* err = read_case(body, c)) {
            out.problems.push_back("case " + std::to_string(i) + (c.name.empty() ? "" : " \"" + c.name + "\"") +
                                   ": " + err);
            continue;
        }
        out.cases.push_back(std::move(c));
    }
    return true;
}

bool load_vector_file(const std::string& path, vector_file& out) {
    out = vector_file{};
    std::ifstream in(path, std::ios::binary | std::ios::ate);
    if (!in) {
        out.fatal = "cannot open file";
        return false;
    }
    std::streamoff length = in.tellg();
    if (length < 0 || size_t(length) > MAX_FILE_SIZE) {
        out.fatal = "file size out of range";
        return false;
    }
    std::vector<uint8_t> bytes(static_cast<size_t>(length));
    in.seekg(0);
    if (!in.read(reinterpret_cast<char*>(bytes.data()), length)) {
        out.fatal = "read error";
        return false;
    }
    return parse_vector_file(bytes.data(), bytes.size(), out);
}
