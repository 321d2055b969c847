10 ' Guess the number: the first program of many
20 RANDOMIZE: N = INT(RND * 100) + 1: TRIES = 0
30 PRINT "I am thinking of a number from 1 to 100."
40 INPUT "Your guess"; G
50 TRIES = TRIES + 1
60 IF G < N THEN PRINT "Too small.": GOTO 40
70 IF G > N THEN PRINT "Too large.": GOTO 40
80 PRINT "Right, in"; TRIES; "guesses!"
90 INPUT "Once more (y/n)"; A$
100 IF LCASE$(LEFT$(A$, 1)) = "y" THEN 20
