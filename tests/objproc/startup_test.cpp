// Start-up prepares the Object Processor and shut-down forgets the row it pointed into.
#include <gtest/gtest.h>

#include <cstring>

#include "core/memory.h"
#include "core/video.h"
#include "objproc/colour_tables.h"
#include "objproc/objproc.h"
#include "support/temp_files.h"
#include "vemocore.h"

namespace {

TEST(ObjectProcessorStartup, InitBuildsTheTablesAndShutdownDropsTheRowPointer) {
    vemo_config config{};
    const std::string program = test_support::write_file("op_program.bin", {0x4E, 0x71});
    std::strncpy(config.rom_path, program.c_str(), sizeof config.rom_path - 1);
    config.load_program = 1;
    config.load_address = 0x4000;
    ASSERT_EQ(vemo_init(&config), 1) << vemo_get_error_string();
    EXPECT_EQ(cry_add(0x1280, 0x1101), 0x2381);

    // A scaled object needs the scale table that start-up fills: HSCALE 64 doubles its pixel.
    ws_write32(main_ram, 0x1000, 0x00000000);  // scaled object, YPOS 0, LINK 0
    ws_write32(main_ram, 0x1004, 0x00000001 | (40 << 3) | (1 << 14));
    ws_write32(main_ram, 0x1008, 0x00000000);
    ws_write32(main_ram, 0x100C, (4 << 12) | (1 << 15) | (1 << 18) | (1 << 28));
    ws_write32(main_ram, 0x1010, 0);
    ws_write32(main_ram, 0x1014, 64 | (32 << 8));
    ws_write16(main_ram, 0x0000, 0x0ABC);  // DATA 0: RAM offset 0
    video.olp = 0x1000;
    video.vdb = 40;
    video.hde = 320;
    EXPECT_EQ(op_process_line(40), 1);
    EXPECT_EQ(frame_buffer[0], 0x0ABCu);
    EXPECT_EQ(frame_buffer[1], 0x0ABCu);
    EXPECT_NE(op_line_buffer, nullptr);

    vemo_shutdown();
    EXPECT_EQ(op_line_buffer, nullptr);
}

}  // namespace
