| RGB 24 test: a 640 x 20 picture (2 clocks per pixel), black (BG 0) but for one 32-bit bitmap
| object of 8 x 4 pixels at x 600, rows 4-7: red, green, blue, 0x123456, then the same four
| again. A 32-bit pixel is stored as the bytes green, red, 0, blue.
        .include "video.s"
        .equ    BITMAP,  0x20000        | 32 bytes per row, 4 rows

        .text
start:
        move.l  #0x001FF000, %sp
        lea     BITMAP, %a0
        moveq   #7, %d7                 | 4 rows of 2 x 4 pixels
1:      move.l  #0x00FF0000, (%a0)+     | red
        move.l  #0xFF000000, (%a0)+     | green
        move.l  #0x000000FF, (%a0)+     | blue
        move.l  #0x34120056, (%a0)+     | 0x123456
        dbra    %d7, 1b

        lea     LIST, %a0               | 2 pixels per phrase
        bitmap_object 48, 4, LIST+16, BITMAP, 600, 5, 1, 4, 4
        clr.l   (%a0)+                  | stop object
        move.l  #4, (%a0)+
| Video on, RGB 24 (bits 2-1 = 1), background fill, 2 clocks per pixel (bits 11-9 = 1).
        video_on 0x0283, 0, 80
idle:   bra.s   idle
