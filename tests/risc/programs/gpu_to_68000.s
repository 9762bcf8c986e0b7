| The GPU interrupts the 68000 three times through G_CTRL bit 1; the 68000's level-2 handler
| (vector at 0x100, INT1 source bit 1 enabled) counts them and notes INT1's pending bits.
        .include "risc.inc"
        .include "machine.inc"

        lea     0x3FF0, %sp
        lea     handler(%pc), %a0
        move.l  %a0, 0x100
        clr.l   RESULTS
        move.w  #0x0002, INT1           | the GPU source
        move.w  #0x2000, %sr
        start_gpu gpu_image, gpu_image_end, start
idle:   bra.s   idle

handler:
        addq.l  #1, RESULTS
        move.w  INT1, RESULTS+4
        move.w  #0x0202, INT1           | acknowledge, keep the GPU source enabled
        rte

        .balign 4
gpu_image:
        risc_begin gpu, G_RAM
start:  movei   #G_CTRL,r1
        moveq   #3,r2                   | running, interrupt the 68000
        moveq   #3,r3
again:  store   r2,(r1)
        movei   #200,r4
wait:   subq    #1,r4
        jr      ne,wait
        nop
        subq    #1,r3
        jr      ne,again
        nop
        moveq   #0,r2
        store   r2,(r1)                 | stop
        nop
        risc_align 4
        risc_end
gpu_image_end:
