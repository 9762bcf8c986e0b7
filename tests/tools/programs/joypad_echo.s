| Input echo: shows and sounds what controller 1 holds. Each pass of its loop reads row E of
| the controller (the pad, A and Pause), fills a 16 x 8 16-bit bitmap at the picture's top left
| with a CRY colour made of those bits, writes the colour as a left sample and its negation as
| a right sample, and writes 0x0001 (A released) or 0x00AA (A held) to NOTE, a sound-chip
| address without a register, which the core reports as a message.
        .include "video.s"
        .equ    JOYSTICK, 0xF14000
        .equ    BUTTONS, 0xF14002
        .equ    LTXD, 0xF1A148
        .equ    RTXD, 0xF1A14C
        .equ    SCLK, 0xF1A150
        .equ    NOTE, 0xF1A1F0
        .equ    BITMAP, 0x30000         | 32 bytes per row, 8 rows

        .text
start:
        move.l  #0x001FF000, %sp
        move.w  #0x2700, %sr
        move.l  #19, SCLK               | 26591000 / 40 / 32: 20774 Hz
        lea     LIST, %a0               | the bitmap -> stop
        bitmap_object 40, 8, LIST+16, BITMAP, 0, 4, 1, 4, 4
        clr.l   (%a0)+
        move.l  #4, (%a0)+
        video_on 0x06C1, 0x0000, 520    | CRY, background fill, 4 clocks per pixel
loop:
        move.w  #0xFFFE, JOYSTICK       | row E
        move.w  JOYSTICK, %d0
        move.w  BUTTONS, %d1
        not.w   %d0                     | pressed controls read 0
        not.w   %d1
        andi.w  #0x0F00, %d0            | up, down, left, right
        andi.w  #0x0003, %d1            | pause, A
        move.w  %d1, %d2
        lsl.w   #8, %d2
        lsl.w   #4, %d2
        or.w    %d2, %d0
        ori.w   #0x0080, %d0            | colour: C and R from the controls, Y 0x80
        move.w  %d0, %d2
        swap    %d2
        move.w  %d0, %d2
        lea     BITMAP, %a0
        moveq   #63, %d3
1:      move.l  %d2, (%a0)+
        dbra    %d3, 1b
        ext.l   %d0
        move.l  %d0, LTXD
        neg.l   %d0
        move.l  %d0, RTXD
        moveq   #1, %d4
        btst    #1, %d1                 | A held?
        beq.s   2f
        move.w  #0x00AA, %d4
2:      move.w  %d4, NOTE
        bra.s   loop
