| A broken object list: its only object has type 5, which the Object Processor does not know,
| so the first displayed line stops the frame.
        .include "video.s"
        .text
start:
        move.l  #0x001FF000, %sp
        lea     LIST, %a0
        clr.l   (%a0)+
        move.l  #5, (%a0)+              | TYPE 5
        video_on 0x06C1, 0, 520
idle:   bra.s   idle
