10 ' Prime numbers: the sieve of Eratosthenes, with its time
20 N = 1000000: DIM COMPOSITE%(N)
30 T = TIMER: COUNT = 0
40 FOR I = 2 TO N
50   IF COMPOSITE%(I) THEN 80
60   COUNT = COUNT + 1: LAST = I
70   FOR K = I * I TO N STEP I: COMPOSITE%(K) = 1: NEXT K
80 NEXT I
90 PRINT COUNT; "primes up to"; N; "- the largest is"; LAST
100 PRINT USING "##.### seconds"; TIMER - T
