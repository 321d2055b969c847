10 ' A cipher machine: three wheels turn after every letter; the same settings read the text again
20 DIM WHEEL$(3), TURN(3), START(3)
30 FOR W = 1 TO 3: READ WHEEL$(W), START(W): NEXT W
40 DATA QWERTYUIOPASDFGHJKLZXCVBNM, 4, ZYXWVUTSRQPONMLKJIHGFEDCBA, 17, BDFHJLCPRTXVZNYEIWGAKMUSQO, 9
50 DEF FNCODE(S$) = ASC(S$) - 65
60 DEF FNLETTER$(N) = CHR$(65 + (N MOD 26))
70 DEF FNWRAP(N) = ((N MOD 26) + 26) MOD 26
80 LINE INPUT "Message: "; M$
90 M$ = UCASE$(M$)
100 SIGN = 1: GOSUB 200: SECRET$ = R$
110 PRINT "Secret: ";: P$ = SECRET$: GOSUB 400
120 M$ = SECRET$: SIGN = -1: GOSUB 200
130 PRINT "Again:  ";: P$ = R$: GOSUB 400
140 DIM COUNT(25): FOR I = 1 TO LEN(SECRET$): C = FNCODE(MID$(SECRET$, I, 1)): COUNT(C) = COUNT(C) + 1: NEXT I
150 MOST = 0: FOR C = 0 TO 25: IF COUNT(C) > MOST THEN MOST = COUNT(C): B$ = FNLETTER$(C)
160 NEXT C
170 PRINT "The letter "; B$; " comes most often:"; MOST; "of"; LEN(SECRET$): END
200 ' Send the letters of M$ through the machine into R$; SIGN 1 makes secrets, -1 reads them
210 R$ = "": K = 0: FOR W = 1 TO 3: TURN(W) = START(W): NEXT W
220 FOR I = 1 TO LEN(M$)
230   L$ = MID$(M$, I, 1)
240   IF L$ >= "A" AND L$ <= "Z" THEN GOSUB 300: R$ = R$ + FNLETTER$(X)
250 NEXT I
260 RETURN
300 ' One letter through the wheels, there or back, then turn them
310 X = FNCODE(L$): K = K + 1
320 IF SIGN = 1 THEN FOR W = 1 TO 3: X = FNWRAP(FNCODE(MID$(WHEEL$(W), FNWRAP(X + TURN(W)) + 1, 1))): NEXT W
330 IF SIGN = -1 THEN FOR W = 3 TO 1 STEP -1: X = FNWRAP(INSTR(WHEEL$(W), FNLETTER$(X)) - 1 - TURN(W)): NEXT W
340 TURN(1) = FNWRAP(TURN(1) + 1)
350 IF TURN(1) = START(1) THEN TURN(2) = FNWRAP(TURN(2) + 1)
360 IF K MOD 5 = 0 THEN TURN(3) = FNWRAP(TURN(3) + 3)
370 RETURN
400 ' Show P$ in groups of five
410 FOR I = 1 TO LEN(P$) STEP 5: PRINT MID$(P$, I, 5); " ";: NEXT I
420 PRINT: RETURN
