| A 68000 workout in the shape of a console program: counted loops, a subroutine, a trap
| through a vector the program installs, MOVEM over a table, division, decimal arithmetic and a
| wait for the level-2 interrupt. Position independent; its results land in the block at
| offset 0x200 of the image:
|
|   +0   long  55            sum of 1..10
|   +4   long  3025          55 squared by MULU in a subroutine
|   +8   long  0x1234ABCD    set by the TRAP #3 handler
|   +12  long  0xAAAAAAAA    sum of the four table longs loaded by MOVEM
|   +16  long  0x00030064    DIVU 100003 / 1000: remainder 3, quotient 100
|   +20  byte  0x47          ABCD 0x19 + 0x28
|   +22  word  0x600D        written after the interrupt woke the STOP
|   +24  long  1             interrupts taken
| and it ends in STOP #$2700 at offset 0x1F0.

        .text
start:
        lea     0x100000,%sp
        lea     results(%pc),%a5

        moveq   #0,%d0
        moveq   #10,%d1
1:      add.l   %d1,%d0
        subq.l  #1,%d1
        bne.s   1b
        move.l  %d0,(%a5)

        bsr.s   square
        move.l  %d2,4(%a5)

        lea     trap_handler(%pc),%a0
        move.l  %a0,0x8C
        trap    #3
        move.l  %d3,8(%a5)

        lea     table(%pc),%a0
        movem.l (%a0)+,%d4-%d7
        add.l   %d5,%d4
        add.l   %d6,%d4
        add.l   %d7,%d4
        move.l  %d4,12(%a5)

        move.l  #100003,%d0
        divu.w  #1000,%d0
        move.l  %d0,16(%a5)

        moveq   #0x19,%d0
        moveq   #0x28,%d1
        move.w  #0,%ccr
        abcd    %d1,%d0
        move.b  %d0,20(%a5)

        lea     irq_handler(%pc),%a0
        move.l  %a0,0x100
        stop    #0x2000
        move.w  #0x600D,22(%a5)
        bra     done

square: move.l  %d0,%d2
        mulu.w  %d0,%d2
        rts

trap_handler:
        move.l  #0x1234ABCD,%d3
        rte

irq_handler:
        addq.l  #1,24(%a5)
        rte

table:  .long   0x11111111, 0x22222222, 0x33333333, 0x44444444

        .org    0x1F0
done:   stop    #0x2700
        bra.s   done

        .org    0x200
results:
        .space  32
