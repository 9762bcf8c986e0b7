| GPU interrupts from the 68000's G_CTRL writes: the GPU's main loop runs in register bank 1,
| its interrupt service in bank 0 with the stack in R31; the service notes what the entry left
| (R30, the pushed return address, R31, G_FLAGS) and returns by writing G_FLAGS and jumping back.
        .include "risc.inc"
        .include "machine.inc"

        lea     0x3FF0, %sp
        start_gpu gpu_image, gpu_image_end, start
        moveq   #2, %d1
raise:  move.w  #2000, %d0
wait:   dbra    %d0, wait               | let the GPU's main loop run a while
        move.l  #5, G_CTRL              | keep running, interrupt 0
        dbra    %d1, raise
idle:   bra.s   idle

        .balign 4
gpu_image:
        risc_begin gpu, G_RAM
        movei   #service,r29            | interrupt 0 enters here
        jump    (r29)
        nop
        risc_align 16
start:  movei   #0xF03FF0,r31           | bank 0: interrupt stack...
        movei   #RESULTS,r14            | ...and results for the service
        moveq   #0,r20
        movei   #G_FLAGS,r1
        movei   #0x4010,r2              | bank 1, interrupt 0 enabled
        store   r2,(r1)
        movei   #RESULTS+0x40,r14       | bank 1 from here on
        movei   #loop,r2
        store   r2,(r14+1)
        moveq   #0,r1
loop:   addq    #1,r1
        jr      loop
        store   r1,(r14)                | main-loop passes

service:
        store   r30,(r14+1)             | R30 as the entry set it
        load    (r31),r21
        store   r21,(r14+2)             | the pushed return address
        store   r31,(r14+3)             | R31 after the push
        movei   #G_FLAGS,r22
        load    (r22),r23
        store   r23,(r14+4)             | G_FLAGS in service
        addq    #1,r20
        store   r20,(r14)               | interrupts taken
        bclr    #3,r23                  | leave service...
        bset    #9,r23                  | ...clear latch 0, bit 14 still asks for bank 1
        load    (r31),r24
        addq    #2,r24
        addq    #4,r31
        jump    (r24)
        store   r23,(r22)               | in the delay slot
        risc_align 4
        risc_end
gpu_image_end:
