// The dispatch table as m68k_init expands it from the packed form.
#include <set>

#include "m68k_test_machine.h"

namespace {

using DispatchTable = m68k_test::Machine;

TEST_F(DispatchTable, ExpandsFromUnderFortyKilobytesToOneHandlerPerOpcodeAndTheSharedCount) {
    EXPECT_LT(m68k_packed_dispatch_words * 2, 40u * 1024);
    std::set<m68k_handler> distinct;
    for (uint32_t op = 0; op < M68K_TABLE_SIZE; ++op) {
        ASSERT_NE(m68k_dispatch_table[op], nullptr) << std::hex << op;
        distinct.insert(m68k_dispatch_table[op]);
    }
    EXPECT_EQ(distinct.size(), 7234u);
    EXPECT_EQ(m68k_handler_count, 7234u);
}

TEST_F(DispatchTable, NonInstructionsLineAAndLineFReachTheirExceptionHandlers) {
    EXPECT_EQ(m68k_dispatch_table[0x4AFC], m68k_op_illegal_instruction);
    EXPECT_EQ(m68k_dispatch_table[0x42C0], m68k_op_illegal);  // MOVE from CCR: a later processor's
    EXPECT_EQ(m68k_dispatch_table[0x4E7A], m68k_op_illegal);  // MOVEC
    EXPECT_EQ(m68k_dispatch_table[0x4A48], m68k_op_illegal);  // TST An
    EXPECT_EQ(m68k_dispatch_table[0x0C3A], m68k_op_illegal);  // CMPI d16(PC)
    for (uint32_t op = 0xA000; op <= 0xAFFF; ++op) ASSERT_EQ(m68k_dispatch_table[op], m68k_op_line_a);
    for (uint32_t op = 0xF000; op <= 0xFFFF; ++op) ASSERT_EQ(m68k_dispatch_table[op], m68k_op_line_f);
}

}  // namespace
