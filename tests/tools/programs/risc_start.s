| Included by the test programs that run GPU or DSP code. risc_start copies the RISC block between
| image and image_end (at most 256 bytes) into local RAM at ram and starts the processor there
| through its PC and control registers.
        .macro  risc_start image, image_end, ram, pc, ctrl
        lea     \image(%pc), %a0
        lea     \ram, %a1
        moveq   #(\image_end - \image) / 2 - 1, %d0
1:      move.w  (%a0)+, (%a1)+
        dbra    %d0, 1b
        move.l  #\ram, \pc
        move.l  #1, \ctrl               | go
        .endm
