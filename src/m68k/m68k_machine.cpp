// This machine's 68000 memory map: instructions straight from main RAM, the cartridge ROM and
// the boot ROM; every data access, at every address, through the bus. The bus serves everything
// below BUS_RAM_END from main RAM, and reads from BUS_CART_BASE to BUS_CDROM_BASE from the
// cartridge ROM (ignoring writes there), by fixed rules; the core reaches those ranges directly
// (its RAM and ROM windows) with the same results, and only the rest calls the bus functions.
#include "core/bus.h"
#include "core/memory.h"
#include "m68k/m68k_internal.h"

namespace {

constexpr uint32_t RAM_LOW = 0x000000, RAM_HIGH = 0x1FFFFF;
constexpr uint32_t CART_LOW = 0x800000, CART_HIGH = 0xDFFFFF;
constexpr uint32_t BOOT_LOW = 0xE00000, BOOT_HIGH = 0xE1FFFF;
constexpr uint32_t ALL_LOW = 0x000000, ALL_HIGH = 0xFFFFFF;
constexpr uint32_t END = 0xFFFFFFFF;

m68k_fetch_region fetch_table[4];
m68k_data_region read8_table[2], read16_table[2], read32_table[2];
m68k_data_region write8_table[2], write16_table[2], write32_table[2];

// The bus functions take and return exactly their width; the region handlers carry 32 bits.
uint32_t read8(uint32_t a) { return bus_read8(a); }
uint32_t read16(uint32_t a) { return bus_read16(a); }
uint32_t read32(uint32_t a) { return bus_read32(a); }
void write8(uint32_t a, uint32_t v) { bus_write8(a, static_cast<uint8_t>(v)); }
void write16(uint32_t a, uint32_t v) { bus_write16(a, static_cast<uint16_t>(v)); }
void write32(uint32_t a, uint32_t v) { bus_write32(a, v); }

uintptr_t host(const uint8_t* buffer, uint32_t low) { return reinterpret_cast<uintptr_t>(buffer) - low; }

void bus_table(m68k_data_region* table, m68k_read_handler read, m68k_write_handler write) {
    m68k_set_data_region(&table[0], ALL_LOW, ALL_HIGH, 0, read, write);
    m68k_set_data_region(&table[1], END, END, 0, nullptr, nullptr);
}

}  // namespace

int m68k_setup() {
    m68k_set_fetch_region(&fetch_table[0], RAM_LOW, RAM_HIGH, host(main_ram, RAM_LOW));
    m68k_set_fetch_region(&fetch_table[1], CART_LOW, CART_HIGH, host(cart_rom, CART_LOW));
    m68k_set_fetch_region(&fetch_table[2], BOOT_LOW, BOOT_HIGH, host(boot_rom, BOOT_LOW));
    m68k_set_fetch_region(&fetch_table[3], END, END, 0);
    bus_table(read8_table, read8, nullptr);
    bus_table(read16_table, read16, nullptr);
    bus_table(read32_table, read32, nullptr);
    bus_table(write8_table, nullptr, write8);
    bus_table(write16_table, nullptr, write16);
    bus_table(write32_table, nullptr, write32);
    m68k_init();
    m68k_set_fetch_regions(fetch_table);
    m68k_set_read8_regions(read8_table);
    m68k_set_read16_regions(read16_table);
    m68k_set_read32_regions(read32_table);
    m68k_set_write8_regions(write8_table);
    m68k_set_write16_regions(write16_table);
    m68k_set_write32_regions(write32_table);
    m68k_set_ram_window(main_ram, BUS_RAM_END, MAIN_RAM_SIZE - 1);
    m68k_set_rom_window(cart_rom, BUS_CART_BASE, BUS_CDROM_BASE - BUS_CART_BASE, CART_ROM_SIZE);
    return m68k_reset() == M68K_OK ? 1 : 0;
}
