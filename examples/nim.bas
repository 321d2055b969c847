10 ' Nim: take any number of stones from one heap; whoever takes the last stone wins
20 DIM HEAP(3)
30 RANDOMIZE 3
40 FOR H = 1 TO 3: HEAP(H) = 2 * H + 1: NEXT H
50 PRINT "I win if you let me. Type heap and number, as in 2,3."
60 WHILE HEAP(1) + HEAP(2) + HEAP(3) > 0
70   GOSUB 200
80   INPUT "Your move"; H, N
90   GOSUB 300
100   IF NOT LEGAL THEN PRINT "That cannot be done." ELSE GOSUB 140
110 WEND
120 IF MINE THEN PRINT "The last stone is mine." ELSE PRINT "The last stone is yours. Well played!"
130 END
140 ' Your move, then mine, unless the last stone is gone
150 HEAP(H) = HEAP(H) - N
160 MINE = 0
170 IF HEAP(1) + HEAP(2) + HEAP(3) = 0 THEN RETURN
180 GOSUB 400: HEAP(H) = HEAP(H) - N: MINE = -1
190 PRINT "I take"; N; "from heap"; H;: ON MOOD GOSUB 500, 510: RETURN
200 ' Show the heaps
210 FOR I = 1 TO 3
220   PRINT I; ": "; STRING$(HEAP(I), "o")
230 NEXT I
240 RETURN
300 ' Is H, N a move?
310 LEGAL = 0
320 IF H <> INT(H) OR N <> INT(N) OR H < 1 OR H > 3 OR N < 1 THEN RETURN
330 LEGAL = N <= HEAP(H): RETURN
400 ' The heaps' sum without carries must become 0; if it is 0 already, any move loses
410 X = HEAP(1) XOR HEAP(2) XOR HEAP(3): MOOD = 1
420 IF X = 0 THEN 470
430 H = 1
440 WHILE (HEAP(H) XOR X) >= HEAP(H): H = H + 1: WEND
450 N = HEAP(H) - (HEAP(H) XOR X)
460 RETURN
470 MOOD = 2: H = INT(RND * 3) + 1: IF HEAP(H) = 0 THEN 470
480 N = 1: RETURN
500 PRINT "and smile.": RETURN
510 PRINT "and frown.": RETURN
