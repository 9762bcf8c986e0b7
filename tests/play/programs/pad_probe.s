| Cartridge program (runs from 0x802000) for the front-end tests: it shows what it reads from the
| controller and plays a known sound. At the level-2 interrupt of line 100 of every frame it
| counts the frame (long at 0x1000), reads the controller's rows E, D, B and 7 (joystick word,
| then buttons word) into the eight pixels of a 16-bit RGB bitmap on picture row 0, and writes
| a frame's worth of stereo samples (346 at the 20774 Hz of serial clock divider 19), left = the
| frame count, right = its negation. A front-end thus sees in frame n + 1 what it held in frame n.
        .include "../../tools/programs/video.s"
        .equ    INT1, 0xF000E0
        .equ    VI, 0xF0004E
        .equ    JOYSTICK, 0xF14000
        .equ    LTXD, 0xF1A148
        .equ    RTXD, 0xF1A14C
        .equ    SCLK, 0xF1A150
        .equ    FRAMES, 0x1000
        .equ    PIXELS, 0x20000         | 8 pixels of 16 bits: two phrases

        .text
start:
        move.l  #0x001FF000, %sp
        move.w  #0x2700, %sr
        lea     handler(%pc), %a0
        move.l  %a0, 0x100              | level-2 autovector
        clr.l   FRAMES
        lea     PIXELS, %a0
        moveq   #3, %d0
1:      clr.l   (%a0)+
        dbra    %d0, 1b

        lea     LIST, %a0               | the pixels -> stop
        bitmap_object 40, 1, LIST+16, PIXELS, 0, 4, 1, 2, 2
        clr.l   (%a0)+
        move.l  #4, (%a0)+
        move.l  #19, SCLK
        move.w  #100, VI
        move.w  #0x0001, INT1           | enable the video-line source
| Video on, RGB 16, background fill (black), 4 clocks per pixel; lines 40-519.
        video_on 0x06C7, 0x0000, 520
        move.w  #0x2000, %sr
idle:   bra.s   idle

handler:
        movem.l %d0-%d2/%a0, -(%sp)
        addq.l  #1, FRAMES
        lea     PIXELS, %a0
        moveq   #-2, %d0                | row select in the low nibble: E, D, B, 7
        moveq   #3, %d1
1:      move.w  %d0, JOYSTICK
        move.w  JOYSTICK, (%a0)+
        move.w  JOYSTICK+2, (%a0)+
        rol.b   #1, %d0
        dbra    %d1, 1b
        move.l  FRAMES, %d0
        move.l  %d0, %d2
        neg.l   %d2
        move.w  #345, %d1
2:      move.l  %d0, LTXD
        move.l  %d2, RTXD
        dbra    %d1, 2b
        move.w  #0x0101, INT1           | acknowledge the line interrupt, keep it enabled
        movem.l (%sp)+, %d0-%d2/%a0
        rte
