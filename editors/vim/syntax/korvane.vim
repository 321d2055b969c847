" Vim syntax file for Korvane BASIC.
" Made by tools/make_editor_files.py from the interpreter's tables; changes belong there.

if exists("b:current_syntax")
  finish
endif

syntax case ignore
syntax sync minlines=1

syntax match korvaneError ~\v[^A-Za-z0-9 \t\"#()*+,\-./:;<=>@\\^?']~
syntax match korvaneOperator ~\v[-+*/\\^<>=]~
syntax match korvaneWord ~\v\?~
syntax match korvaneName ~\v[A-Z][A-Z0-9]*%(\&\&|[%!#$&])?~
syntax match korvaneUserFunction ~\vFN[A-Z0-9]+%(\&\&|[%!#$&])?~
syntax match korvaneWord ~\v%(APPEND|ARRAYINFO|AS|AUTO|BASE|BITBLT|BLOAD|BSAVE|CHDIR|CIRCLE|CLEAR|CLOSE|CLS|COLOR|COMMON|CREATEEFI|DEF|DEFDBL|DEFI64|DEFINT|DEFLNG|DEFSNG|DEFSTR|DELETE|DIM|DIR|DRAW|EDIT|ERASE|FIELD|FILES|GET|HELP|INPUT|KILL|KORVANE|LET|LINE|LIST|LOAD|LOADBMP|LOCATE|LSET|MERGE|MKDIR|NAME|NEW|OPEN|OPTION|OUTPUT|PAINT|POKE|POKE16|POKE32|POKE64|PRESET|PRINT|PSET|PUT|RANDOMIZE|READ|RENUM|RMDIR|RSET|SAVE|SCREEN|SWAP|TRACE|TROFF|TRON|TXTWINDOW|USING|VARINFO|VIEW|WINDOW|WRITE)[A-Za-z0-9]@!~
syntax match korvaneFlow ~\v%(BREAK|CHAIN|CONT|END|ERROR|FOR|IF|NEXT|ON|RETURN|RUN|STEP|STOP|TO|WEND|WHILE)[A-Za-z0-9]@!~
syntax match korvaneFlow ~\v%(ELSE|GOSUB|GOTO|RESTORE|RESUME|THEN)[A-Za-z0-9]@!~ nextgroup=korvaneReference skipwhite
syntax match korvaneOperator ~\v%(AND|EQV|IMP|MOD|NOT|OR|XOR)[A-Za-z0-9]@!~
syntax match korvaneSystem ~\v%(FREEBOT|FREETOP|GRAMAXX|GRAMAXY|GRAPITCH|HIMEM|LOMEM|SCRNADR|TXTMAXX|TXTMAXY)[A-Za-z0-9%!#$&]@!~
syntax match korvaneFunction ~\v%(COMMANDLINEARGC|CSRLIN|ERL|ERR|RND|TIMER)[A-Za-z0-9%!#$&]@!~
syntax match korvaneFunction ~\v%(COMMANDLINEARG\$|DATE\$|INKEY\$|TIME\$)~
syntax match korvaneName ~\vINPUT\$~
syntax match korvaneFunction ~\v%(ABS|ASC|ATN|CDBL|CHR\$|CINT|COMMANDLINEARG\$|COS|CSNG|CVD|CVI|CVS|EOF|EXP|FIX|FRE|HEX\$|INPUT\$|INSTR|INT|KORVANEADR|LCASE\$|LEFT\$|LEN|LOC|LOF|LOG|MID\$|MKD\$|MKI\$|MKS\$|OCT\$|PEEK|PEEK16|PEEK32|PEEK64|POINT|POS|RIGHT\$|RND|SGN|SIN|SPACE\$|SPC|SQR|STR\$|STRING\$|TAB|TAN|TIMER|UCASE\$|VAL|VARPTR)%([ \t]*\()@=~
syntax match korvaneNumber ~\v%([0-9]+\.?[0-9]*|\.[0-9]+)%([ED][+-]?[0-9]+)?%(\&\&|[%!#&])?~
syntax match korvaneNumber ~\v\&%(H[0-9A-F]+|O[0-7]+)%(\&\&|[%&])?~
syntax match korvaneReference ~\v[0-9]+%([0-9.%!#&]|[ED][+-]?[0-9])@!~ contained nextgroup=korvaneComma skipwhite
syntax match korvaneComma ~,~ contained nextgroup=korvaneReference skipwhite
syntax match korvaneString ~\v"[^"]*%("|$)~
syntax match korvaneWord ~\vDATA[A-Za-z0-9]@!~ nextgroup=korvaneData
syntax match korvaneData ~\v%([^":]|"[^"]*%("|$))+~ contained contains=korvaneString
syntax match korvaneComment ~\v'.*$~
syntax match korvaneComment ~\vREM[A-Za-z0-9]@!.*$~
syntax match korvaneLineNumber ~\v^ *[0-9]+~

highlight default link korvaneLineNumber LineNr
highlight default link korvaneReference Label
highlight default link korvaneFlow Conditional
highlight default link korvaneWord Statement
highlight default link korvaneOperator Operator
highlight default link korvaneFunction Function
highlight default link korvaneSystem Constant
highlight default link korvaneUserFunction Special
highlight default link korvaneName Identifier
highlight default link korvaneNumber Number
highlight default link korvaneString String
highlight default link korvaneData PreProc
highlight default link korvaneComment Comment
highlight default link korvaneError Error

let b:current_syntax = "korvane"
