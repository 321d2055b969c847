10 R = 1
20 FOR K = 1 TO R
30   S$ = ""
40   FOR I = 1 TO 60
50     S$ = S$ + CHR$(65 + (I * 7) MOD 26)
60   NEXT I
70   C = 0
80   FOR I = 1 TO 60
90     IF MID$(S$, I, 1) = "E" THEN C = C + 1
100   NEXT I
110   FOR I = 1 TO 20
120     S$ = RIGHT$(S$, 59) + LEFT$(S$, 1)
130     C = C + INSTR(S$, "OVC") * 2 + LEN(MID$(S$, I, 5))
140   NEXT I
150 NEXT K
160 PRINT "CHECK"; C
170 PRINT "REPEATED"; R
180 SYSTEM
