10 ' Function plotter: three curves over the same axes, in logical coordinates
20 SCREEN 640, 480
30 COLOR 15, 0: CLS
40 DEF FNA(X) = SIN(X)
50 DEF FNB(X) = SIN(X * 3) / 3
60 DEF FNC(X) = X * X * X / 60 - X / 4
70 PI = 4 * ATN(1)
80 LOCATE 1, 27: PRINT "y = f(x), -2 pi to 2 pi";
90 VIEW (40, 32)-(600, 420), 0, 7
100 WINDOW (-2 * PI, -1.6)-(2 * PI, 1.6)
110 ' A grid line at every quarter of pi and every 0.4, the axes brighter
120 FOR K = -7 TO 7
130   LINE (K * PI / 4, -1.6)-(K * PI / 4, 1.6), &H202020
140   LINE (-2 * PI, K * .4)-(2 * PI, K * .4), &H202020
150 NEXT K
160 LINE (-2 * PI, 0)-(2 * PI, 0), 8
170 LINE (0, -1.6)-(0, 1.6), 8
180 FOR F = 1 TO 3
190   FOR K = 0 TO 560
200     X = -2 * PI + K * 4 * PI / 560
210     ON F GOSUB 310, 320, 330
220     IF K = 0 THEN PSET (X, Y), C ELSE LINE -(X, Y), C
230   NEXT K
240 NEXT F
250 VIEW: WINDOW
260 COLOR 14: LOCATE 28, 6: PRINT "sin x";
270 COLOR 12: LOCATE 28, 16: PRINT "sin 3x / 3";
280 COLOR 11: LOCATE 28, 31: PRINT "x^3 / 60 - x / 4";
290 K$ = INPUT$(1)
300 COLOR 15, 0: CLS: END
310 Y = FNA(X): C = 14: RETURN
320 Y = FNB(X): C = 12: RETURN
330 Y = FNC(X): C = 11: RETURN
