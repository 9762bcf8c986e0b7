| The DSP plays a counting sample pair on every audio tick: the 68000 sets the serial clock
| (SCLK 19: 20774 Hz), copies the DSP code into its local RAM and starts it; the DSP enables its
| interrupt 1 and idles; each interrupt writes the counter to the left output and its
| complement to the right, then returns.
        .include "risc.inc"
        .include "machine.inc"

        lea     0x3FF0, %sp
        copy_to_local dsp_image, dsp_image_end, D_RAM
        move.l  #19, SCLK
        move.l  #start, D_PC
        move.l  #1, D_CTRL
idle:   bra.s   idle

        .balign 4
dsp_image:
        risc_begin dsp, D_RAM
        movei   #start,r0               | interrupt 0: not used
        jump    (r0)
        nop
        risc_align 16
        movei   #tick,r29               | interrupt 1: the audio tick
        jump    (r29)
        nop
        risc_align 16
start:  movei   #0xF1D000,r31           | the stack: top of local RAM
        movei   #LEFT_SAMPLE,r14
        moveq   #0,r25
        movei   #D_FLAGS,r1
        movei   #0x20,r2                | interrupt 1 enabled, bank 0
        store   r2,(r1)
wait:   jr      wait
        nop

tick:   store   r25,(r14)               | left
        move    r25,r24
        not     r24
        store   r24,(r14+1)             | right, at 0xF1A14C
        addq    #1,r25
        movei   #D_FLAGS,r20
        load    (r20),r21
        bclr    #3,r21                  | leave service
        bset    #10,r21                 | clear latch 1
        load    (r31),r22
        addq    #2,r22
        addq    #4,r31
        jump    (r22)
        store   r21,(r20)
        risc_align 4
        risc_end
dsp_image_end:
