// Adding CRY colours: intensity and the two colour nibbles saturate each on their own.
#include "op_fixture.h"

namespace optest {
namespace {

TEST_F(ObjectProcessorTest, IntensityAddsASignedByteAndSaturates) {
    EXPECT_EQ(cry_add_y[0x1005], 0x15);
    EXPECT_EQ(cry_add_y[0x10F0], 0);      // 16 - 16
    EXPECT_EQ(cry_add_y[0x0580], 0);      // 5 - 128 stops at 0
    EXPECT_EQ(cry_add_y[0xFF7F], 255);    // stops at 255
}

TEST_F(ObjectProcessorTest, ColourNibblesAddSignedDeltasAndSaturate) {
    EXPECT_EQ(cry_add_cr[0x2371], 0x9400);  // C 2 + 7, R 3 + 1
    EXPECT_EQ(cry_add_cr[0x3F18], 0x4700);  // R 15 - 8
    EXPECT_EQ(cry_add_cr[0xF070], 0xF000);  // C stays at 15
    EXPECT_EQ(cry_add_cr[0x0088], 0x0000);  // negative deltas stop at 0
}

TEST_F(ObjectProcessorTest, AddingZeroKeepsAColourAndAllOnesDimsIt) {
    for (uint16_t d : {0x0000, 0x1280, 0xFFFF, 0x4501}) {
        EXPECT_EQ(cry_add(d, 0x0000), d);
        // 0x00FF is -1 in the intensity byte and 0 in both colour nibbles.
        EXPECT_EQ(cry_add(d, 0x00FF), (d & 0xFF00) | ((d & 0xFF) ? (d & 0xFF) - 1 : 0));
    }
}

}  // namespace
}  // namespace optest
