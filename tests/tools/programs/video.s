| Included by the test programs. Every picture is 1280 clocks wide from clock 166 and starts
| at line 40; the object list is at LIST.

        .equ    OLP_LO,  0xF00020       | object list pointer, bits 15-0
        .equ    OLP_HI,  0xF00022       | bits 31-16
        .equ    VMODE,   0xF00028
        .equ    HDB1,    0xF00038
        .equ    HDE,     0xF0003C
        .equ    VDB,     0xF00046
        .equ    VDE,     0xF00048
        .equ    BG,      0xF00058
        .equ    CLUT,    0xF00400
        .equ    LIST,    0x10000        | phrase aligned

| A bitmap object at (%a0)+, as (bits 63-32, bits 31-0) of two phrases:
| phrase 0: TYPE 0-2 (0), YPOS 3-13, HEIGHT 14-23, LINK 24-42, DATA 43-63 (LINK, DATA in phrases);
| phrase 1: XPOS 0-11, DEPTH 12-14, PITCH 15-17, DWIDTH 18-27, IWIDTH 28-37.
| The fields do not overlap, so they are added ('|' starts a comment here).
        .macro  bitmap_object ypos, height, link, data, xpos, depth, pitch, dwidth, iwidth
        move.l  #(((\data) >> 3) << 11) + (((\link) >> 3) >> 8), (%a0)+
        move.l  #((((\link) >> 3) & 0xFF) << 24) + ((\height) << 14) + ((\ypos) << 3), (%a0)+
        move.l  #((\iwidth) >> 4), (%a0)+
        move.l  #(((\iwidth) & 0xF) << 28) + ((\dwidth) << 18) + ((\pitch) << 15) + ((\depth) << 12) + (\xpos), (%a0)+
        .endm

| Video registers last, so that nothing half-built is shown.
        .macro  video_on vmode, bg, vde
        move.w  #166, HDB1
        move.w  #166+1280, HDE
        move.w  #40, VDB
        move.w  #\vde, VDE
        move.w  #\bg, BG
        move.w  #(LIST & 0xFFFF), OLP_LO
        move.w  #(LIST >> 16), OLP_HI
        move.w  #\vmode, VMODE
        .endm
