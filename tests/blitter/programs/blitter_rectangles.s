| Blitter screen: every frame the 68000 clears a 320 x 240 16-bit CRY screen with the Blitter
| and redraws it, as a console program draws its frames. Runs from RAM at any address
| (position independent). Rows and columns of the screen:
|
|   background   0x8840 (the clear)
|   rectangle    0xF0FF, x 16-79, rows 16-47 (a fill)
|   band         rows 100-139: 0x4400 + x up to x 255, then 0x44FF (one Gouraud span per row)
|   copy         the rectangle's pixels again at x 240-303, rows 180-211 (a copy, A2 -> A1)
|
| The long at FRAMES counts the frames drawn.
        .include "../../tools/programs/video.s"
        .equ    SCREEN, 0x20000         | 640 bytes a row
        .equ    FRAMES, 0x1000
        .equ    VC_REG, 0xF00006

        .equ    A1_BASE, 0xF02200
        .equ    A1_FLAGS, 0xF02204
        .equ    A1_PIXEL, 0xF0220C
        .equ    A1_STEP, 0xF02210
        .equ    A1_FPIXEL, 0xF02218
        .equ    A2_BASE, 0xF02224
        .equ    A2_FLAGS, 0xF02228
        .equ    A2_PIXEL, 0xF02230
        .equ    A2_STEP, 0xF02234
        .equ    B_CMD, 0xF02238
        .equ    B_COUNT, 0xF0223C
        .equ    B_PATD, 0xF02268
        .equ    B_IINC, 0xF02270
        .equ    B_I3, 0xF0227C

        .equ    SCREEN_FLAGS, (4 << 3) + (33 << 9)     | 16 bits, 320 wide, phrase mode
        .equ    FILL, 0x00010200                        | PATDSEL, UPDA1
        .equ    SHADE, 0x00001000                       | GOURD
        .equ    COPY, 0x01800601                        | SRCEN, LFU 12 (source), UPDA1, UPDA2

        .text
start:
        move.l  #0x001FF000, %sp
        move.w  #0x2700, %sr
        clr.l   FRAMES
        lea     LIST, %a0               | the screen as one bitmap object, then stop
        bitmap_object 40, 240, LIST+16, SCREEN, 0, 4, 1, 80, 80
        clr.l   (%a0)+
        move.l  #4, (%a0)+
        bsr     draw
        video_on 0x06C1, 0x0000, 520

frame:  cmpi.w  #500, VC_REG            | wait for the bottom of the screen...
        blo.s   frame
1:      cmpi.w  #500, VC_REG            | ...and for the next frame's top
        bhs.s   1b
        bsr     draw
        bra.s   frame

| Waits until the Blitter reads idle (bit 0 of B_CMD).
        .macro  wait_blitter
1:      move.l  B_CMD, %d0
        btst    #0, %d0
        beq.s   1b
        .endm

draw:
        move.l  #SCREEN, A1_BASE
        move.l  #SCREEN_FLAGS, A1_FLAGS
        move.l  #SCREEN, A2_BASE
        move.l  #SCREEN_FLAGS, A2_FLAGS
        move.l  #0, A1_FPIXEL           | (CLR would read the register first)
| Clear.
        move.l  #0, A1_PIXEL
        move.l  #0x0001FEC0, A1_STEP    | x -320, y +1
        move.l  #0x88408840, B_PATD
        move.l  #0x88408840, B_PATD+4
        move.l  #(240 << 16) + 320, B_COUNT
        move.l  #FILL, B_CMD
        wait_blitter
| Rectangle.
        move.l  #(16 << 16) + 16, A1_PIXEL
        move.l  #0x0001FFC0, A1_STEP    | x -64, y +1
        move.l  #0xF0FFF0FF, B_PATD+4
        move.l  #(32 << 16) + 64, B_COUNT
        move.l  #FILL, B_CMD
        wait_blitter
| Band: one span per row, each starting again from the same four intensities.
        move.l  #0x44004400, B_PATD
        move.l  #0x44004400, B_PATD+4
        move.l  #0x00040000, B_IINC
        move.l  #(1 << 16) + 320, B_COUNT
        move.l  #(100 << 16), %d1       | row 100, x 0
        moveq   #39, %d2
2:      move.l  %d1, A1_PIXEL
        lea     B_I3, %a1
        moveq   #0, %d0
        moveq   #3, %d3
3:      move.l  %d0, (%a1)+             | B_I3..B_I0: intensity x for pixel x
        addi.l  #0x10000, %d0
        dbra    %d3, 3b
        move.l  #SHADE, B_CMD
        wait_blitter
        addi.l  #0x10000, %d1
        dbra    %d2, 2b
| Copy of the rectangle.
        move.l  #(16 << 16) + 16, A2_PIXEL
        move.l  #0x0001FFC0, A2_STEP
        move.l  #(180 << 16) + 240, A1_PIXEL
        move.l  #(32 << 16) + 64, B_COUNT
        move.l  #COPY, B_CMD
        wait_blitter
        addq.l  #1, FRAMES
        rts
