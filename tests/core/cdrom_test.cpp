// The CD-ROM unit's registers: probes answered, everything else logged.
#include "chip_test_support.h"
#include "core/cdrom.h"

namespace {

class CdromStub : public ChipTest {};

TEST_F(CdromStub, DataWordEchoesExceptTheProbeValue) {
    cdrom_write16(0xDFFF0A, 0x150A);
    EXPECT_EQ(cdrom_read16(0xDFFF0A), 0x170A);
    cdrom_write16(0xDFFF0A, 0x1234);
    EXPECT_EQ(cdrom_read16(0xDFFF0A), 0x1234);
    EXPECT_EQ(last_message(), "");
}

TEST_F(CdromStub, InterruptControlFlickersBit13Only) {
    bool seen_zero = false, seen_set = false;
    for (int n = 0; n < 200; ++n) {
        const uint32_t v = cdrom_read32(0xDFFF00);
        ASSERT_TRUE(v == 0 || v == 0x2000) << std::hex << v;
        (v ? seen_set : seen_zero) = true;
    }
    EXPECT_TRUE(seen_zero);
    EXPECT_TRUE(seen_set);
}

TEST_F(CdromStub, KnownRegistersAreSilentAndTheRestAreLoggedReadingOne) {
    EXPECT_EQ(cdrom_read32(0xDFFF04), 0u);
    EXPECT_EQ(cdrom_read32(0xDFFF2C), 1u);
    for (uint32_t quiet : {0xDFFF00u, 0xDFFF04u, 0xDFFF10u, 0xDFFF2Cu}) cdrom_write32(quiet, 7);
    EXPECT_EQ(last_message(), "");

    EXPECT_EQ(cdrom_read16(0xDFFF00), 1);
    EXPECT_EQ(last_message(), "CD-ROM: Read16 from 00DFFF00\n");
    EXPECT_EQ(cdrom_read32(0xDFFF08), 1u);
    EXPECT_EQ(last_message(), "CD-ROM: Read32 from 00DFFF08\n");
    cdrom_write16(0xDFFF00, 0xABCD);
    EXPECT_EQ(last_message(), "CD-ROM: Write16 ABCD to 00DFFF00\n");
    cdrom_write32(0xDFFF0A, 0x150A);  // the data word takes words only
    EXPECT_EQ(last_message(), "CD-ROM: Write32 0000150A to 00DFFF0A\n");
    EXPECT_NE(cdrom_read16(0xDFFF0A), 0x170A);
}

}  // namespace
