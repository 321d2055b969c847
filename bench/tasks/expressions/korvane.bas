10 R = 2000
20 FOR K = 1 TO R
30   S = 0
40   FOR I = 1 TO 1000
50     X = SQR(ABS(SIN(I) * (I + 1) - COS(I) / (2 + I)))
60     Y = INT((I * 3 + (I - 1) * (I + 2)) / 7) - ATN(X)
70     S = S + (X + Y) * (X - Y) / (ABS(X) + ABS(Y) + 1)
80   NEXT I
90 NEXT K
100 PRINT "CHECK"; INT(S)
110 PRINT "REPEATED"; R
120 END
