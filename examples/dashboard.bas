10 ' Dashboard: numbered text windows with their own colours and cursors, and a chart between them
20 SCREEN 640, 480
30 COLOR 15, 0: CLS
40 TXTWINDOW @0, 1, 1, 80, 1
50 TXTWINDOW @1, 2, 3, 26, 14
60 TXTWINDOW @2, 29, 3, 79, 14
70 TXTWINDOW @3, 2, 17, 79, 21
80 COLOR @0, 0, 7: COLOR @1, 14, 1: COLOR @2, 10, 0: COLOR @3, 15, 4
90 FOR K = 0 TO 3: CLS @K: NEXT K
100 PRINT @0, TAB(30); "STATION  DASHBOARD";
110 ' Frames one pixel outside the windows
120 LINE (7, 31)-(208, 224), 15, B
130 LINE (223, 31)-(632, 224), 15, B
140 LINE (7, 255)-(632, 336), 15, B
150 PRINT @1, "Sensor        Value": PRINT @1, STRING$(24, 196)
160 FOR K = 1 TO 8
170   PRINT @1, USING "Tank ##  ####.# litres"; K, 80 * K + 310 * ABS(SIN(K))
180 NEXT K
190 PRINT @2, JUSTIFY "Each window scrolls by itself and keeps its own cursor and colours. Text sent to one never disturbs the others, the prompt or the chart below."
200 PRINT @2
210 FOR K = 1 TO 6: PRINT @2, "event"; K; "logged": NEXT K
220 PRINT @3, "ALARMS"
230 PRINT @3, " 07:12  Tank 3 above its limit"
240 PRINT @3, " 07:40  Pump 2 restarted";
250 ' The chart: bars in logical coordinates
260 VIEW (8, 350)-(631, 460), &H101830, 7
270 WINDOW (0, 0)-(24, 100)
280 FOR H = 0 TO 23
290   V = 50 + 35 * SIN(H / 24 * 8 * ATN(1) - 1.5) + 10 * SIN(H * 2)
300   C = 2: IF V > 60 THEN C = 6
310   IF V > 85 THEN C = 4
320   LINE (H + .1, 0)-(H + .9, V), C, BF
330 NEXT H
340 VIEW: WINDOW
350 LOCATE 30, 27: COLOR 7: PRINT "Load over the last 24 hours";
360 K$ = INPUT$(1)
370 COLOR 15, 0: CLS: END
