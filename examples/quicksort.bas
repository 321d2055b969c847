10 ' Quicksort by GOSUB recursion: the bounds of each part wait in arrays of our own
20 N = 16: DIM A(N), LO(32), HI(32), RESTLO(32), RESTHI(32)
30 RANDOMIZE 42
40 FOR I = 1 TO N: A(I) = INT(RND * 100): NEXT I
50 PRINT "Before:";: GOSUB 400
60 SP = 1: LO(1) = 1: HI(1) = N
70 GOSUB 200
80 PRINT "After: ";: GOSUB 400
90 PRINT SWAPS; "swaps,"; STEPS; "steps, recursion"; DEEPEST; "levels deep"
100 PRINT
110 FOR I = 1 TO N
120   PRINT USING "### "; A(I);: PRINT STRING$(A(I) \ 2, "*")
130 NEXT I
140 END
200 ' Sort the part from LO(SP) to HI(SP)
210 IF SP > DEEPEST THEN DEEPEST = SP
220 L = LO(SP): H = HI(SP)
230 IF L >= H THEN RETURN
240 PIVOT = A((L + H) \ 2): I = L: J = H
250 WHILE I <= J
260   WHILE A(I) < PIVOT: I = I + 1: STEPS = STEPS + 1: WEND
270   WHILE A(J) > PIVOT: J = J - 1: STEPS = STEPS + 1: WEND
280   IF I <= J THEN SWAP A(I), A(J): SWAPS = SWAPS + 1: I = I + 1: J = J - 1
290 WEND
300 RESTLO(SP) = I: RESTHI(SP) = H
310 SP = SP + 1: LO(SP) = L: HI(SP) = J: GOSUB 200
320 LO(SP) = RESTLO(SP - 1): HI(SP) = RESTHI(SP - 1): GOSUB 200
330 SP = SP - 1
340 RETURN
400 ' Show the numbers on one line
410 FOR K = 1 TO N: PRINT A(K);: NEXT K
420 PRINT: RETURN
