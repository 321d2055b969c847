10 DEFSNG A-Z
20 R = 600
30 FOR K = 1 TO R
40   C = 0
50   FOR Y = 0 TO 15
60     B = Y / 8 - 1
70     FOR X = 0 TO 23
80       A = X / 8 - 2
90       U = 0
100       V = 0
110       I = 0
120       P = 0
130       Q = 0
140       WHILE I < 30 AND P + Q <= 4
150         V = 2 * U * V + B
160         U = P - Q + A
170         P = U * U
180         Q = V * V
190         I = I + 1
200       WEND
210       C = C + I
220     NEXT X
230   NEXT Y
240 NEXT K
250 PRINT "CHECK"; C
260 PRINT "REPEATED"; R
270 END
