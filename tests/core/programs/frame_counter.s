| Cartridge program (runs from 0x802000): takes the level-2 interrupt of video line 100 each
| frame; the handler counts frames (long at 0x1000), notes VC and INT1 (words at 0x1004 and
| 0x1006) and samples the controller's rows E, D, B, 7 as (joystick, buttons) at 0x1010.
        .equ    INT1, 0xF000E0
        .equ    JOYSTICK, 0xF14000

start:
        lea     handler(%pc), %a0
        move.l  %a0, 0x100              | level-2 autovector
        clr.l   0x1000
        move.w  #100, 0xF0004E          | VI
        move.w  #0x0001, INT1           | enable the video-line source
        move.w  #0x2000, %sr
idle:
        bra.s   idle

handler:
        movem.l %d0-%d1/%a0, -(%sp)
        move.w  0xF00006, 0x1004        | VC
        move.w  INT1, 0x1006
        addq.l  #1, 0x1000
        lea     0x1010, %a0
        moveq   #-2, %d0                | row select in the low nibble: E, D, B, 7
        moveq   #3, %d1
1:      move.w  %d0, JOYSTICK
        move.w  JOYSTICK, (%a0)+
        move.w  JOYSTICK+2, (%a0)+
        rol.b   #1, %d0
        dbra    %d1, 1b
        move.w  #0x0101, INT1           | acknowledge the line interrupt, keep it enabled
        movem.l (%sp)+, %d0-%d1/%a0
        rte
