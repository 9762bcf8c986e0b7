| Cartridge program: reads EEPROM word 0, adds one, writes it back and saves (the
| erase/write-disable command), then waits. Each start of the machine counts one more.
| Position-independent: the cartridge runs it from 0x802000.

        .equ    JOYSTICK, 0xF14000      | bit 0: the EEPROM's data out
        .equ    EEPROM_DATA_IN, 0xF14800
        .equ    EEPROM_RESET, 0xF15000

        .equ    CMD_READ, 0x180         | start 1, opcode 10, address
        .equ    CMD_WRITE, 0x140        | start 1, opcode 01, address
        .equ    CMD_ENABLE, 0x130       | start 1, opcode 00, 11xxxx
        .equ    CMD_DISABLE, 0x100      | start 1, opcode 00, 00xxxx

        | Results in RAM, read by the test.
        .equ    COUNT_WRITTEN, 0x1000   | word: the value saved
        .equ    DONE, 0x1002            | word: 0x600D once saved

start:
        move.w  #0x2700, %sr
        clr.w   DONE
        move.w  #CMD_READ + 0, %d0
        bsr.s   command
        bsr.s   receive_word            | -> d2
        addq.w  #1, %d2

        move.w  #CMD_ENABLE, %d0
        bsr.s   command
        move.w  #CMD_WRITE + 0, %d0
        bsr.s   command
        move.w  %d2, %d0
        moveq   #16, %d1
        bsr.s   send_bits
        move.w  #CMD_DISABLE, %d0
        bsr.s   command

        move.w  %d2, COUNT_WRITTEN
        move.w  #0x600D, DONE
idle:
        bra.s   idle

| Resets the serial interface and sends the nine command bits in d0.
command:
        tst.w   EEPROM_RESET
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

| Clocks sixteen bits out of the EEPROM into d2, most significant first.
receive_word:
        moveq   #15, %d1
        moveq   #0, %d2
1:      move.w  JOYSTICK, %d3
        andi.w  #1, %d3
        add.w   %d2, %d2
        or.w    %d3, %d2
        dbra    %d1, 1b
        rts
