10 R = 5000
20 FOR K = 1 TO R
30   M& = 0
40   FOR I% = 1 TO 1000
50     K% = I% MOD 100 + 1
60     L% = K% * 3 + I% \ 7
70     M& = (M& + L% * K%) MOD 1000003&
80   NEXT I%
90 NEXT K
100 PRINT "CHECK"; M&
110 PRINT "REPEATED"; R
120 END
