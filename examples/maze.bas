10 ' Maze: dug by a depth-first walk, then the way from corner to corner
20 DEFINT A-Z
30 SCREEN 640, 480
40 COLOR 15, 0: CLS: RANDOMIZE 1
50 W = 39: H = 27: S = 16: DIM N(W, H), P&(W * H), T(4)
60 DIM DX(3), DY(3)
70 FOR D = 0 TO 3: READ DX(D), DY(D): NEXT D
80 DATA 0,-1, 1,0, 0,1, -1,0
90 ' N(x, y) holds a bit for every side that is open, and 16 once the walk has been there
100 LINE (8, 8)-STEP(W * S, H * S), 9, BF
110 LINE (10, 10)-STEP(12, 12), 0, BF
120 X = 0: Y = 0: P = 0: N(0, 0) = 16
130 K = 0
140 FOR D = 0 TO 3
150   U = X + DX(D): V = Y + DY(D)
160   IF U < 0 OR V < 0 OR U >= W OR V >= H THEN 190
170   IF N(U, V) THEN 190
180   T(K) = D: K = K + 1
190 NEXT D
200 IF K = 0 THEN 280
210 D = T(INT(RND * K)): P&(P) = X + Y * W: P = P + 1
220 N(X, Y) = N(X, Y) OR 2 ^ D
230 X = X + DX(D): Y = Y + DY(D): N(X, Y) = 16 OR 2 ^ ((D + 2) MOD 4)
240 ' Dig the wall towards the last cell, and the cell
250 LINE (10 + X * S - DX(D) * 8, 10 + Y * S - DY(D) * 8)-STEP(12, 12), 0, BF
260 LINE (10 + X * S, 10 + Y * S)-STEP(12, 12), 0, BF
270 GOTO 130
280 P = P - 1: IF P >= 0 THEN X = P&(P) MOD W: Y = P&(P) \ W: GOTO 130
290 GOSUB 330
300 COLOR 7: LOCATE 29, 2: PRINT "The way from the upper left to the lower right corner.";
310 K$ = INPUT$(1)
320 COLOR 15: CLS: END
330 ' Follow the wall on the right; a step back over the own way takes it off again
340 X = 0: Y = 0: D = 1: P = 0: P&(0) = 0
350 WHILE X < W - 1 OR Y < H - 1
360   D = (D + 1) MOD 4
370   WHILE (N(X, Y) AND 2 ^ D) = 0: D = (D + 3) MOD 4: WEND
380   X = X + DX(D): Y = Y + DY(D): C& = X + Y * W
390   IF P > 0 THEN IF P&(P - 1) = C& THEN P = P - 1: GOTO 410
400   P = P + 1: P&(P) = C&
410 WEND
420 PSET (16, 16), 14
430 FOR K = 1 TO P: LINE -(16 + (P&(K) MOD W) * S, 16 + (P&(K) \ W) * S), 14: NEXT K
440 RETURN
