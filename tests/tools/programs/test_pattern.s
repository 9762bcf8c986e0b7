| Test pattern: a 320 x 240 CRY picture built the way a console program builds one.
|
| Runs from RAM at any address (position independent). It fills a CLUT, draws two bitmaps into
| RAM, links them into an object list with a stop object, programs the video registers and then
| spins. What the screen shows (frame-buffer rows and pixel columns):
|
|   background   CRY 0x8840 everywhere else
|   object 1     8-bit CLUT bitmap, 256 x 64 at x 32, rows 16-79: eight 32-pixel bars,
|                CLUT 1-8 in rows 16-47, CLUT 9-16 (a red ramp) in rows 48-79;
|                its pixel 0 of every row is CLUT 17
|   object 2     16-bit bitmap, 64 x 32 at x 128, rows 120-151: four quadrants
|                0x00FF 0xFFFF / 0x0FFF 0x0F80; its pixel 0 of every row is 0x88FF

        .equ    OLP_LO,  0xF00020       | object list pointer, bits 15-0
        .equ    OLP_HI,  0xF00022       | object list pointer, bits 31-16
        .equ    VMODE,   0xF00028
        .equ    HDB1,    0xF00038
        .equ    HDE,     0xF0003C
        .equ    VDB,     0xF00046
        .equ    VDE,     0xF00048
        .equ    BG,      0xF00058
        .equ    CLUT,    0xF00400

        .equ    LIST,    0x10000        | three objects, phrase aligned
        .equ    BITMAP8, 0x20000        | 256 bytes per row, 64 rows
        .equ    BITMAP16, 0x30000       | 128 bytes per row, 32 rows

| 320 pixels of 4 clocks from clock 166; lines 40-519 give frame-buffer rows 0-239.
        .equ    HDB1_VALUE, 166
        .equ    HDE_VALUE,  166 + 1280
        .equ    VDB_VALUE,  40
        .equ    VDE_VALUE,  520
| Video on, CRY, background fill (bit 7), 4 clocks per pixel (bits 11-9 = 3).
        .equ    VMODE_VALUE, 0x06C1
        .equ    BG_VALUE,    0x8840

| Object phrases, as (bits 63-32, bits 31-0).
| Phrase 0: TYPE 0-2, YPOS 3-13, HEIGHT 14-23, LINK 24-42, DATA 43-63 (LINK, DATA in phrases).
| Phrase 1: XPOS 0-11, DEPTH 12-14, PITCH 15-17, DWIDTH 18-27, IWIDTH 28-37.
| The fields do not overlap, so they are added ('|' starts a comment here).
        .macro  bitmap_object type, ypos, height, link, data, xpos, depth, pitch, dwidth, iwidth
        move.l  #(((\data) >> 3) << 11) + (((\link) >> 3) >> 8), (%a0)+
        move.l  #((((\link) >> 3) & 0xFF) << 24) + ((\height) << 14) + ((\ypos) << 3) + (\type), (%a0)+
        move.l  #((\iwidth) >> 4), (%a0)+
        move.l  #(((\iwidth) & 0xF) << 28) + ((\dwidth) << 18) + ((\pitch) << 15) + ((\depth) << 12) + (\xpos), (%a0)+
        .endm

        .text
start:
        move.l  #0x001FF000, %sp        | the reset stack pointer of program mode is odd
        move.w  #0x2700, %sr

| CLUT entries 1 to 17.
        lea     clut_colours(%pc), %a1
        lea     CLUT + 2, %a0
        moveq   #16, %d0
1:      move.w  (%a1)+, (%a0)+
        dbra    %d0, 1b

| Object 1 data: row y, bar b (32 pixels) holds CLUT index b + 1 (y < 32) or b + 9.
        lea     BITMAP8, %a0
        moveq   #63, %d7                | rows, counting down: row = 63 - d7
2:      move.l  #0x01010101, %d1
        cmpi.w  #32, %d7
        bge.s   3f
        move.l  #0x09090909, %d1
3:      moveq   #7, %d6                 | bars
4:      moveq   #7, %d5                 | 8 longs = 32 pixels
5:      move.l  %d1, (%a0)+
        dbra    %d5, 5b
        addi.l  #0x01010101, %d1
        dbra    %d6, 4b
        dbra    %d7, 2b
| Pixel 0 of every row: CLUT 17.
        lea     BITMAP8, %a0
        moveq   #63, %d7
6:      move.b  #17, (%a0)
        lea     256(%a0), %a0
        dbra    %d7, 6b

| Object 2 data: 32 pixels left colour, 32 pixels right colour per row; pixel 0 is the marker.
        lea     BITMAP16, %a0
        moveq   #31, %d7
7:      move.l  #0x00FF00FF, %d1        | rows 0-15: blue | yellow
        move.l  #0xFFFFFFFF, %d2
        cmpi.w  #16, %d7
        bge.s   8f
        move.l  #0x0FFF0FFF, %d1        | rows 16-31: cyan | half cyan
        move.l  #0x0F800F80, %d2
8:      move.l  %d1, (%a0)
        move.w  #0x88FF, (%a0)
        addq.l  #4, %a0
        moveq   #14, %d6
9:      move.l  %d1, (%a0)+
        dbra    %d6, 9b
        moveq   #15, %d6
10:     move.l  %d2, (%a0)+
        dbra    %d6, 10b
        dbra    %d7, 7b

| The object list: bitmap 1 -> bitmap 2 -> stop.
        lea     LIST, %a0
        bitmap_object 0, VDB_VALUE+32, 64, LIST+16, BITMAP8, 32, 3, 1, 32, 32
        bitmap_object 0, VDB_VALUE+240, 32, LIST+32, BITMAP16, 128, 4, 1, 16, 16
        clr.l   (%a0)+
        move.l  #4, (%a0)+

| Video registers last, so nothing half-built is shown.
        move.w  #HDB1_VALUE, HDB1
        move.w  #HDE_VALUE, HDE
        move.w  #VDB_VALUE, VDB
        move.w  #VDE_VALUE, VDE
        move.w  #BG_VALUE, BG
        move.w  #(LIST & 0xFFFF), OLP_LO
        move.w  #(LIST >> 16), OLP_HI
        move.w  #VMODE_VALUE, VMODE

idle:   bra.s   idle

        .even
clut_colours:
        .word   0xF0FF, 0xFFFF, 0x8FFF, 0x0FFF, 0x00FF, 0x80FF, 0x59FF, 0xF080   | 1-8
        .word   0xF01F, 0xF03F, 0xF05F, 0xF07F, 0xF09F, 0xF0BF, 0xF0DF, 0xF0FF   | 9-16: red ramp
        .word   0x88FF                                                          | 17: marker
