10 ' A cash book: writes records to a file, reads them back, and survives whatever is wrong with them
20 ON ERROR GOTO 500
30 F$ = "LEDGER.TXT"
40 ' Without a file from an earlier run the error handler writes one
50 OPEN F$ FOR INPUT AS #1
60 DIM TEXT$(20), AMOUNT#(20)
70 WHILE NOT EOF(1)
80   LINE INPUT #1, R$: RECORD = RECORD + 1
90   P = INSTR(R$, "|"): A$ = MID$(R$, P + 1)
100   IF P = 0 THEN ERROR 77
110   IF STR$(VAL(A$)) = " 0" AND A$ <> "0" THEN ERROR 78
120   N = N + 1: TEXT$(N) = LEFT$(R$, P - 1): AMOUNT#(N) = VAL(A$)
130   ' A record with an error comes here without having counted
140 WEND
150 CLOSE #1
160 PRINT: PRINT "Entry                  Amount     Balance"
170 FOR I = 1 TO N
180   B# = B# + AMOUNT#(I)
190   PRINT USING "\                \ +######.## +#######.##"; TEXT$(I); AMOUNT#(I); B#
200 NEXT I
210 PRINT USING "## entries, ## records left out"; N; BAD
220 ' Shares of the income, and a division that goes wrong when there is none
230 FOR I = 1 TO N
240   IF AMOUNT#(I) > 0 THEN INCOME# = INCOME# + AMOUNT#(I)
250 NEXT I
260 FOR K = 1 TO 2
270   SHARE# = 100 * B# / INCOME#
280   PRINT USING "saved ###.# % of the income"; SHARE#
290   INCOME# = 0
300 NEXT K
310 PRINT "The book is closed."
320 END
500 ' The error handler
510 IF ERL = 50 AND ERR = 53 THEN GOSUB 700: RESUME
520 IF ERR = 77 THEN PRINT "  record"; RECORD; "has no amount: "; R$: BAD = BAD + 1: RESUME 140
530 IF ERR = 78 THEN PRINT "  record"; RECORD; "is no number: "; A$: BAD = BAD + 1: RESUME 140
540 IF ERR = 11 THEN PRINT "  no income, so no share": SHARE# = 0: RESUME NEXT
550 PRINT "error"; ERR; "in line"; ERL: ON ERROR GOTO 0: RESUME
700 ' A first file
710 OPEN F$ FOR OUTPUT AS #2
720 FOR I = 1 TO 7: READ D$: PRINT #2, D$: NEXT I
730 CLOSE #2
740 RETURN
750 DATA "Wages|1850.00", "Rent|-640.50", "a line that somebody scribbled", "Food|-312.75"
760 DATA "Books|-sixty", "Flea market|45.5", "Bicycle|-0.99"
