10 ' Mandelbrot set: escape counts as colours
20 SCREEN 640, 480
30 COLOR 15, 0: CLS
40 DEFINT I-N: N = 60
50 DIM P&(60)
60 FOR I = 0 TO N - 1
70   T = I / N
80   R = INT(9 * (1 - T) * T * T * T * 255)
90   G = INT(15 * (1 - T) * (1 - T) * T * T * 255)
100   B = INT(8.5 * (1 - T) * (1 - T) * (1 - T) * T * 255) + 20
110   P&(I) = R * 65536 + G * 256 + B
120 NEXT I
130 FOR J = 0 TO 239
140   CI = (239.5 - J) / 190
150   FOR I = 0 TO 639
160     CR = I / 190 - 2.4
170     X = 0: Y = 0: K = 0: A = 0: B = 0
180     WHILE K < N AND A + B < 4
190       Y = 2 * X * Y + CI: X = A - B + CR
200       A = X * X: B = Y * Y: K = K + 1
210     WEND
220     IF K = N THEN 240
230     PSET (I, J), P&(K): PSET (I, 479 - J), P&(K)
240   NEXT I
250 NEXT J
260 K$ = INPUT$(1)
270 CLS: END
