10 DIM A(12, 12)
20 DIM B(12, 12)
30 DIM P(12, 12)
40 R = 4000
50 FOR K = 1 TO R
60   FOR I = 1 TO 12
70     FOR J = 1 TO 12
80       A(I, J) = I + J
90       B(I, J) = I - J
100     NEXT J
110   NEXT I
120   FOR I = 1 TO 12
130     FOR J = 1 TO 12
140       S = 0
150       FOR L = 1 TO 12
160         S = S + A(I, L) * B(L, J)
170       NEXT L
180       P(I, J) = S
190     NEXT J
200   NEXT I
210   C = 0
220   FOR I = 1 TO 12
230     C = C + P(I, I) + P(I, 13 - I)
240   NEXT I
250 NEXT K
260 PRINT "CHECK"; C
270 PRINT "REPEATED"; R
280 END
