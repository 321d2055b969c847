10 R = 800
20 FOR K = 1 TO R
30   C = 0
40   FOR Y = 0 TO 15
50     B = Y / 8 - 1
60     FOR X = 0 TO 23
70       A = X / 8 - 2
80       U = 0
90       V = 0
100       I = 0
110       P = 0
120       Q = 0
130       WHILE I < 30 AND P + Q <= 4
140         V = 2 * U * V + B
150         U = P - Q + A
160         P = U * U
170         Q = V * V
180         I = I + 1
190       WEND
200       C = C + I
210     NEXT X
220   NEXT Y
230 NEXT K
240 PRINT "CHECK"; C
250 PRINT "REPEATED"; R
260 END
