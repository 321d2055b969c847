10 ' Down in the cave: a small adventure in five rooms. Verbs: N, E, S, W, TAKE, DROP, LOOK, LIGHT, QUIT
20 DIM ROOM$(5), WAY(5, 4), THING$(3), PLACE(3)
30 FOR R = 1 TO 5: READ ROOM$(R): FOR D = 1 TO 4: READ WAY(R, D): NEXT D: NEXT R
40 FOR T = 1 TO 3: READ THING$(T), PLACE(T): NEXT T
50 DATA at the mouth of a cave, 0, 2, 0, 0
60 DATA "in a long, low passage", 3, 4, 0, 1
70 DATA in a chamber full of bats, 0, 0, 2, 0
80 DATA in a dark hall, 0, 5, 0, 2
90 DATA in the treasury, 0, 0, 0, 4
100 DATA LAMP, 1, MATCHES, 3, CROWN, 5
110 HERE = 1: GOSUB 400
120 WHILE OVER = 0
130   LINE INPUT "> "; C$: C$ = UCASE$(C$): MOVES = MOVES + 1
140   B = INSTR(C$ + " ", " "): V$ = LEFT$(C$, B - 1): N$ = MID$(C$ + " ", B + 1)
150   IF N$ <> "" THEN N$ = LEFT$(N$, LEN(N$) - 1)
160   P = INSTR("N    E    S    W    TAKE DROP LOOK LIGHTQUIT ", LEFT$(V$ + "     ", 5))
170   K = 0: IF P MOD 5 = 1 THEN K = (P + 4) \ 5
180   IF K = 0 THEN PRINT "I do not know how to "; V$; "."
190   ON K GOSUB 500, 500, 500, 500, 600, 700, 400, 800, 900
210   IF HERE = 1 AND PLACE(3) = -1 THEN PRINT "You leave with the crown, after"; MOVES; "moves.": OVER = 1
220 WEND
230 END
400 ' Where am I?
410 IF HERE > 3 AND LIT = 0 THEN PRINT "It is too dark to see.": RETURN
420 PRINT "You are "; ROOM$(HERE); "."
430 FOR T = 1 TO 3: IF PLACE(T) = HERE THEN PRINT "I see the "; THING$(T); "."
440 NEXT T
450 RETURN
500 ' N, E, S, W
510 IF WAY(HERE, K) = 0 THEN PRINT "There is only rock.": RETURN
520 IF HERE = 4 AND K = 2 AND LIT = 0 THEN PRINT "You stumble back.": RETURN
530 HERE = WAY(HERE, K): GOSUB 400: RETURN
600 ' TAKE
610 T = 0: FOR I = 1 TO 3: IF N$ = THING$(I) AND PLACE(I) = HERE THEN T = I
620 NEXT I
630 IF T = 0 THEN PRINT "I see no "; N$; " here.": RETURN
640 PLACE(T) = -1: PRINT "You have the "; N$; ".": RETURN
700 ' DROP
710 T = 0: FOR I = 1 TO 3: IF N$ = THING$(I) AND PLACE(I) = -1 THEN T = I
720 NEXT I
730 IF T = 0 THEN PRINT "You have no "; N$; ".": RETURN
740 PLACE(T) = HERE: PRINT "You drop the "; N$; ".": RETURN
800 ' LIGHT
810 IF PLACE(1) <> -1 THEN PRINT "You have no LAMP.": RETURN
820 IF PLACE(2) <> -1 THEN PRINT "With what?": RETURN
830 LIT = 1: PRINT "The lamp burns.": GOSUB 400: RETURN
900 ' QUIT
910 PRINT "You give up after"; MOVES; "moves.": OVER = 1: RETURN
