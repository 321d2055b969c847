10 ' A kitchen clock: ON TIMER counts down while the program looks for prime numbers
20 READ DISHES
30 DIM DISH$(DISHES), TICKS(DISHES)
40 FOR I = 1 TO DISHES: READ DISH$(I), TICKS(I): NEXT I
50 DATA 3, "soft egg", 3, "spaghetti", 8, "potatoes", 12
60 TICK = 20: ' milliseconds; 60000 would make minutes of them
70 LIMIT = 400: DIM PRIME(LIMIT)
80 ON TIMER(0) GOSUB 300
90 TIMER(0) = TICK: STARTED = TIMER: TIMER(0) ON
100 PRINT "All pots are on the stove."
110 C = 2: READY = 0
120 WHILE READY < DISHES
130   IF FOUND < LIMIT THEN GOSUB 200
140 WEND
150 ' The last dish has switched the timer off
160 PRINT "Dinner is served after"; NOW; "ticks."
170 IF TIMER - STARTED < (NOW - 1) * TICK / 1000 THEN PRINT "The clock is fast!"
180 WHILE FOUND < LIMIT: GOSUB 200: WEND
190 PRINT "Meanwhile: prime number"; LIMIT; "is"; PRIME(LIMIT): END
200 ' Look at one candidate: prime when no prime up to its root divides it
210 P = 1: PRIME(FOUND + 1) = C
220 WHILE PRIME(P) * PRIME(P) <= C AND C MOD PRIME(P) > 0: P = P + 1: WEND
230 IF PRIME(P) * PRIME(P) > C OR PRIME(P) = C THEN FOUND = FOUND + 1
240 C = C + 1
250 RETURN
300 ' One tick: a timer's handler is a subroutine like any other, with variables of its own
310 NOW = NOW + 1
320 FOR DISH = 1 TO DISHES
330   IF TICKS(DISH) = NOW THEN READY = READY + 1: PRINT "Tick"; NOW; ": the "; DISH$(DISH); " must come off."
340 NEXT DISH
350 IF NOW MOD 5 = 0 THEN PRINT "Tick"; NOW
360 IF READY = DISHES THEN TIMER(0) OFF
370 RETURN
