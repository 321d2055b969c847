"""Files on a real FAT volume: written by BASIC, checked from outside, read back after a restart."""

from conftest import boot, make_disk

PROGRAM = """\
10 OPEN "NOTES.TXT" FOR OUTPUT AS #1
20 PRINT #1,"first line":PRINT #1,1;-2;"three":WRITE #1,"quoted",1,-2
30 CLOSE #1:OPEN "NOTES.TXT" FOR APPEND AS #1:PRINT #1,"appended":CLOSE #1
40 MKDIR "DATA":CHDIR "DATA"
50 OPEN "ITEMS.DAT" FOR RANDOM AS #2 LEN=16:FIELD 2,10 AS N$,6 AS P$
60 FOR I=1 TO 3:LSET N$="item"+STR$(I):RSET P$=STR$(I*10):PUT 2,I:NEXT
70 CLOSE #2:CHDIR "\\"
80 DIM B%(3):FOR I=0 TO 3:B%(I)=I*257:NEXT:BSAVE "MEM.BIN",VARPTR(B%(0)),8
90 NAME "OLD.TXT" AS "NEW.TXT":KILL "GONE.TXT"
100 OPEN "FOREIGN.TXT" FOR INPUT AS #3
110 IF EOF(3)=0 THEN LINE INPUT #3,L$:PRINT "[";L$;"]":GOTO 110
120 CLOSE #3:PRINT "WRITTEN"
"""

READER = """\
10 OPEN "NOTES.TXT" FOR INPUT AS #1
20 LINE INPUT #1,A$:LINE INPUT #1,B$:INPUT #1,C$,D,E:PRINT A$;"/";B$;"/";C$;D;E
30 CLOSE #1:OPEN "DATA/ITEMS.DAT" FOR RANDOM AS #2 LEN=16:FIELD 2,10 AS N$,6 AS P$
40 GET 2,2:PRINT "[";N$;"][";P$;"]":GET 2,4:PRINT EOF(2):CLOSE #2
50 DIM B%(3):BLOAD "MEM.BIN",VARPTR(B%(0)):PRINT B%(1);B%(3)
60 PRINT "READ BACK"
"""

FOREIGN_TEXT = b"lf line\ncrlf line\r\ncr line\rlast"
BEFORE = {
    "WORK.BAS": PROGRAM.encode(),
    "MORE.BAS": b"130 END\r\n",
    "FOREIGN.TXT": FOREIGN_TEXT,
    "OLD.TXT": b"old\r\n",
    "GONE.TXT": b"gone\r\n",
}

# What the program must have left, worked out by hand: numbers print with a sign place and a trailing blank, WRITE
# without either; records are a left-aligned field of ten and a right-aligned one of six; the memory image holds the
# words 0, 257, 514 and 771 between its 7-byte head and the copy of that head with the end-of-file byte.
NOTES = b'first line\r\n 1 -2 three\r\n"quoted",1,-2\r\nappended\r\n'
ITEMS = b"item 1        10" b"item 2        20" b"item 3        30"
WORDS = bytes.fromhex("0000 0101 0202 0303")


def test_work_is_kept_on_the_volume(tmp_path):
    disk = make_disk(tmp_path, files=BEFORE)
    with boot(disk) as machine:
        machine.type_line('LOAD "WORK')
        machine.type_line("RUN")
        screen = machine.wait_for_row("WRITTEN")
        rows = screen.rows()
        at = rows.index("WRITTEN")
        assert rows[at - 4 : at] == ["[lf line]", "[crlf line]", "[cr line]", "[last]"]
        machine.type_line('MERGE "MORE.BAS"')
        machine.type_line('SAVE "COPY.BAS"')
        machine.type_line("CLS:FILES")
        machine.wait_for(lambda screen: "COPY.BAS" in screen.text().upper(), what="the listing")
        # The prompt after the listing: everything typed has been worked off.
        machine.wait_for(lambda screen: "█" in screen.rows(), what="the prompt")

    disk.check()
    assert disk.get_bytes("NOTES.TXT") == NOTES
    assert disk.get_bytes("DATA/ITEMS.DAT") == ITEMS
    image = disk.get_bytes("MEM.BIN")
    head = image[:7]
    assert head[0] == 0xFD and head[1:3] == b"\0\0" and head[5:7] == b"\x08\0"
    assert image[7:] == WORDS + head + b"\x1a"
    assert disk.get_bytes("NEW.TXT") == BEFORE["OLD.TXT"]
    assert disk.get_bytes("FOREIGN.TXT") == FOREIGN_TEXT
    names = [name.upper() for name in disk.names()]
    assert "OLD.TXT" not in names and "GONE.TXT" not in names
    assert disk.get_bytes("COPY.BAS") == PROGRAM.replace("\n", "\r\n").encode() + b"130 END\r\n"

    # Started again, the machine runs the new start-up program, which reads everything back.
    disk.put_bytes(READER.encode(), "STARTUP.BAS")
    with boot(disk) as machine:
        screen = machine.wait_for_row("READ BACK")
        rows = screen.rows()
        at = rows.index("READ BACK")
        assert rows[at - 4 : at] == [
            "first line/ 1 -2 three/quoted 1 -2",
            "[item 2    ][    20]",
            "-1",
            " 257  771",
        ]
    disk.check()
