| DSP counter: the 68000 copies a DSP program into the DSP's local RAM, sets the sample rate and
| starts the DSP, then idles. The DSP writes a counting sample, 0x0100 upwards, to both channels,
| then waits about 180 instructions, and again: every sample of the run is the DSP's.
        .equ    SCLK, 0xF1A150
        .equ    D_PC, 0xF1A110
        .equ    D_CTRL, 0xF1A114
        .equ    DSP_RAM, 0xF1B000

        .text
start:
        move.l  #0x001FF000, %sp
        move.w  #0x2700, %sr
        move.l  #19, SCLK               | 26591000 / 40 / 32: 20774 Hz
        lea     dsp_code(%pc), %a0
        lea     DSP_RAM, %a1
        moveq   #(dsp_end - dsp_code) / 2 - 1, %d0
1:      move.w  (%a0)+, (%a1)+
        dbra    %d0, 1b
        move.l  #DSP_RAM, D_PC
        move.l  #1, D_CTRL              | go
idle:   bra.s   idle

| DSP words: opcode in bits 15-10, first field 9-5, second field 4-0; movei's long low word first.
        .even
dsp_code:
        .word   0x9801, 0xA148, 0x00F1  | F1B000 movei #LTXD,r1
        .word   0x9802, 0xA14C, 0x00F1  | F1B006 movei #RTXD,r2
        .word   0x9803, 0x0100, 0x0000  | F1B00C movei #0x100,r3
        .word   0xBC23                  | F1B012 store r3,(r1)
        .word   0xBC43                  | F1B014 store r3,(r2)
        .word   0x0823                  | F1B016 addq #1,r3
        .word   0x9804, 0x003C, 0x0000  | F1B018 movei #60,r4
        .word   0x1824                  | F1B01E subq #1,r4
        .word   0xD7C1                  | F1B020 jr ne,F1B01E
        .word   0xE400                  | F1B022 nop
        .word   0xD6C0                  | F1B024 jr t,F1B012
        .word   0xE400                  | F1B026 nop
dsp_end:
