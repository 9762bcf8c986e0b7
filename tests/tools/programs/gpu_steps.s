| GPU steps: the 68000 copies a short GPU program into the GPU's local RAM and starts the GPU,
| then idles. The GPU loads a value, adds to it, copies and doubles it, and then waits in a
| loop of its own: a trace shows each step and the register it wrote.
        .include "risc.inc"
        .include "risc_start.s"
        .equ    G_PC, 0xF02110
        .equ    G_CTRL, 0xF02114
        .equ    GPU_RAM, 0xF03000

        .text
start:
        move.l  #0x001FF000, %sp
        move.w  #0x2700, %sr
        risc_start gpu_image, gpu_image_end, GPU_RAM, G_PC, G_CTRL
idle:   bra.s   idle

        .balign 4
gpu_image:
        risc_begin gpu, 0xF03000
        movei   #0x1234,r1
        addq    #2,r1
        move    r1,r2
        add     r1,r2
wait:   jr      wait
        nop
        risc_end
gpu_image_end:
