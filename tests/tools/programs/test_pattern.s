| Test pattern: a 320 x 240 CRY picture built the way a console program builds one. Runs from
| RAM at any address (position independent). What the screen shows (rows and pixel columns):
|
|   background   CRY 0x8840 everywhere else
|   object 1     8-bit CLUT bitmap, 256 x 64 at x 32, rows 16-79: eight 32-pixel bars,
|                CLUT 1-8 in rows 16-47, CLUT 9-16 (a red ramp) in rows 48-79;
|                its pixel 0 of every row is CLUT 17
|   object 2     16-bit bitmap, 64 x 32 at x 128, rows 120-151: four quadrants
|                0x00FF 0xFFFF / 0x0FFF 0x0F80; its pixel 0 of every row is 0x88FF
        .include "video.s"
        .equ    BITMAP8, 0x20000        | 256 bytes per row, 64 rows
        .equ    BITMAP16, 0x30000       | 128 bytes per row, 32 rows

        .text
start:
        move.l  #0x001FF000, %sp        | the reset stack pointer of program mode is odd
        move.w  #0x2700, %sr

        lea     clut_colours(%pc), %a1  | CLUT entries 1 to 17
        lea     CLUT + 2, %a0
        moveq   #16, %d0
1:      move.w  (%a1)+, (%a0)+
        dbra    %d0, 1b

| Object 1: row y, bar b (32 pixels) holds CLUT index b + 1 (y < 32) or b + 9; pixel 0 CLUT 17.
        lea     BITMAP8, %a0
        moveq   #63, %d7                | rows, counting down: row = 63 - d7
2:      move.l  #0x01010101, %d1
        cmpi.w  #32, %d7
        bge.s   3f
        move.l  #0x09090909, %d1
3:      moveq   #63, %d6                | 8 bars of 8 longs
4:      move.l  %d1, (%a0)+
        moveq   #7, %d5
        and.w   %d6, %d5
        bne.s   5f
        addi.l  #0x01010101, %d1
5:      dbra    %d6, 4b
        move.b  #17, -256(%a0)
        dbra    %d7, 2b

| Object 2: 32 pixels left colour, 32 pixels right colour per row; pixel 0 is the marker.
        lea     BITMAP16, %a0
        moveq   #31, %d7
6:      move.l  #0x00FF00FF, %d1        | rows 0-15: blue | yellow
        move.l  #0xFFFFFFFF, %d2
        cmpi.w  #16, %d7
        bge.s   7f
        move.l  #0x0FFF0FFF, %d1        | rows 16-31: cyan | half cyan
        move.l  #0x0F800F80, %d2
7:      moveq   #15, %d6
8:      move.l  %d2, 64(%a0)
        move.l  %d1, (%a0)+
        dbra    %d6, 8b
        move.w  #0x88FF, -64(%a0)
        lea     64(%a0), %a0
        dbra    %d7, 6b

        lea     LIST, %a0               | bitmap 1 -> bitmap 2 -> stop
        bitmap_object 40+32, 64, LIST+16, BITMAP8, 32, 3, 1, 32, 32
        bitmap_object 40+240, 32, LIST+32, BITMAP16, 128, 4, 1, 16, 16
        clr.l   (%a0)+                  | stop object
        move.l  #4, (%a0)+
| Video on, CRY, background fill (bit 7), 4 clocks per pixel (bits 11-9 = 3); lines 40-519.
        video_on 0x06C1, 0x8840, 520
idle:   bra.s   idle

        .even
clut_colours:
        .word   0xF0FF, 0xFFFF, 0x8FFF, 0x0FFF, 0x00FF, 0x80FF, 0x59FF, 0xF080   | 1-8
        .word   0xF01F, 0xF03F, 0xF05F, 0xF07F, 0xF09F, 0xF0BF, 0xF0DF, 0xF0FF   | 9-16: red ramp
        .word   0x88FF                                                          | 17: marker
