10 ' Phone book: names and numbers in the records of a random file
20 OPEN "PHONE.DAT" AS 1 LEN = 40: FIELD 1, 24 AS N$, 16 AS P$
30 COUNT = LOF(1) \ 40
40 PRINT COUNT; "entries: (A)dd, (L)ist, (F)ind, (Q)uit?"
50 C$ = UCASE$(INPUT$(1))
60 ON INSTR("ALFQ", C$) GOTO 100, 200, 300, 400
70 GOTO 50
100 LINE INPUT "Name:   "; A$
110 LINE INPUT "Number: "; B$
120 LSET N$ = A$: LSET P$ = B$
130 COUNT = COUNT + 1: PUT 1, COUNT: GOTO 40
200 A$ = "": GOTO 310
300 LINE INPUT "Part of the name: "; A$
310 FOR I = 1 TO COUNT
320   GET 1, I: IF INSTR(UCASE$(N$), UCASE$(A$)) THEN PRINT N$; P$
330 NEXT I
340 GOTO 40
400 CLOSE 1: END
