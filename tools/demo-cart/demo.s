| The demo cartridge: one source file with the 68000 program and the GPU and DSP code it starts.
|
| What it shows: a 320 x 240 CRY screen with three objects. A 16-bit canvas (320 x 200) on which
| the GPU, once per frame, clears the area with one Blitter fill and draws three diamonds whose
| rows are Gouraud-shaded spans (dark at the edges, bright in the middle) moving left and right;
| above the diamonds a row of small squares counts the starts of the cartridge, a number kept in
| the EEPROM. An 8-bit CLUT banner of rainbow stripes sits above the canvas, and a 16 x 16
| 16-bit yellow ball scaled to 32 x 32 rolls along the bottom with a transparent surround. The DSP
| plays a square-wave tone on the audio ticks (20774 Hz). While button A is held the diamonds
| grow, change colour and the tone goes up by a fifth.
|
| The image is a cartridge: 0x2000 bytes of header, then the code, which starts at 0x802000.
        .include "risc.inc"

| Shared variables in main RAM, written by the 68000, read by the GPU and the DSP.
        .equ    V_FRAME, 0x1000         | frames since start
        .equ    V_MODE, 0x1004          | 1 while button A is held
        .equ    V_BOOTS, 0x1008         | starts counted in the EEPROM
        .equ    V_TONE, 0x100C          | the DSP's phase step per sample

        .equ    LIST, 0x10000           | object list (phrase aligned)
        .equ    BANNER, 0x20000         | 8-bit CLUT bitmap, 128 x 16
        .equ    BALL, 0x30000           | 16-bit bitmap, 16 x 16
        .equ    CANVAS, 0x100000        | 16-bit bitmap, 320 x 200, drawn by the Blitter

| Graphics chip.
        .equ    OLP_LO, 0xF00020
        .equ    OLP_HI, 0xF00022
        .equ    VMODE, 0xF00028
        .equ    HDB1, 0xF00038
        .equ    HDE, 0xF0003C
        .equ    VDB, 0xF00046
        .equ    VDE, 0xF00048
        .equ    VI, 0xF0004E
        .equ    BG, 0xF00058
        .equ    INT1, 0xF000E0
        .equ    CLUT, 0xF00400
        .equ    G_PC, 0xF02110
        .equ    G_CTRL, 0xF02114
        .equ    G_RAM, 0xF03000
        .equ    BLITTER, 0xF02200
| Blitter registers as longs past BLITTER, for (r14+q).
        .equ    A1_FLAGS, 1
        .equ    A1_PIXEL, 3
        .equ    A1_STEP, 4
        .equ    A2_BASE, 9
        .equ    A2_FLAGS, 10
        .equ    B_CMD, 14
        .equ    B_COUNT, 15
        .equ    B_PATD_HI, 26
        .equ    B_PATD_LO, 27
        .equ    B_IINC, 28
        .equ    B_I3, 31
| 16-bit pixels (PIXEL 4), rows of 320 (WIDTH code 33), one pixel per step (XADD 1).
        .equ    FLAGS_CANVAS, (4 << 3) + (33 << 9) + (1 << 16)
        .equ    CMD_FILL, (1 << 16) + (1 << 9) + (12 << 21)   | PATDSEL, UPDA1, LFU 12 (S)
        .equ    CMD_GOURAUD, 1 << 12                          | GOURD

| Sound chip.
        .equ    JOYSTICK, 0xF14000      | bit 0: the EEPROM's data out
        .equ    BUTTONS, 0xF14002
        .equ    EEPROM_DATA_IN, 0xF14800
        .equ    EEPROM_RESET, 0xF15000
        .equ    D_PC, 0xF1A110
        .equ    D_CTRL, 0xF1A114
        .equ    D_FLAGS, 0xF1A100
        .equ    LEFT_SAMPLE, 0xF1A148
        .equ    SCLK, 0xF1A150
        .equ    D_RAM, 0xF1B000

        .equ    TONE_LOW, 1388          | 440 Hz: 65536 x 440 / 20774
        .equ    TONE_HIGH, 2082         | 660 Hz

| The 68000 copies a RISC block (between two labels, whole longs) into local RAM.
        .macro  copy_to_local start, end, destination
        lea     \start(%pc), %a0
        lea     \destination, %a1
        move.w  #(\end - \start) / 4 - 1, %d0
1:      move.l  (%a0)+, (%a1)+
        dbra    %d0, 1b
        .endm

        .text
        .fill   0x2000, 1, 0            | cartridge header

start:
        move.w  #0x2700, %sr
        lea     0x1FF000, %sp
        clr.l   V_FRAME
        clr.l   V_MODE
        move.l  #TONE_LOW, V_TONE
        bsr     count_start
        bsr     make_images
        bsr     make_list

        copy_to_local gpu_image, gpu_image_end, G_RAM
        move.l  #gpu_start, G_PC
        move.l  #1, G_CTRL
        copy_to_local dsp_image, dsp_image_end, D_RAM
        move.l  #19, SCLK               | 20774 Hz
        move.l  #dsp_start, D_PC
        move.l  #1, D_CTRL

        lea     frame(%pc), %a0
        move.l  %a0, 0x100              | level-2 interrupt: once per frame, on line VI
        move.w  #10, VI
        move.w  #0x0001, INT1           | the video-line source
        move.w  #166, HDB1
        move.w  #166+1280, HDE
        move.w  #40, VDB
        move.w  #520, VDE
        move.w  #0x2108, BG
        move.w  #(LIST & 0xFFFF), OLP_LO
        move.w  #(LIST >> 16), OLP_HI
        move.w  #0x06C1, VMODE          | CRY, background fill, 4 clocks per pixel: 320 wide
        move.w  #0x2000, %sr
idle:   bra.s   idle

| Once per frame: count it, read button A, pick the tone, roll the ball.
frame:
        movem.l %d0-%d1, -(%sp)
        addq.l  #1, V_FRAME
        move.w  #0xFFFE, JOYSTICK       | row 0 of the controller
        moveq   #0, %d1
        btst    #1, BUTTONS+1           | A: 0 while held
        bne.s   1f
        moveq   #1, %d1
1:      move.l  %d1, V_MODE
        move.l  #TONE_LOW, V_TONE
        tst.l   %d1
        beq.s   2f
        move.l  #TONE_HIGH, V_TONE
2:      move.l  V_FRAME, %d0            | the ball's x: 0 .. 286 and back
        add.w   %d0, %d0
        andi.w  #511, %d0
        cmpi.w  #256, %d0
        blo.s   3f
        eori.w  #511, %d0
3:      move.w  %d0, %d1
        lsr.w   #3, %d1
        add.w   %d1, %d0
        move.l  LIST+BALL_OBJECT+12, %d1
        andi.w  #0xF000, %d1
        or.w    %d0, %d1
        move.l  %d1, LIST+BALL_OBJECT+12
        move.w  #0x0101, INT1           | acknowledge, keep the source enabled
        movem.l (%sp)+, %d0-%d1
        rte

| The EEPROM's word 0 counts the starts: read it, add one, write it back and save.
count_start:
        move.w  #0x180, %d0             | read word 0
        bsr.s   eeprom_command
        moveq   #15, %d1                | 16 bits, most significant first
1:      move.w  JOYSTICK, %d3
        lsr.w   #1, %d3
        addx.w  %d2, %d2
        dbra    %d1, 1b
        addq.w  #1, %d2
        move.w  #0x130, %d0             | write enable
        bsr.s   eeprom_command
        move.w  #0x140, %d0             | write word 0
        bsr.s   eeprom_command
        move.w  %d2, %d0
        moveq   #16, %d1
        bsr.s   eeprom_bits
        move.w  #0x100, %d0             | write disable: the save file is written
        bsr.s   eeprom_command
        moveq   #0, %d0
        move.w  %d2, %d0
        move.l  %d0, V_BOOTS
        rts
eeprom_command:                         | reset the serial interface, send 9 command bits
        tst.w   EEPROM_RESET
        moveq   #9, %d1
eeprom_bits:                            | send the low d1 bits of d0, most significant first
        subq.w  #1, %d1
1:      move.w  %d0, %d3
        lsr.w   %d1, %d3
        andi.w  #1, %d3
        move.w  %d3, EEPROM_DATA_IN
        dbra    %d1, 1b
        rts

| CLUT 1-16: a rainbow; the banner: diagonal stripes of it; the ball: a shaded diamond.
make_images:
        lea     rainbow(%pc), %a1
        lea     CLUT+2, %a0
        moveq   #15, %d0
1:      move.w  (%a1)+, (%a0)+
        dbra    %d0, 1b

        lea     BANNER, %a0
        moveq   #0, %d7                 | y
2:      moveq   #0, %d6                 | x
3:      move.w  %d6, %d0
        lsr.w   #3, %d0
        move.w  %d7, %d1
        lsr.w   #1, %d1
        add.w   %d1, %d0
        andi.w  #15, %d0
        addq.w  #1, %d0
        move.b  %d0, (%a0)+
        addq.w  #1, %d6
        cmpi.w  #128, %d6
        blo.s   3b
        addq.w  #1, %d7
        cmpi.w  #16, %d7
        blo.s   2b

        lea     BALL, %a0
        moveq   #0, %d7                 | y
4:      moveq   #0, %d6                 | x
5:      move.w  %d6, %d0                | distance |x - 7.5| + |y - 7.5|, doubled
        add.w   %d0, %d0
        subi.w  #15, %d0
        bpl.s   6f
        neg.w   %d0
6:      move.w  %d7, %d1
        add.w   %d1, %d1
        subi.w  #15, %d1
        bpl.s   7f
        neg.w   %d1
7:      add.w   %d1, %d0
        moveq   #0, %d1                 | outside: 0, transparent
        cmpi.w  #16, %d0
        bhi.s   8f
        lsl.w   #3, %d0
        move.w  #0xFFFF, %d1            | yellow, darker to the edge
        sub.w   %d0, %d1
8:      move.w  %d1, (%a0)+
        addq.w  #1, %d6
        cmpi.w  #16, %d6
        blo.s   5b
        addq.w  #1, %d7
        cmpi.w  #16, %d7
        blo.s   4b
        rts

| Objects (as in the Object Processor's phrase layout; fields are added, '|' starts a comment):
| phrase 0: TYPE 0-2, YPOS 3-13, HEIGHT 14-23, LINK 24-42, DATA 43-63 (LINK, DATA in phrases);
| phrase 1: XPOS 0-11, DEPTH 12-14, PITCH 15-17, DWIDTH 18-27, IWIDTH 28-37, TRANS 47;
| phrase 2 (scaled): HSCALE 0-7, VSCALE 8-15.
        .macro  object type, ypos, height, link, data, xpos, depth, dwidth, iwidth, flags
        move.l  #(((\data) >> 3) << 11) + (((\link) >> 3) >> 8), (%a0)+
        move.l  #((((\link) >> 3) & 0xFF) << 24) + ((\height) << 14) + ((\ypos) << 3) + (\type), (%a0)+
        move.l  #((\iwidth) >> 4) + ((\flags) << 13), (%a0)+
        move.l  #(((\iwidth) & 0xF) << 28) + ((\dwidth) << 18) + (1 << 15) + ((\depth) << 12) + (\xpos), (%a0)+
        .endm
        .equ    BANNER_OBJECT, 16
        .equ    BALL_OBJECT, 32
        .equ    STOP_OBJECT, 56
make_list:
        lea     LIST, %a0
        | canvas: rows 24-223 of the screen (YPOS counts half lines from VDB 40)
        object  0, 40+48, 200, LIST+BANNER_OBJECT, CANVAS, 0, 4, 80, 80, 0
        object  0, 40+8, 16, LIST+BALL_OBJECT, BANNER, 96, 3, 16, 16, 0
        object  1, 40+2*190, 16, LIST+STOP_OBJECT, BALL, 0, 4, 4, 4, 4 | TRANS
        clr.l   (%a0)+
        move.l  #(64 << 8) + 64, (%a0)+ | twice as wide and tall
        clr.l   (%a0)+                  | stop object
        move.l  #4, (%a0)+
        rts

        .even
rainbow:
        .word   0xF0FF, 0xF4FF, 0xF8FF, 0xFCFF, 0xCFFF, 0x8FFF, 0x4FFF, 0x0FFF
        .word   0x0CFF, 0x08FF, 0x04FF, 0x00FF, 0x40FF, 0x80FF, 0xC0FF, 0xF0C0

| The GPU: waits for the next frame, clears the canvas with one fill, draws the diamonds and
| the start counter with Gouraud spans.
        .balign 4
gpu_image:
        risc_begin gpu, G_RAM
gpu_start:
        movei   #BLITTER,r14
        movei   #CANVAS,r1
        store   r1,(r14)                | A1_BASE
        store   r1,(r14+A2_BASE)        | A2 unused, but it must name memory
        movei   #FLAGS_CANVAS,r1
        store   r1,(r14+A1_FLAGS)
        store   r1,(r14+A2_FLAGS)
        movei   #V_FRAME,r20
        movei   #V_MODE,r22
        moveq   #0,r21                  | the last frame drawn
        movei   #next_frame,r25
        movei   #next_shape,r26
        movei   #next_row,r27
        movei   #next_box,r28

next_frame:
        load    (r20),r1
        cmp     r1,r21
        jr      eq,next_frame
        nop
        move    r1,r21

        moveq   #0,r1                   | clear: 200 rows of 320 from (0, 0)
        store   r1,(r14+A1_PIXEL)
        movei   #0x0001FEC0,r1          | row step: y + 1, x - 320
        store   r1,(r14+A1_STEP)
        movei   #0x2108,r1
        store   r1,(r14+B_PATD_LO)
        movei   #(200 << 16) + 320,r1
        store   r1,(r14+B_COUNT)
        movei   #CMD_FILL,r1
        store   r1,(r14+B_CMD)

        movei   #shapes,r15             | colour << 24, speed, centre y, half height
        moveq   #3,r16
next_shape:
        load    (r15),r2
        load    (r15+1),r3
        load    (r15+2),r4
        load    (r15+3),r5
        load    (r22),r6                | button A held: bigger, other colours
        cmpq    #0,r6
        jr      eq,keep
        nop
        addq    #8,r5
        movei   #0x55000000,r6
        xor     r6,r2
keep:   store   r2,(r14+B_PATD_HI)      | the Gouraud colour byte C[0]
        move    r21,r7                  | centre x: a triangle wave of frame x speed
        mult    r3,r7
        movei   #255,r6
        and     r6,r7
        btst    #7,r7
        jr      eq,rising
        nop
        xor     r6,r7                   | 255 - t
rising: move    r7,r8
        shrq    #1,r8
        add     r8,r7                   | 0 .. 190 (t x 1.5)
        movei   #56,r8
        add     r8,r7                   | cx = 56 .. 246
        move    r5,r9
        neg     r9                      | r = -H .. H
next_row:
        move    r9,r10
        abs     r10
        move    r5,r11
        sub     r10,r11                 | H - |r|
        move    r11,r12
        add     r12,r12                 | half width hw = 2 (H - |r|)
        move    r4,r13
        add     r9,r13                  | y
        shlq    #16,r13
        move    r7,r17
        sub     r12,r17                 | left edge
        or      r13,r17
        store   r17,(r14+A1_PIXEL)      | left half: from dark 0x40 up by 5 per pixel
        movei   #0x400000,r18
        store   r18,(r14+B_I3)
        movei   #0x50000,r18
        store   r18,(r14+B_IINC)
        move    r12,r19
        bset    #16,r19                 | one row of hw pixels
        store   r19,(r14+B_COUNT)
        movei   #CMD_GOURAUD,r18
        cmpq    #0,r12
        jr      eq,right
        nop
        store   r18,(r14+B_CMD)
right:  move    r7,r17                  | right half: from the bright middle down by 5
        or      r13,r17
        store   r17,(r14+A1_PIXEL)
        move    r12,r17
        moveq   #5,r18
        mult    r18,r17
        movei   #0x40,r18
        add     r18,r17
        shlq    #16,r17
        store   r17,(r14+B_I3)                  | the Blitter stops the intensity at 0xFF
        movei   #0xFB0000,r18
        store   r18,(r14+B_IINC)
        addq    #1,r19
        store   r19,(r14+B_COUNT)
        movei   #CMD_GOURAUD,r18
        store   r18,(r14+B_CMD)
        addq    #1,r9
        cmp     r9,r5
        jump    pl,(r27)                | next row while r <= H
        nop
        subq    #1,r16
        jump    ne,(r26)
        addq    #16,r15                 | next shape (in the delay slot)

        movei   #V_BOOTS,r1             | the start counter: up to 24 squares of 8 x 8
        load    (r1),r2
        movei   #24,r3
        cmp     r3,r2
        jr      cs,few
        nop
        move    r3,r2
few:    movei   #0x0001FFF8,r1          | row step: y + 1, x - 8
        store   r1,(r14+A1_STEP)
        movei   #0xF0C8,r1
        store   r1,(r14+B_PATD_LO)
        movei   #0x00040008,r3          | (8, 4)
        cmpq    #0,r2
        jump    eq,(r25)
        nop
next_box:
        store   r3,(r14+A1_PIXEL)
        movei   #(8 << 16) + 8,r1
        store   r1,(r14+B_COUNT)
        movei   #CMD_FILL,r1
        store   r1,(r14+B_CMD)
        addq    #12,r3
        subq    #1,r2
        jump    ne,(r28)
        nop
        jump    (r25)
        nop

        risc_align 4
shapes: dc.l    0xF0000000, 1, 40, 16   | red, slow, upper
        dc.l    0x0F000000, 2, 100, 12  | cyan, faster, middle
        dc.l    0x00000000, 3, 160, 14  | blue, fastest, lower
        dc.l    0
        risc_end
gpu_image_end:

| The DSP: a square wave from a 16-bit phase, one sample pair per audio tick.
        .balign 4
dsp_image:
        risc_begin dsp, D_RAM
        movei   #dsp_start,r0           | interrupt 0: not used
        jump    (r0)
        nop
        risc_align 16
        movei   #tick,r29               | interrupt 1: the audio tick
        jump    (r29)
        nop
        risc_align 16
dsp_start:
        movei   #0xF1D000,r31           | stack at the top of local RAM
        movei   #LEFT_SAMPLE,r14
        movei   #V_TONE,r20
        moveq   #0,r25                  | phase
        movei   #D_FLAGS,r1
        movei   #0x20,r2                | interrupt 1 enabled
        store   r2,(r1)
wait:   jr      wait
        nop

tick:   load    (r20),r24
        add     r24,r25
        movei   #0x2000,r22
        btst    #15,r25
        jr      eq,high
        nop
        neg     r22
high:   store   r22,(r14)               | left
        store   r22,(r14+1)             | right
        movei   #D_FLAGS,r21
        load    (r21),r23
        bclr    #3,r23                  | leave service
        bset    #10,r23                 | clear latch 1
        load    (r31),r24
        addq    #2,r24
        addq    #4,r31
        jump    (r24)
        store   r23,(r21)
        risc_align 4
        risc_end
dsp_image_end:
