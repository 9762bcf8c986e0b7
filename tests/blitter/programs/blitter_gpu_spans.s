| The GPU draws with the Blitter: sixteen Gouraud-shaded spans of 64 16-bit pixels, one blit a
| row, as a polygon filler does. Its interrupt-4 service counts the blits that ended; after the
| last one it leaves that count at RESULTS and what B_CMD read at RESULTS + 4. Pixel (x, y) of
| the 64-pixel-wide area at SCREEN ends up 0x8800 + 4 y + x. Runs in program mode from 0x4000.
        .include "risc.inc"
        .equ    G_FLAGS, 0xF02100
        .equ    G_PC, 0xF02110
        .equ    G_CTRL, 0xF02114
        .equ    G_RAM, 0xF03000
        .equ    A1_BASE, 0xF02200
        .equ    B_I1, 0xF02284
        .equ    SCREEN, 0x20000
        .equ    RESULTS, 0x1000
        .equ    FLAGS16, (4 << 3) + (24 << 9)   | 16 bits, 64 pixels a row, phrase mode
        .equ    GOURD, 0x1000

        lea     0x3FF0, %sp
        lea     gpu_image(%pc), %a0     | the GPU's code into its local RAM, then start it
        lea     G_RAM, %a1
        move.w  #(gpu_image_end - gpu_image) / 4 - 1, %d0
1:      move.l  (%a0)+, (%a1)+
        dbra    %d0, 1b
        move.l  #start, G_PC
        move.l  #1, G_CTRL
idle:   bra.s   idle

        .balign 4
gpu_image:
        risc_begin gpu, G_RAM
        dc.l    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0  | interrupts 0-3: not used
        movei   #blit_done,r29          | interrupt 4: a blit has ended
        jump    (r29)
        nop
        risc_align 16
start:  movei   #0xF03FF0,r31           | the service's stack
        moveq   #0,r20                  | blits ended
        movei   #G_FLAGS,r1
        movei   #0x100,r2               | interrupt 4 enabled
        store   r2,(r1)
        movei   #A1_BASE,r14            | the Blitter's registers as (r14+n): n longs on
        movei   #B_I1,r15
        movei   #SCREEN,r2
        store   r2,(r14)                | A1_BASE
        store   r2,(r14+9)              | A2_BASE
        movei   #FLAGS16,r2
        store   r2,(r14+1)              | A1_FLAGS
        store   r2,(r14+10)             | A2_FLAGS
        moveq   #0,r2
        store   r2,(r14+6)              | A1_FPIXEL
        movei   #0x88008800,r2
        store   r2,(r14+26)             | B_PATD: colour 0x88 for all four pixels of a phrase
        store   r2,(r14+27)
        movei   #0x40000,r2
        store   r2,(r14+28)             | B_IINC: 4 per pixel of each intensity
        movei   #0x10040,r2
        store   r2,(r14+15)             | B_COUNT: 1 row of 64
        movei   #0x10000,r7
        movei   #GOURD,r8
        moveq   #16,r10
        movei   #row,r12
        moveq   #0,r5                   | y
row:    move    r5,r3
        shlq    #16,r3
        store   r3,(r14+3)              | A1_PIXEL (0, y)
        move    r5,r6
        shlq    #18,r6                  | 4 y, in 8.16
        store   r6,(r14+31)             | B_I3: pixels 0, 4, 8...
        add     r7,r6
        store   r6,(r14+32)             | B_I2: pixels 1, 5, 9...
        add     r7,r6
        store   r6,(r15)                | B_I1
        add     r7,r6
        store   r6,(r15+1)              | B_I0
        store   r8,(r14+14)             | B_CMD: the span is drawn, then interrupt 4
        load    (r14+14),r9             | B_CMD reads 1: idle again
        addq    #1,r5
        cmp     r10,r5
        jump    ne,(r12)
        nop
        movei   #RESULTS,r11
        store   r20,(r11)
        addq    #4,r11
        store   r9,(r11)
halt:   jr      halt
        nop

blit_done:
        addq    #1,r20
        movei   #G_FLAGS,r22
        load    (r22),r23
        bclr    #3,r23                  | leave service...
        bset    #13,r23                 | ...and clear latch 4
        load    (r31),r24
        addq    #2,r24
        addq    #4,r31
        jump    (r24)
        store   r23,(r22)               | in the delay slot
        risc_align 4
        risc_end
gpu_image_end:
