10 ' Bouncing sprite: a mask cuts the ball out of the background (AND), the picture is laid in (OR), and what was
20 ' there before is put back (PSET)
30 SCREEN 640, 480
40 DEFINT A-Z
50 COLOR 15, 0: CLS
60 DIM BALL&(1100), MASK&(1100), UNDER&(1100)
70 ' The mask is black where the ball is, and white around it
80 LINE (4, 4)-(36, 36), 15, BF: CIRCLE (20, 20), 15, 0: PAINT (20, 20), 0
90 GET (4, 4)-(36, 36), MASK&
100 ' The ball, shaded by circles that grow brighter towards the light
110 CLS
120 FOR K = 30 TO 2 STEP -1
130   Q = 20 - (30 - K) / 6: C& = (255 - K * 5) * 65536 + (150 - K * 4) * 257
140   CIRCLE (Q, Q), K / 2, C&: PAINT (Q, Q), C&
150 NEXT K
160 GET (4, 4)-(36, 36), BALL&
170 ' A background of tiles
180 FOR Y = 0 TO 14: FOR X = 0 TO 19
190   C& = (X * 6 + 20) * 65536 + (Y * 8 + 20) * 256 + 90
200   IF (X + Y) AND 1 THEN C& = C& \ 2 AND &H7F7F7F
210   LINE (X * 32, Y * 32)-STEP(31, 31), C&, BF
220 NEXT X: NEXT Y
230 LOCATE 30, 24: PRINT " Space stops the ball, Q ends ";
240 X = 40: Y = 60: DX = 5: DY = 4: GOSUB 330
250 FOR F = 1 TO 120
260   T# = TIMER: WHILE TIMER < T# + .016: WEND
270   PUT (X, Y), UNDER&, PSET
280   X = X + DX: IF X < 0 OR X > 607 THEN DX = -DX: X = X + 2 * DX
290   Y = Y + DY: IF Y < 0 OR Y > 431 THEN DY = -DY: Y = Y + 2 * DY
300   GOSUB 330: IF INKEY$ = " " THEN F = 120
310 NEXT F
320 K$ = INPUT$(1): IF K$ <> "Q" AND K$ <> "q" THEN 250 ELSE CLS: END
330 GET (X, Y)-STEP(32, 32), UNDER&
340 PUT (X, Y), MASK&, AND: PUT (X, Y), BALL&, OR
350 RETURN
