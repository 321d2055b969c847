10 ' Clock face: the hands follow the machine's clock each second until a key is pressed
20 SCREEN 640, 480
30 COLOR 15, 0: CLS
40 CX = 320: CY = 230: R = 200: PI = 4 * ATN(1)
50 CIRCLE (CX, CY), R, 7: CIRCLE (CX, CY), R + 5, 7
60 PAINT (CX, CY - R - 3), 7, 7
70 FOR M = 0 TO 59
80   A = M * PI / 30: I = R - 8
90   IF M MOD 5 = 0 THEN I = R - 24
100   LINE (CX + I * SIN(A), CY - I * COS(A))-(CX + (R - 4) * SIN(A), CY - (R - 4) * COS(A)), 15
110 NEXT M
120 FOR H = 1 TO 12
130   A = H * PI / 6: N$ = MID$(STR$(H), 2)
140   LOCATE INT((CY - 160 * COS(A)) / 16) + 1, INT((CX + 160 * SIN(A)) / 8) + 1 - LEN(N$) \ 2: PRINT N$;
150 NEXT H
160 GOSUB 220
170 ON TIMER(0) GOSUB 220: TIMER(0) = 1000: TIMER(0) ON
180 WHILE INKEY$ = "": WEND
190 TIMER(0) OFF
200 CLS: END
210 ' The old hands are drawn in black, then the new ones
220 IF TIME$ = T$ THEN RETURN
230 IF T$ <> "" THEN B = 1: GOSUB 270
240 T$ = TIME$: B = 0: GOSUB 270
250 LOCATE 29, 37: COLOR 7: PRINT T$;: COLOR 15
260 RETURN
270 H = VAL(LEFT$(T$, 2)): M = VAL(MID$(T$, 4, 2)): S = VAL(RIGHT$(T$, 2))
280 A = (H + M / 60) * PI / 6: L = 90: W = 7: C = 15: GOSUB 330
290 A = (M + S / 60) * PI / 30: L = 140: W = 5: C = 15: GOSUB 330
300 A = S * PI / 30: L = 150: W = 0: C = 12: GOSUB 330
310 CIRCLE (CX, CY), 9, 8: PAINT (CX, CY), 8: CIRCLE (CX, CY), 9, 7: PAINT (CX, CY), 7
320 RETURN
330 IF B THEN C = 0
340 X = CX + L * SIN(A): Y = CY - L * COS(A)
350 LINE (CX - W * COS(A), CY - W * SIN(A))-(X, Y), C
360 LINE (CX + W * COS(A), CY + W * SIN(A))-(X, Y), C
370 LINE (CX, CY)-(X, Y), C
380 RETURN
