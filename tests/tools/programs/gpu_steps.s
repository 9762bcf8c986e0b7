| GPU steps: the 68000 copies a short GPU program into the GPU's local RAM and starts the GPU,
| then idles. The GPU loads a value, adds to it, copies and doubles it, and then waits in a
| loop of its own: a trace shows each step and the register it wrote.
        .equ    G_PC, 0xF02110
        .equ    G_CTRL, 0xF02114
        .equ    GPU_RAM, 0xF03000

        .text
start:
        move.l  #0x001FF000, %sp
        move.w  #0x2700, %sr
        lea     gpu_code(%pc), %a0
        lea     GPU_RAM, %a1
        moveq   #(gpu_end - gpu_code) / 2 - 1, %d0
1:      move.w  (%a0)+, (%a1)+
        dbra    %d0, 1b
        move.l  #GPU_RAM, G_PC
        move.l  #1, G_CTRL              | go
idle:   bra.s   idle

| GPU words: opcode in bits 15-10, first field 9-5, second field 4-0; movei's long low word first.
        .even
gpu_code:
        .word   0x9801, 0x1234, 0x0000  | F03000 movei #0x1234,r1
        .word   0x0841                  | F03006 addq #2,r1
        .word   0x8822                  | F03008 move r1,r2
        .word   0x0022                  | F0300A add r1,r2
        .word   0xD7E0                  | F0300C jr t,F0300C
        .word   0xE400                  | F0300E nop
gpu_end:
