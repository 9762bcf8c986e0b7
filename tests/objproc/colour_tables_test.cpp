// Adding CRY colours: intensity and the two colour nibbles saturate each on their own.
#include "op_fixture.h"

namespace optest {
namespace {

TEST_F(ObjectProcessorTest, ColourAdditionSaturatesEachFieldOnItsOwn) {
    EXPECT_EQ(cry_add_y[0x1005], 0x15);
    EXPECT_EQ(cry_add_y[0x10F0], 0);        // 16 - 16
    EXPECT_EQ(cry_add_y[0x0580], 0);        // 5 - 128 stops at 0
    EXPECT_EQ(cry_add_y[0xFF7F], 255);      // stops at 255
    EXPECT_EQ(cry_add_cr[0x2371], 0x9400);  // C 2 + 7, R 3 + 1
    EXPECT_EQ(cry_add_cr[0x3F18], 0x4700);  // R 15 - 8
    EXPECT_EQ(cry_add_cr[0xF070], 0xF000);  // C stays at 15
    EXPECT_EQ(cry_add_cr[0x0088], 0x0000);  // negative deltas stop at 0
    EXPECT_EQ(cry_add(0x12FF, 0x0000), 0x12FF);
    EXPECT_EQ(cry_add(0x1280, 0x00FF), 0x127F);  // 0x00FF dims by one ...
    EXPECT_EQ(cry_add(0x4500, 0x00FF), 0x4500);  // ... down to 0
}

}  // namespace
}  // namespace optest
