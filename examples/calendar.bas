10 ' A calendar for any three months since the year 1583
20 DIM MONTH$(12), DAYS(12)
30 FOR M = 1 TO 12: READ MONTH$(M), DAYS(M): NEXT M
40 DATA January, 31, February, 28, March, 31, April, 30, May, 31, June, 30
50 DATA July, 31, August, 31, September, 30, October, 31, November, 30, December, 31
60 ' The days since an imaginary March of the year 0 make a week's day
70 DEF FNMARCH(M, Y) = Y + (M < 3)
80 DEF FNLEAPS(Y) = INT(Y / 4) - INT(Y / 100) + INT(Y / 400)
90 DEF FNMARCHDAYS(M) = INT((153 * ((M + 9) MOD 12) + 2) / 5)
100 DEF FNWEEKDAY(M, Y) = (365 * FNMARCH(M, Y) + FNLEAPS(FNMARCH(M, Y)) + FNMARCHDAYS(M) + 2) MOD 7
110 DEF FNLEAP(Y) = -((Y MOD 4 = 0 AND Y MOD 100 <> 0) OR Y MOD 400 = 0)
120 INPUT "First month, year"; M, Y
130 IF M < 1 OR M > 12 OR Y < 1583 THEN PRINT "There is no such month here": GOTO 120
140 FOR N = 1 TO 3
150   GOSUB 200
160   M = M + 1: IF M > 12 THEN M = 1: Y = Y + 1
170 NEXT N
180 END
200 ' One month
210 T$ = MONTH$(M) + STR$(Y)
220 PRINT SPACE$((27 - LEN(T$)) \ 2); T$
230 PRINT "  Mo  Tu  We  Th  Fr  Sa  Su"
240 LAST = DAYS(M): IF M = 2 THEN LAST = LAST + FNLEAP(Y)
250 W = FNWEEKDAY(M, Y)
260 PRINT SPACE$(4 * W);
270 FOR D = 1 TO LAST
280   PRINT USING "####"; D;
290   W = W + 1: IF W = 7 THEN W = 0: PRINT
300 NEXT D
310 IF W > 0 THEN PRINT
320 PRINT: RETURN
