// The CD-ROM unit's registers: the probes of start-up code answered, everything else logged.
#include <set>

#include "chip_test_support.h"
#include "core/cdrom.h"

namespace {

class CdromStub : public ChipTest {};

TEST_F(CdromStub, ProbesAreAnsweredSilentlyAndEverythingElseLogged) {
    cdrom_write16(0xDFFF0A, 0x150A);  // the data word echoes, except the probe value
    EXPECT_EQ(cdrom_read16(0xDFFF0A), 0x170A);
    cdrom_write16(0xDFFF0A, 0x1234);
    EXPECT_EQ(cdrom_read16(0xDFFF0A), 0x1234);
    EXPECT_EQ(cdrom_read32(0xDFFF04), 0u);
    EXPECT_EQ(cdrom_read32(0xDFFF2C), 1u);
    for (uint32_t quiet : {0xDFFF00u, 0xDFFF04u, 0xDFFF10u, 0xDFFF2Cu}) cdrom_write32(quiet, 7);
    std::set<uint32_t> seen;  // the interrupt control's bit 13 flickers from read to read
    for (int n = 0; n < 200; ++n) seen.insert(cdrom_read32(0xDFFF00));
    EXPECT_EQ(seen, (std::set<uint32_t>{0, 0x2000}));
    EXPECT_STREQ(log_text, "");

    // Everything else is logged and reads 1.
    EXPECT_EQ(cdrom_read16(0xDFFF00), 1);
    EXPECT_STREQ(log_text, "CD-ROM: Read16 from 00DFFF00\n");
    EXPECT_EQ(cdrom_read32(0xDFFF08), 1u);
    EXPECT_STREQ(log_text, "CD-ROM: Read32 from 00DFFF08\n");
    cdrom_write16(0xDFFF00, 0xABCD);
    EXPECT_STREQ(log_text, "CD-ROM: Write16 ABCD to 00DFFF00\n");
    cdrom_write32(0xDFFF0A, 0x150A);  // the data word takes words only
    EXPECT_STREQ(log_text, "CD-ROM: Write32 0000150A to 00DFFF0A\n");
    EXPECT_NE(cdrom_read16(0xDFFF0A), 0x170A);
}

}  // namespace
