10 ' The game of life: a cell lives on with two or three neighbours, and is born with three
20 ROWS = 12: COLS = 38: GENERATIONS = 6
30 DIM C%(ROWS + 1, COLS + 1), N%(ROWS + 1, COLS + 1)
40 READ PATTERN$
50 WHILE PATTERN$ <> "END"
60   READ R, C
70   GOSUB 300
80   READ PATTERN$
90 WEND
100 DATA "glider", 1, 2, ".O.", "..O", "OOO", "/"
110 DATA "blinker", 3, 12, "OOO", "/"
120 DATA "block", 8, 3, "OO", "OO", "/"
130 DATA "pentomino", 5, 24, ".OO", "OO.", ".O.", "/"
140 DATA "END"
150 FOR G = 0 TO GENERATIONS
160   GOSUB 400
170   GOSUB 500
180 NEXT G
190 END
300 ' Put a pattern at row R, column C
310 READ P$
320 IF P$ = "/" THEN RETURN
330 FOR I = 1 TO LEN(P$): C%(R, C + I - 1) = -(MID$(P$, I, 1) = "O"): NEXT I
340 R = R + 1: GOTO 310
400 ' Show the generation
410 POPULATION = 0
420 FOR R = 1 TO ROWS
430   L$ = STRING$(COLS, ".")
440   FOR C = 1 TO COLS
450     IF C%(R, C) THEN MID$(L$, C) = "O": POPULATION = POPULATION + 1
460   NEXT C
470   PRINT L$
480 NEXT R
490 PRINT "generation"; G; "has"; POPULATION; "cells": PRINT: RETURN
500 ' Compute the next generation
510 FOR R = 1 TO ROWS: FOR C = 1 TO COLS
520   S = C%(R - 1, C - 1) + C%(R - 1, C) + C%(R - 1, C + 1) + C%(R, C - 1) + C%(R, C + 1)
530   S = S + C%(R + 1, C - 1) + C%(R + 1, C) + C%(R + 1, C + 1)
540   N%(R, C) = -(S = 3 OR (S = 2 AND C%(R, C) = 1))
550 NEXT C: NEXT R
560 FOR R = 1 TO ROWS: FOR C = 1 TO COLS: C%(R, C) = N%(R, C): NEXT C: NEXT R
570 RETURN
