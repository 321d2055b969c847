10 ' A day in a bakery: customers come at random and are served one after the other
20 DEF FNRANDOM(MEAN) = -MEAN * LOG(1 - RND)
30 READ ARRIVAL, SERVICE, CLOSING
40 DATA 4, 3, 480
50 RANDOMIZE 1987
60 DIM CUSTOMERS(8), WAITING(8)
70 T = FNRANDOM(ARRIVAL)
80 WHILE T < CLOSING
90   GOSUB 300
100   T = T + FNRANDOM(ARRIVAL)
110 WEND
120 PRINT "Hour   Customers   Mean wait (minutes)"
130 FOR H = 0 TO 7
140   M = 0: IF CUSTOMERS(H) > 0 THEN M = WAITING(H) / CUSTOMERS(H)
150   PRINT USING "##:00     ###        ##.#  "; 8 + H; CUSTOMERS(H); M;
160   PRINT STRING$(CINT(M), "=")
170 NEXT H
180 PRINT
190 PRINT "Customers served:"; SERVED
200 PRINT USING "The baker was busy ##.# % of the day"; 100 * BUSY / CLOSING
210 PRINT USING "The longest wait was ##.# minutes,"; LONGEST;
220 PRINT " for customer"; UNLUCKY
230 IF FREE > CLOSING THEN PRINT USING "The last one left ##.# minutes after closing time"; FREE - CLOSING
240 END
300 ' One customer arrives at minute T and waits until the baker is free
310 B = T: IF FREE > T THEN B = FREE
320 W = B - T: S = FNRANDOM(SERVICE)
330 FREE = B + S: BUSY = BUSY + S
340 SERVED = SERVED + 1: H = T \ 60: IF H > T / 60 THEN H = H - 1
350 CUSTOMERS(H) = CUSTOMERS(H) + 1: WAITING(H) = WAITING(H) + W
360 IF W > LONGEST THEN LONGEST = W: UNLUCKY = SERVED
370 RETURN
