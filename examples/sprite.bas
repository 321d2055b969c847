10 ' Bouncing sprite: GET saves the picture of a ball, PUT with XOR shows it and takes it away again
20 SCREEN 640, 480
30 DEFINT A-Z
40 COLOR 15, 0: CLS
50 DIM B&(1100)
60 ' The ball, shaded by circles that grow brighter towards the light
70 FOR K = 15 TO 1 STEP -1
80   Q = 20 - (15 - K) / 3: C& = (255 - K * 9) * 65536 + (80 - K * 4) * 257
90   CIRCLE (Q, Q), K, C&: PAINT (Q, Q), C&
100 NEXT K
110 GET (4, 4)-(36, 36), B&
120 ' A background of tiles
130 FOR Y = 0 TO 14: FOR X = 0 TO 19
140   C& = (X * 6 + 20) * 65536 + (Y * 8 + 20) * 256 + 90
150   IF (X + Y) AND 1 THEN C& = C& \ 2 AND &H7F7F7F
160   LINE (X * 32, Y * 32)-STEP(31, 31), C&, BF
170 NEXT X: NEXT Y
180 LOCATE 30, 24: PRINT " Space stops the ball, Q ends ";
190 X = 40: Y = 60: DX = 5: DY = 4: K$ = ""
200 PUT (X, Y), B&
210 FOR F = 1 TO 300
220   T# = TIMER: WHILE TIMER < T# + .016: WEND
230   PUT (X, Y), B&
240   X = X + DX: IF X < 0 OR X > 607 THEN DX = -DX: X = X + 2 * DX
250   Y = Y + DY: IF Y < 0 OR Y > 431 THEN DY = -DY: Y = Y + 2 * DY
260   PUT (X, Y), B&
270   IF INKEY$ = " " THEN F = 300
280 NEXT F
290 K$ = INPUT$(1)
300 IF K$ <> "Q" AND K$ <> "q" THEN 210
310 CLS: END
