| The 68000 copies GPU code into local RAM and starts it through G_PC and G_CTRL. The GPU runs
| delayed jumps as programs use them, leaves results from 0x1000 and stops itself.
        .include "risc.inc"
        .include "machine.inc"

        lea     0x3FF0, %sp
        start_gpu gpu_image, gpu_image_end, start
idle:   bra.s   idle

        .balign 4
gpu_image:
        risc_begin gpu, G_RAM
start:  movei   #RESULTS,r14
        moveq   #0,r1
        moveq   #10,r2
sum:    add     r2,r1                   | 10 + 9 + ... + 1
        subq    #1,r2
        jr      ne,sum
        nop
        store   r1,(r14)                | 55
        moveq   #0,r3
        jr      over
        addq    #5,r3                   | the delay slot runs
        addq    #16,r3                  | jumped over
over:   store   r3,(r14+1)              | 5
        movei   #first,r4
        movei   #second,r5
        moveq   #0,r6
        jump    (r4)
        jump    (r5)                    | a jump in the delay slot: its target replaces the first
        addq    #1,r6                   | the second jump's delay slot
first:  addq    #2,r6                   | never runs
second: addq    #4,r6
        store   r6,(r14+2)              | 5
        moveq   #3,r7
        moveq   #0,r8
back:   subq    #1,r7
        jr      ne,back
        addq    #1,r8                   | delay slot while the loop runs, next instruction after it
        store   r8,(r14+3)              | 3
        movei   #table,r15
        load    (r15+1),r9              | the table's second long, in local RAM
        store   r9,(r14+4)
here:   move    pc,r10
        store   r10,(r14+5)             | its own address...
        movei   #here,r10
        store   r10,(r14+6)             | ...and the label's
        movei   #stopped,r10
        store   r10,(r14+7)
        movei   #G_CTRL,r11
        moveq   #0,r12
        store   r12,(r11)               | the GPU stops itself
stopped:
        nop
        risc_align 4
table:  dc.l    0x11111111, 0x0BADF00D
        risc_end
gpu_image_end:
