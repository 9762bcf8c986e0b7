| Cartridge program: takes the level-2 interrupt of video line 100 once per frame, counts the
| frames and samples the controller's four rows, then waits in a tight loop.
| Position-independent: the cartridge runs it from 0x802000.

        .equ    VC, 0xF00006
        .equ    VI, 0xF0004E
        .equ    INT1, 0xF000E0
        .equ    JOYSTICK, 0xF14000
        .equ    JOYBUTS, 0xF14002
        .equ    LEVEL2_VECTOR, 0x100

        | Results in RAM, read by the test.
        .equ    FRAMES, 0x1000          | long: interrupts taken
        .equ    LINE_SEEN, 0x1004       | word: VC when the handler last ran
        .equ    PENDING_SEEN, 0x1006    | word: INT1 as the handler found it
        .equ    PAD_ROWS, 0x1010        | 4 x (joystick word, buttons word), rows E, D, B, 7

start:
        move.w  #0x2700, %sr
        lea     handler(%pc), %a0
        move.l  %a0, LEVEL2_VECTOR
        clr.l   FRAMES
        move.w  #100, VI
        move.w  #0x0001, INT1           | enable the video-line source
        move.w  #0x2000, %sr            | supervisor, interrupt mask 0
idle:
        bra.s   idle

handler:
        movem.l %d0/%a0, -(%sp)
        move.w  VC, LINE_SEEN
        move.w  INT1, PENDING_SEEN
        addq.l  #1, FRAMES
        lea     PAD_ROWS, %a0
        move.w  #0x000E, %d0
        bsr.s   sample_row
        move.w  #0x000D, %d0
        bsr.s   sample_row
        move.w  #0x000B, %d0
        bsr.s   sample_row
        move.w  #0x0007, %d0
        bsr.s   sample_row
        move.w  #0x0101, INT1           | acknowledge the line interrupt, keep it enabled
        movem.l (%sp)+, %d0/%a0
        rte

| Selects row d0 and stores what its two ports read at (a0)+.
sample_row:
        move.w  %d0, JOYSTICK
        move.w  JOYSTICK, (%a0)+
        move.w  JOYBUTS, (%a0)+
        rts
