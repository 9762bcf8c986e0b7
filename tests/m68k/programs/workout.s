| A 68000 workout in the shape of a console program: loops, a subroutine, a trap through a
| vector it installs, MOVEM over a table and a wait for the level-2 interrupt.
| Position independent; results land at offset 0x200 of the image; it ends at offset 0x1F0.
        .text
        lea     0x100000,%sp
        lea     results(%pc),%a5
        moveq   #0,%d0
        moveq   #10,%d1
1:      add.l   %d1,%d0
        subq.l  #1,%d1
        bne.s   1b
        move.l  %d0,(%a5)               | +0: 55, the sum of 1..10
        bsr.s   square
        move.l  %d2,4(%a5)              | +4: 3025 = 55 squared by MULU
        lea     trap_handler(%pc),%a0
        move.l  %a0,0x8C
        trap    #3
        move.l  %d3,8(%a5)              | +8: 0x1234ABCD from the TRAP #3 handler
        lea     table(%pc),%a0
        movem.l (%a0)+,%d4-%d7
        add.l   %d5,%d4
        add.l   %d6,%d4
        add.l   %d7,%d4
        move.l  %d4,12(%a5)             | +12: 0xAAAAAAAA, the table's sum
        lea     irq_handler(%pc),%a0
        move.l  %a0,0x100
        stop    #0x2000
        move.w  #0x600D,16(%a5)         | +16: written once the interrupt woke the STOP
        bra     done
square: move.l  %d0,%d2
        mulu.w  %d0,%d2
        rts
trap_handler:
        move.l  #0x1234ABCD,%d3
        rte
irq_handler:
        addq.l  #1,20(%a5)              | +20: interrupts taken
        rte
table:  .long   0x11111111, 0x22222222, 0x33333333, 0x44444444
        .org    0x1F0
done:   stop    #0x2700
        bra.s   done
        .org    0x200
results:
        .space  24
