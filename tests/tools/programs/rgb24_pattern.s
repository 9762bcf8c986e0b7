| RGB 24 test: a 640 x 20 picture (2 clocks per pixel) with one 32-bit bitmap object.
|
| The object is 8 x 4 pixels at x 600, rows 4-7: red, green, blue, 0x123456, then the same four
| again. A 32-bit pixel is stored as the bytes green, red, 0, blue. Background fill with BG 0
| makes every other displayed cell black.

        .equ    OLP_LO,  0xF00020
        .equ    OLP_HI,  0xF00022
        .equ    VMODE,   0xF00028
        .equ    HDB1,    0xF00038
        .equ    HDE,     0xF0003C
        .equ    VDB,     0xF00046
        .equ    VDE,     0xF00048
        .equ    BG,      0xF00058

        .equ    LIST,    0x10000
        .equ    BITMAP,  0x20000        | 32 bytes per row, 4 rows

| Video on, RGB 24 (bits 2-1 = 1), background fill, 2 clocks per pixel (bits 11-9 = 1).
        .equ    VMODE_VALUE, 0x0283

        .text
start:
        move.l  #0x001FF000, %sp

        lea     BITMAP, %a0
        moveq   #7, %d7                 | 4 rows of 2 x 4 pixels
1:      move.l  #0x00FF0000, (%a0)+     | red
        move.l  #0xFF000000, (%a0)+     | green
        move.l  #0x000000FF, (%a0)+     | blue
        move.l  #0x34120056, (%a0)+     | 0x123456
        dbra    %d7, 1b

| Bitmap object: YPOS 48, HEIGHT 4, LINK -> stop at LIST + 16, DATA BITMAP;
| XPOS 600, DEPTH 5, PITCH 1, DWIDTH 4, IWIDTH 4 (2 pixels per phrase).
        lea     LIST, %a0
        move.l  #((BITMAP >> 3) << 11) + (((LIST + 16) >> 3) >> 8), (%a0)+
        move.l  #((((LIST + 16) >> 3) & 0xFF) << 24) + (4 << 14) + (48 << 3), (%a0)+
        move.l  #0, (%a0)+
        move.l  #(4 << 28) + (4 << 18) + (1 << 15) + (5 << 12) + 600, (%a0)+
        clr.l   (%a0)+
        move.l  #4, (%a0)+              | stop object

        move.w  #166, HDB1
        move.w  #166+1280, HDE
        move.w  #40, VDB
        move.w  #80, VDE
        move.w  #0, BG
        move.w  #(LIST & 0xFFFF), OLP_LO
        move.w  #(LIST >> 16), OLP_HI
        move.w  #VMODE_VALUE, VMODE

idle:   bra.s   idle
