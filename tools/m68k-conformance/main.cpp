// m68k-conformance [--show N] [--show-masked N] DIR: runs every single-instruction test vector
// in DIR through the 68000 core, one instruction per case, and reports per file how many cases
// pass, fail, do not apply to this machine (address errors) or pass only thanks to a deliberate
// difference of this machine's 68000.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "case_check.h"
#include "core/memory.h"
#include "m68k/m68k.h"
#include "vector_file.h"

namespace {

constexpr uint32_t ADDRESS_SPACE = 0x1000000;
// A long access or an instruction fetch near the top of the 24-bit space reads a few bytes past
// it; the slack keeps that inside the buffer.
constexpr uint32_t SLACK = 0x10000;
constexpr const char* SUFFIX = ".json.bin";

// The 16 MB test memory in word-swapped order, and the words the last case touched.
uint8_t* test_memory;
std::vector<uint32_t> touched;

m68k_fetch_region fetch_regions[2];
m68k_data_region data_regions[6][2];

void install_regions() {
    const uintptr_t base = reinterpret_cast<uintptr_t>(test_memory);
    m68k_set_fetch_region(&fetch_regions[0], 0x000000, 0xFFFFFF, base);
    m68k_set_fetch_region(&fetch_regions[1], 0xFFFFFFFF, 0xFFFFFFFF, 0);
    for (auto& table : data_regions) {
        m68k_set_data_region(&table[0], 0x000000, 0xFFFFFF, base, nullptr, nullptr);
        m68k_set_data_region(&table[1], 0xFFFFFFFF, 0xFFFFFFFF, 0, nullptr, nullptr);
    }
    m68k_set_fetch_regions(fetch_regions);
    m68k_set_read8_regions(data_regions[0]);
    m68k_set_read16_regions(data_regions[1]);
    m68k_set_read32_regions(data_regions[2]);
    m68k_set_write8_regions(data_regions[3]);
    m68k_set_write16_regions(data_regions[4]);
    m68k_set_write32_regions(data_regions[5]);
}

void clear_touched() {
    for (uint32_t address : touched) ws_write16(test_memory, address, 0);
    touched.clear();
}

void load_state(const vector_state& s) {
    for (const vector_word& w : s.memory) {
        ws_write16(test_memory, w.address, w.value);
        touched.push_back(w.address);
    }
    m68k_context_t& cpu = m68k_context;
    std::copy(s.regs + VR_D0, s.regs + VR_D0 + 8, cpu.d);
    std::copy(s.regs + VR_A0, s.regs + VR_A0 + 7, cpu.a);
    const bool supervisor = s.regs[VR_SR] & 0x2000;
    cpu.a[7] = supervisor ? s.regs[VR_SSP] : s.regs[VR_USP];
    cpu.other_sp = supervisor ? s.regs[VR_USP] : s.regs[VR_SSP];
    cpu.sr = s.regs[VR_SR] & SR_MASK;
    cpu.pc = s.regs[VR_PC] - 4;  // the vectors count the two prefetched words
    std::fill(std::begin(cpu.irq_vector), std::end(cpu.irq_vector), 0u);
    cpu.irq_count = 0;
    cpu.stopped = 0;
}

void observe(const vector_case& c, observed_state& got) {
    const m68k_context_t& cpu = m68k_context;
    std::copy(cpu.d, cpu.d + 8, got.regs + VR_D0);
    std::copy(cpu.a, cpu.a + 7, got.regs + VR_A0);
    const bool supervisor = cpu.sr & 0x2000;
    got.regs[VR_USP] = supervisor ? cpu.other_sp : cpu.a[7];
    got.regs[VR_SSP] = supervisor ? cpu.a[7] : cpu.other_sp;
    got.regs[VR_SR] = cpu.sr;
    // A stopped processor prefetches nothing, so the vectors give STOP's PC without the usual +4.
    got.regs[VR_PC] = cpu.pc + (cpu.stopped ? 0 : 4);
    got.memory.resize(c.final.memory.size());
    for (size_t i = 0; i < c.final.memory.size(); ++i) {
        got.memory[i] = ws_read16(test_memory, c.final.memory[i].address);
        touched.push_back(c.final.memory[i].address);
    }
}

struct totals {
    unsigned passed = 0, failed = 0, not_applicable = 0, masked = 0;
    unsigned by_reason[MASK_REASON_COUNT] = {};
};

void print_flags(char* out, uint32_t sr) {
    const char letters[] = "XNZVC";
    for (int i = 0; i < 5; ++i) out[i] = (sr >> (4 - i)) & 1 ? letters[i] : '.';
    out[5] = 0;
}

// Appends printf-style text to a report kept until the file's summary line is out.
template <typename... Args>
void append(std::string& out, const char* format, Args... args) {
    char line[512];
    std::snprintf(line, sizeof line, format, args...);
    out += line;
}

void describe_case(std::string& out, const char* label, const vector_case& c, const check_result& r, int status) {
    append(out, "  %s \"%s\" (opcode %04X%s)\n", label, c.name.c_str(), unsigned(c.initial.prefetch[0] & 0xFFFF),
           (c.initial.regs[VR_SR] & 0x8000) ? ", trace bit set" : "");
    // The starting state, so a case can be reproduced by hand.
    const uint32_t* in = c.initial.regs;
    append(out, "    before: D %08X %08X %08X %08X %08X %08X %08X %08X\n", in[0], in[1], in[2], in[3], in[4], in[5],
           in[6], in[7]);
    append(out, "            A %08X %08X %08X %08X %08X %08X %08X  USP %08X SSP %08X SR %04X PC %08X\n", in[8],
           in[9], in[10], in[11], in[12], in[13], in[14], in[15], in[16], in[17], in[18]);
    if (status != M68K_OK) append(out, "    the core reported result %d (PC outside every fetch region)\n", status);
    for (const difference& d : r.differences) {
        std::string note;
        for (int i = 0; i < MASK_REASON_COUNT; ++i)
            if (d.reasons & (1u << i)) note += std::string(note.empty() ? "  (masked: " : "; ") + mask_reason_text(i);
        if (!note.empty()) note += d.forgiven == (d.expected ^ d.got) ? ")" : ", partly)";
        if (d.what == "SR") {
            char want[6], have[6];
            print_flags(want, d.expected);
            print_flags(have, d.got);
            append(out, "    %-12s expected %04X %s   got %04X %s%s\n", d.what.c_str(), unsigned(d.expected), want,
                        unsigned(d.got), have, note.c_str());
        } else if (d.what.rfind("mem", 0) == 0) {
            append(out, "    %-12s expected %04X        got %04X%s\n", d.what.c_str(), unsigned(d.expected),
                        unsigned(d.got), note.c_str());
        } else {
            append(out, "    %-12s expected %08X    got %08X%s\n", d.what.c_str(), unsigned(d.expected),
                        unsigned(d.got), note.c_str());
        }
    }
}

// Runs one file; returns false when the file could not be used at all.
struct options {
    unsigned show = 0;         // failing cases to describe per file
    unsigned show_masked = 0;  // masked cases to describe per file
};

bool run_file(const std::filesystem::path& path, const options& opt, totals& all) {
    std::string name = path.filename().string();
    name.resize(name.size() - std::strlen(SUFFIX));
    vector_file file;
    const bool usable = load_vector_file(path.string(), file);
    if (!usable) {
        std::printf("%s: malformed file (%s), skipped\n", name.c_str(), file.fatal.c_str());
        return false;
    }
    totals here;
    unsigned shown = 0, shown_masked = 0;
    std::string details;
    observed_state got;
    for (const vector_case& c : file.cases) {
        if (c.address_error) {
            ++here.not_applicable;
            continue;
        }
        clear_touched();
        load_state(c.initial);
        const int status = m68k_execute(0);
        observe(c, got);
        const check_result r = check_case(c, got);
        switch (r.outcome) {
        case verdict::passed:
            ++here.passed;
            break;
        case verdict::masked:
            ++here.masked;
            for (int i = 0; i < MASK_REASON_COUNT; ++i)
                if (r.reasons & (1u << i)) ++here.by_reason[i];
            if (shown_masked < opt.show_masked) {
                ++shown_masked;
                describe_case(details, "MASKED", c, r, status);
            }
            break;
        case verdict::failed:
            ++here.failed;
            if (shown < opt.show) {
                ++shown;
                describe_case(details, "FAIL", c, r, status);
            }
            break;
        }
    }
    // Unreadable cases count as failures: they are checks that did not happen.
    here.failed += unsigned(file.problems.size());
    if (!file.fatal.empty()) here.failed += 1;
    std::printf("%s: %u passed, %u failed, %u not applicable, %u masked\n", name.c_str(), here.passed,
                here.failed, here.not_applicable, here.masked);
    std::fputs(details.c_str(), stdout);
    for (const std::string& p : file.problems) std::printf("  malformed %s, skipped\n", p.c_str());
    if (!file.fatal.empty()) std::printf("  malformed: %s\n", file.fatal.c_str());

    all.passed += here.passed;
    all.failed += here.failed;
    all.not_applicable += here.not_applicable;
    all.masked += here.masked;
    for (int i = 0; i < MASK_REASON_COUNT; ++i) all.by_reason[i] += here.by_reason[i];
    return true;
}

int usage() {
    std::fprintf(stderr, "usage: m68k-conformance [--show N] [--show-masked N] DIR\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    options opt;
    const char* dir = nullptr;
    for (int i = 1; i < argc; ++i) {
        const bool show = std::strcmp(argv[i], "--show") == 0;
        if ((show || std::strcmp(argv[i], "--show-masked") == 0) && i + 1 < argc) {
            char* end = nullptr;
            const unsigned long n = std::strtoul(argv[++i], &end, 10);
            if (*end || end == argv[i]) return usage();
            (show ? opt.show : opt.show_masked) = unsigned(std::min(n, 1000000ul));
        } else if (!dir && argv[i][0] != '-') {
            dir = argv[i];
        } else {
            return usage();
        }
    }
    if (!dir) return usage();

    std::vector<std::filesystem::path> files;
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator(dir, ec)) {
        const std::string fname = entry.path().filename().string();
        std::error_code kind_error;
        if (fname.size() > std::strlen(SUFFIX) && fname.ends_with(SUFFIX) && entry.is_regular_file(kind_error))
            files.push_back(entry.path());
    }
    if (ec) {
        std::fprintf(stderr, "m68k-conformance: cannot read directory %s: %s\n", dir, ec.message().c_str());
        return 2;
    }
    if (files.empty()) {
        std::fprintf(stderr, "m68k-conformance: no %s files in %s\n", SUFFIX, dir);
        return 2;
    }
    std::sort(files.begin(), files.end());

    std::unique_ptr<uint8_t[]> memory(new uint8_t[ADDRESS_SPACE + SLACK]());
    test_memory = memory.get();
    m68k_init();
    install_regions();

    totals all;
    bool files_ok = true;
    for (const auto& path : files) files_ok &= run_file(path, opt, all);

    std::printf("Masked: %u cases", all.masked);
    const char* sep = " (";
    for (int i = 0; i < MASK_REASON_COUNT; ++i) {
        if (!all.by_reason[i]) continue;
        std::printf("%s%s: %u", sep, mask_reason_text(i), all.by_reason[i]);
        sep = "; ";
    }
    std::printf("%s\n", sep[0] == ';' ? ")" : "");
    std::printf("%u passed, %u failed\n", all.passed, all.failed);
    return all.failed == 0 && files_ok ? 0 : 1;
}
