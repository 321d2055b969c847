10 ' The towers of Hanoi: move a tower of disks, one at a time, never a larger disk on a smaller one
20 INPUT "How many disks (1 to 6)"; DISKS
30 IF DISKS < 1 OR DISKS > 6 OR DISKS <> INT(DISKS) THEN PRINT "No such tower": GOTO 20
40 DIM PEG(3, 6), HEIGHT(3), A(8), B(8), C(8)
50 FOR I = 1 TO DISKS: PEG(1, I) = DISKS + 1 - I: NEXT I
60 HEIGHT(1) = DISKS
70 GOSUB 400
80 D = DISKS: A(D) = 1: B(D) = 2: C(D) = 3
90 GOSUB 200
100 IF MOVES MOD 4 <> 0 THEN PRINT
110 GOSUB 400
120 PRINT MOVES; "moves; a tower of 64 disks takes"; 2 ^ 64 - 1
130 END
200 ' Move the D upper disks of peg A(D) to peg C(D) by way of peg B(D)
210 IF D = 0 THEN RETURN
220 A(D - 1) = A(D): B(D - 1) = C(D): C(D - 1) = B(D)
230 D = D - 1: GOSUB 200: D = D + 1
240 GOSUB 300
250 A(D - 1) = B(D): B(D - 1) = A(D): C(D - 1) = C(D)
260 D = D - 1: GOSUB 200: D = D + 1
270 RETURN
300 ' Move the top disk of peg A(D) to peg C(D)
310 F = A(D): T = C(D): TOP = PEG(F, HEIGHT(F))
320 IF HEIGHT(T) > 0 THEN IF PEG(T, HEIGHT(T)) < TOP THEN PRINT "Against the rules!": END
330 PEG(F, HEIGHT(F)) = 0: HEIGHT(F) = HEIGHT(F) - 1
340 HEIGHT(T) = HEIGHT(T) + 1: PEG(T, HEIGHT(T)) = TOP
350 MOVES = MOVES + 1
360 PRINT USING "disk # from # to #"; TOP; F; T;
370 IF MOVES MOD 4 = 0 THEN PRINT ELSE PRINT "  ";
380 RETURN
400 ' Draw the three pegs
410 FOR R = DISKS TO 1 STEP -1
420   L$ = SPACE$(3 * 16)
430   FOR P = 1 TO 3
440     W = PEG(P, R): MIDDLE = 16 * P - 8
450     MID$(L$, MIDDLE - W) = STRING$(W, "=") + "|" + STRING$(W, "=")
460   NEXT P
470   PRINT L$
480 NEXT R
490 PRINT STRING$(48, "-"): RETURN
