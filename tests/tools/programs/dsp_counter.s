| DSP counter: the 68000 copies a DSP program into the DSP's local RAM, sets the sample rate and
| starts the DSP, then idles. The DSP writes a counting sample, 0x0100 upwards, to both channels,
| then waits about 180 instructions, and again: every sample of the run is the DSP's.
        .include "risc.inc"
        .include "risc_start.s"
        .equ    SCLK, 0xF1A150
        .equ    D_PC, 0xF1A110
        .equ    D_CTRL, 0xF1A114
        .equ    DSP_RAM, 0xF1B000

        .text
start:
        move.l  #0x001FF000, %sp
        move.w  #0x2700, %sr
        move.l  #19, SCLK               | 26591000 / 40 / 32: 20774 Hz
        risc_start dsp_image, dsp_image_end, DSP_RAM, D_PC, D_CTRL
idle:   bra.s   idle

        .balign 4
dsp_image:
        risc_begin dsp, 0xF1B000
        movei   #0xF1A148,r1            | LTXD
        movei   #0xF1A14C,r2            | RTXD
        movei   #0x100,r3
sample: store   r3,(r1)
        store   r3,(r2)
        addq    #1,r3
        movei   #60,r4
wait:   subq    #1,r4
        jr      ne,wait
        nop
        jr      sample
        nop
        risc_end
dsp_image_end:
