// The object list walker: once per displayed line, from OLP to a stop object (or a null link),
// deciding for each object whether and how it touches the line. Nothing is written back into
// the list, so a program may show the same list every frame.
#include <algorithm>

#include "core/bus.h"
#include "core/host.h"
#include "core/memory.h"
#include "core/video.h"
#include "objproc/objproc.h"
#include "objproc/pixels.h"
#include "risc/gpu.h"

namespace {

// The work of one line is bounded, so that no list (links that form a cycle without a stop
// object, or thousands of full-width objects) can hold a frame up. Work counts the pixels read
// and written: a cell drawn is a source pixel read and a cell written (2), a read-modify-write
// cell also reads the cell (3); every phrase of the list read counts 8, every message logged
// 512. The bound of 8192 lets a line draw 4096 pixels, a dozen full-width layers of a 320-pixel
// screen, or walk 512 bitmap objects: more than the chip can in the 1688 clocks it has for a
// row, moving at most about a phrase or two pixels per clock. A line that reaches the bound ends
// there, the rest of its list not drawn; a frame of such lines takes about ten to twenty times
// an idle frame.
constexpr int32_t OP_PHRASE_WORK = 8;
// A message costs about as much as drawing a few hundred pixels: an object that logs one
// (DATA where no memory is, a depth without a renderer, FIRSTPIX) counts it too.
constexpr int32_t OP_MESSAGE_WORK = 512;
constexpr int32_t OP_LINE_WORK_LIMIT = 8192;

enum op_object_type { OBJ_BITMAP = 0, OBJ_SCALED = 1, OBJ_GPU = 2, OBJ_BRANCH = 3, OBJ_STOP = 4 };

constexpr uint32_t OBJECT_ADDRESS_MASK = 0x1FFFF8;  // phrase-aligned, inside the 2 MB RAM image
constexpr uint32_t BRANCH_ALWAYS = 0x7FF;

// Objects come from RAM only; a phrase of an object that starts in the last phrase of RAM is
// read from the start of RAM, as the 2 MB mirror would give it.
uint64_t read_list_phrase(uint32_t address) {
    const uint32_t a = address & OBJECT_ADDRESS_MASK;
    return (uint64_t{ws_read32(main_ram, a)} << 32) | ws_read32(main_ram, a + 4);
}

uint32_t bits(uint64_t v, int low, int width) {
    return static_cast<uint32_t>((v >> low) & ((uint64_t{1} << width) - 1));
}

op_object decode_object(uint64_t p0, uint64_t p1) {
    op_object o{};
    o.ypos = static_cast<int32_t>(bits(p0, 3, 11));
    o.height = static_cast<int32_t>(bits(p0, 14, 10));
    o.link = static_cast<int32_t>(bits(p0, 24, 19) * 8);
    o.data = static_cast<int32_t>(bits(p0, 43, 21) * 8);
    const int32_t x = static_cast<int32_t>(bits(p1, 0, 12));
    o.xpos = (x & 0x800) ? x - 0x1000 : x;
    o.depth = static_cast<int32_t>(bits(p1, 12, 3));
    o.pitch = static_cast<int32_t>(bits(p1, 15, 3));
    o.dwidth = static_cast<int32_t>(bits(p1, 18, 10));
    o.iwidth = static_cast<int32_t>(bits(p1, 28, 10));
    o.index = static_cast<int32_t>(bits(p1, 38, 7));
    o.flags = static_cast<int32_t>(bits(p1, 45, 4));
    o.firstpix = static_cast<int32_t>(bits(p1, 49, 6));
    return o;
}

using renderer = void (*)(const op_object*, int);

constexpr renderer plain_renderers[8] = {op_draw_bitmap_1bit, op_draw_bitmap_2bit,
                                         op_draw_bitmap_4bit, op_draw_bitmap_8bit,
                                         op_draw_bitmap_16bit, op_draw_bitmap_32bit,
                                         nullptr, nullptr};
constexpr renderer rmw_renderers[8] = {op_draw_bitmap_rmw_1bit, op_draw_bitmap_rmw_2bit,
                                       op_draw_bitmap_rmw_4bit, op_draw_bitmap_rmw_8bit,
                                       op_draw_bitmap_rmw_16bit, nullptr, nullptr, nullptr};
constexpr renderer scaled_renderers[8] = {op_draw_scaled_1bit, op_draw_scaled_2bit,
                                          op_draw_scaled_4bit, op_draw_scaled_8bit,
                                          op_draw_scaled_16bit, nullptr, nullptr, nullptr};

// The pixels an unscaled object draws on this line: its run on the row, when its row falls here.
int32_t unscaled_pixels(const op_object& o, int line) {
    const int32_t r = line / 2 - o.ypos / 2;
    if (r < 0 || r > 256 || r >= o.height) return 0;
    op_pixels::run_placement p;
    if (!op_pixels::place_run(o.xpos, o.iwidth * (64 >> o.depth), op_clip_width(),
                              o.flags & OP_FLAG_REFLECT, p))
        return 0;
    return p.end - p.start;
}

void draw_bitmap_object(uint32_t a, uint64_t p0, int line) {
    op_object o = decode_object(p0, read_list_phrase(a + 8));
    // An object that begins above the displayed range is drawn as if it began at VDB.
    if (o.ypos < video.vdb) o.ypos = video.vdb;
    const renderer draw = (o.flags & OP_FLAG_RMW) ? rmw_renderers[o.depth] : plain_renderers[o.depth];
    if (!draw) {
        log_printf("Object Processor: Unhandled bit-depth %d\n", o.depth);
        return;
    }
    op_line_work += unscaled_pixels(o, line) * ((o.flags & OP_FLAG_RMW) ? 3 : 2);
    draw(&o, line);
}

// RMW scaled objects and 32-bit scaled objects have no renderer: skipped without a message.
void draw_scaled_object(uint32_t a, uint64_t p0, int line) {
    op_object o = decode_object(p0, read_list_phrase(a + 8));
    const uint32_t scale = static_cast<uint32_t>(read_list_phrase(a + 16));
    o.hscale = static_cast<uint8_t>(scale);
    o.vscale = static_cast<uint8_t>(scale >> 8);
    o.remainder = static_cast<uint8_t>(scale >> 16);
    if (o.flags & OP_FLAG_RMW) return;
    if (const renderer draw = scaled_renderers[o.depth]) draw(&o, line);
}

// The GPU object hands its phrase to the GPU through the object-data registers and raises GPU
// interrupt 3; the walker does not wait for the GPU.
void gpu_object(uint64_t p0) {
    video.ob_data[0] = static_cast<uint16_t>(p0 >> 48);
    video.ob_data[1] = static_cast<uint16_t>(p0 >> 32);
    video.ob_data[2] = static_cast<uint16_t>(p0 >> 16);
    video.ob_data[3] = static_cast<uint16_t>(p0);
    gpu_interrupt(3);
}

bool branch_taken(uint64_t p0, int line) {
    const uint32_t ypos = bits(p0, 3, 11);
    const uint32_t l = static_cast<uint32_t>(line);
    switch (bits(p0, 14, 2)) {
        case 0: return ypos == BRANCH_ALWAYS || ypos == l;
        case 1: return ypos > l;
        case 2: return ypos < l;
        default: return video.obf & 1;
    }
}

// The line's work so far, the messages its objects logged included.
int32_t line_work_with_messages(uint32_t messages_before) {
    const uint32_t messages = std::min<uint32_t>(log_count - messages_before, OP_LINE_WORK_LIMIT / OP_MESSAGE_WORK);
    return op_line_work + static_cast<int32_t>(messages) * OP_MESSAGE_WORK;
}

// Phrases read per object type: a bitmap has two, a scaled bitmap three, the others one.
constexpr int32_t PHRASES_READ[8] = {2, 3, 1, 1, 1, 1, 1, 1};

// A cut line is reported once per frame: lines run upwards through a frame, so a line at or
// above the previous one starts a new frame.
int previous_line = -1;
bool cut_reported;

void report_cut_line(int line) {
    if (cut_reported) return;
    cut_reported = true;
    log_printf("Object Processor: the object list at %08X needs more than the %d units of work one "
               "line allows on line %d; the rest of its objects are not drawn there\n",
               video.olp, OP_LINE_WORK_LIMIT, line);
}

void fill_background(uint32_t* row) {
    // The 16-bit width read unsigned is very large when HDE lies below HDB1: the fill then stops
    // at the row's end.
    const uint32_t cells = std::min<uint32_t>(op_line_width16, FRAME_PITCH);
    std::fill(row, row + cells, uint32_t{video.bg});
}

}  // namespace

int32_t op_line_work;

int32_t op_clip_width() { return std::clamp<int32_t>(op_line_width, 0, FRAME_PITCH); }

void op_init() {
    for (int i = 0; i < 256; ++i) op_scale_table[i] = static_cast<float>(i * 0.03125);
    op_prepare_scaling();
    op_line_width = 320;
    op_line_width16 = 320;
    previous_line = -1;
    cut_reported = false;
}

int op_process_line(int line) {
    if (line <= previous_line) cut_reported = false;
    previous_line = line;
    const int d = line - static_cast<int>(video.vdb);
    if (d < 0 || d > 2 * static_cast<int>(FRAME_ROWS) - 1) return 1;  // row d / 2 must exist
    if (!frame_buffer || !main_ram) return 1;

    const int32_t divisor = video.pixel_divisor ? video.pixel_divisor : 1;
    const int32_t active = static_cast<int32_t>(video.hde) - static_cast<int32_t>(video.hdb1);
    op_line_width = active / divisor;
    op_line_width16 = static_cast<uint16_t>(op_line_width);

    const int row = d / 2;
    op_line_buffer = frame_buffer + static_cast<size_t>(row) * FRAME_PITCH;
    set_row_timing(row, video.pixel_divisor, active);
    if (video.vmode & 0x80) fill_background(op_line_buffer);

    uint32_t address = video.olp;
    const uint32_t messages_before = log_count;
    for (op_line_work = 0; line_work_with_messages(messages_before) < OP_LINE_WORK_LIMIT;) {
        const uint32_t a = address & OBJECT_ADDRESS_MASK;
        if (a == 0) return 1;
        const uint64_t p0 = read_list_phrase(a);
        op_line_work += PHRASES_READ[p0 & 7] * OP_PHRASE_WORK;
        const uint32_t link = bits(p0, 24, 19) * 8;
        switch (p0 & 7) {
            case OBJ_BITMAP:
                draw_bitmap_object(a, p0, line);
                address = link;
                break;
            case OBJ_SCALED:
                draw_scaled_object(a, p0, line);
                address = link;
                break;
            case OBJ_GPU:
                gpu_object(p0);
                address = a + 8;
                break;
            case OBJ_BRANCH:
                address = branch_taken(p0, line) ? link : a + 8;
                break;
            case OBJ_STOP:
                // The low 16 bits hold TYPE 4, so bit 0 is clear: never the object interrupt.
                gpu_write16(OBF, static_cast<uint16_t>(p0));
                return 1;
            default:
                log_printf("Object Processor error: Unhandled object %d at %08X, %08X %08X\n",
                           static_cast<int>(p0 & 7), a, static_cast<uint32_t>(p0 >> 32),
                           static_cast<uint32_t>(p0));
                return 0;
        }
    }
    report_cut_line(line);
    return 1;
}
