10 ' The machine: what the interpreter and the firmware's tables say about it
20 PRINT "Screen:"; GRAMAXX; "x"; GRAMAXY; "pixels,"; TXTMAXX; "x"; TXTMAXY; "characters"
30 PRINT "Free memory:"; FRE(0) \ 1048576; "MiB at &H"; HEX$(FREEBOT)
40 PRINT "Clock: "; DATE$; " "; TIME$
50 A&& = KORVANEADR("ACPI"): L = 8: N$ = "ACPI": GOSUB 100
60 A&& = KORVANEADR("SMBIOS"): L = 4: N$ = "SMBIOS": GOSUB 100
70 A&& = KORVANEADR("SYSTEMTABLE"): L = 8: N$ = "UEFI system table": GOSUB 100
80 END
90 ' The first L characters of the table at A&&
100 PRINT N$; " at &H"; HEX$(A&&); ": ";
110 FOR I = 0 TO L - 1: PRINT CHR$(PEEK(A&& + I));: NEXT I
120 PRINT: RETURN
