| Cartridge program (runs from 0x802000): reads EEPROM word 0, adds one, writes it back and
| saves (write-disable), so each start counts one more. Leaves the count at 0x1000 once saved.
        .equ    JOYSTICK, 0xF14000      | bit 0: the EEPROM's data out
        .equ    EEPROM_DATA_IN, 0xF14800

start:
        move.w  #0x180, %d0             | read word 0
        bsr.s   command
        moveq   #15, %d1                | clock 16 bits into d2, most significant first
1:      move.w  JOYSTICK, %d3
        lsr.w   #1, %d3
        addx.w  %d2, %d2
        dbra    %d1, 1b
        addq.w  #1, %d2
        move.w  #0x130, %d0             | write enable
        bsr.s   command
        move.w  #0x140, %d0             | write word 0
        bsr.s   command
        move.w  %d2, %d0
        moveq   #16, %d1
        bsr.s   send_bits
        move.w  #0x100, %d0             | write disable: saves the file
        bsr.s   command
        move.w  %d2, 0x1000
idle:
        bra.s   idle

| Resets the serial interface (a read of 0xF15000), then sends the nine command bits in d0.
command:
        tst.w   0xF15000
        moveq   #9, %d1
| Sends the low d1 bits of d0, most significant first.
send_bits:
        subq.w  #1, %d1
1:      move.w  %d0, %d3
        lsr.w   %d1, %d3
        andi.w  #1, %d3
        move.w  %d3, EEPROM_DATA_IN
        dbra    %d1, 1b
        rts
