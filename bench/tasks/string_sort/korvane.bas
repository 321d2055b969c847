10 DIM W$(32)
20 R = 7000
30 FOR K = 1 TO R
40   RESTORE
50   FOR I = 1 TO 32
60     READ W$(I)
70   NEXT I
80   FOR I = 1 TO 31
90     FOR J = I + 1 TO 32
100       IF W$(J) < W$(I) THEN SWAP W$(I), W$(J)
110     NEXT J
120   NEXT I
130   C = 0
140   FOR I = 1 TO 32
150     C = C + I * ASC(W$(I)) + LEN(W$(I))
160   NEXT I
170 NEXT K
180 PRINT "CHECK"; C
190 PRINT "REPEATED"; R
200 END
1000 DATA "pear", "fig", "apple", "quince", "plum", "grape", "lemon", "mango"
1010 DATA "date", "kiwi", "peach", "melon", "cherry", "lime", "orange", "guava"
1020 DATA "papaya", "olive", "currant", "banana", "berry", "apricot", "nectarine", "tangerine"
1030 DATA "medlar", "damson", "lychee", "citron", "pomelo", "rowan", "sloe", "elder"
