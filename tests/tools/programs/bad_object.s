| A broken object list: its only object has type 5, which the Object Processor does not know,
| so the first displayed line stops the frame.

        .equ    OLP_LO,  0xF00020
        .equ    OLP_HI,  0xF00022
        .equ    VMODE,   0xF00028
        .equ    HDB1,    0xF00038
        .equ    HDE,     0xF0003C
        .equ    VDB,     0xF00046
        .equ    VDE,     0xF00048
        .equ    LIST,    0x10000

        .text
start:
        move.l  #0x001FF000, %sp
        lea     LIST, %a0
        clr.l   (%a0)+
        move.l  #5, (%a0)+              | TYPE 5
        move.w  #166, HDB1
        move.w  #166+1280, HDE
        move.w  #40, VDB
        move.w  #520, VDE
        move.w  #(LIST & 0xFFFF), OLP_LO
        move.w  #(LIST >> 16), OLP_HI
        move.w  #0x06C1, VMODE
idle:   bra.s   idle
