#!/usr/bin/env python3
"""Makes what the folders of editors/ know of the language from the interpreter's own tables.

    tools/make_editor_files.py            writes the files
    tools/make_editor_files.py --check    tells which of them are not current
"""

import json
import re
import sys
from pathlib import Path

import word_table

ROOT = Path(__file__).resolve().parent.parent
EDITORS = ROOT / "editors"
NOTE = "Made by tools/make_editor_files.py from the interpreter's tables; changes belong there."

# A word is read whole: none of its letters may be left. What stands in front of it has been read already.
WORD_END = "(?![A-Za-z0-9])"
NAME_END = "(?![A-Za-z0-9%!#$&])"
SUFFIX = r"(?:&&|[%!#$&])?"
NUMBER = r"(?:[0-9]+\.?[0-9]*|\.[0-9]+)(?:[ED][+-]?[0-9]+)?(?:&&|[%!#&])?"
BITS = r"&(?:H[0-9A-F]+|O[0-7]+)(?:&&|[%&])?"
# Not the beginning of a longer number.
LINE_REFERENCE_END = r"(?![0-9.%!#&]|[ED][+-]?[0-9])"
# All characters that begin something.
KNOWN = r"A-Za-z0-9 \t\"#()*+,\-./:;<=>@\\^?'"

# What one types often: the placeholders are those of the snippets of Visual Studio Code.
SNIPPETS = {
    "FOR": "FOR ${1:I} = ${2:1} TO ${3:10}: $0: NEXT ${1:I}",
    "WHILE": "WHILE ${1:condition}: $0: WEND",
    "IF": "IF ${1:condition} THEN ${2:statement}",
    "ELSE": "IF ${1:condition} THEN ${2:statement} ELSE ${3:statement}",
    "GOSUB": "GOSUB ${1:line}",
    "ON": "ON ${1:expression} GOTO ${2:lines}",
    "DEF": "DEF FN${1:NAME}(${2:X}) = ${3:expression}",
    "DIM": "DIM ${1:ARRAY}(${2:10})",
    "INPUT": "INPUT \"${1:prompt}\"; ${2:variable}",
    "LINE": "LINE (${1:X1}, ${2:Y1})-(${3:X2}, ${4:Y2}), ${5:15}",
    "CIRCLE": "CIRCLE (${1:X}, ${2:Y}), ${3:radius}, ${4:15}",
    "LOCATE": "LOCATE ${1:row}, ${2:column}",
    "COLOR": "COLOR ${1:15}, ${2:0}",
    "OPEN": "OPEN \"${1:NAME.TXT}\" FOR ${2|INPUT,OUTPUT,APPEND|} AS #${3:1}",
    "USING": "PRINT USING \"${1:##.##}\"; ${2:value}",
    "TIMER": "ON TIMER(${1:0}) GOSUB ${2:line}: TIMER(${1:0}) = ${3:1000}: TIMER(${1:0}) ON",
    "TXTWINDOW": "TXTWINDOW @${1:0}, ${2:1}, ${3:1}, ${4:80}, ${5:25}",
}


class Words:
    """The words by what they are shown as."""

    def __init__(self):
        self.called, self.bare, self.system = word_table.functions()
        self.operators = word_table.OPERATORS
        self.flow = word_table.FLOW
        self.jumps = word_table.JUMPS
        special = {"REM", "DATA", *self.operators, *self.flow}
        self.others = [word for word in word_table.keywords() if word not in special]


def any_of(words):
    """A pattern for any of the words."""
    return "(?:" + "|".join(re.escape(word) for word in sorted(words)) + ")"


def split_by_suffix(names):
    """The names without and with a type suffix: behind the latter nothing belongs to the name."""
    return [name for name in names if name[-1].isalnum()], [name for name in names if not name[-1].isalnum()]


# ---- Visual Studio Code ----------------------------------------------------------------------------------------

def rule(scope, pattern):
    return {"match": f"(?i){pattern}", "name": f"{scope}.korvane"}


def bare_rules(scope, names):
    plain, suffixed = split_by_suffix(names)
    rules = [rule(scope, any_of(plain) + NAME_END)]
    return rules + [rule(scope, any_of(suffixed))] if suffixed else rules


def grammar(words):
    """The TextMate grammar: the first of the rules that match nearest to the left is taken."""
    data = {
        "begin": f"(?i)(DATA){WORD_END}",
        "beginCaptures": {"1": {"name": "keyword.other.korvane"}},
        "end": "(?=:)|$",
        "contentName": "string.unquoted.data.korvane",
        "patterns": [
            {"match": "\"[^\"]*(?:\"|$)", "name": "string.quoted.double.korvane"},
            {"match": ",", "name": "punctuation.separator.korvane"},
        ],
    }
    line = {"name": "constant.numeric.line-number.korvane"}
    jump = {
        "match": rf"(?i)({any_of(words.jumps)})[ \t]+([0-9]+(?:[ \t]*,[ \t]*[0-9]+)*){LINE_REFERENCE_END}",
        "captures": {
            "1": {"name": "keyword.control.korvane"},
            "2": {"patterns": [{"match": "[0-9]+", "name": "constant.numeric.line-number.reference.korvane"}]},
        },
    }
    rules = [
        {"match": "^ *([0-9]+)", "captures": {"1": line}},
        rule("comment.line.rem", f"REM{WORD_END}.*$"),
        rule("comment.line.apostrophe", "'.*$"),
        data,
        rule("string.quoted.double", "\"[^\"]*(?:\"|$)"),
        rule("constant.numeric", BITS),
        rule("constant.numeric", NUMBER),
        jump,
        rule("support.function", any_of(words.called) + r"(?=[ \t]*\()"),
        rule("variable.other", r"INPUT\$"),
        *bare_rules("support.function", words.bare),
        *bare_rules("support.variable", words.system),
        rule("keyword.operator.word", any_of(words.operators) + WORD_END),
        rule("keyword.control", any_of(words.flow) + WORD_END),
        rule("keyword.other", any_of(words.others) + WORD_END),
        rule("entity.name.function", r"FN[A-Z0-9]+" + SUFFIX),
        rule("variable.other", "[A-Z][A-Z0-9]*" + SUFFIX),
        rule("keyword.other", r"\?"),
        rule("keyword.operator", r"[-+*/\\^<>=]"),
        rule("punctuation.separator", "[:;,]"),
        rule("invalid.illegal", f"[^{KNOWN}]"),
    ]
    return {
        "$schema": "https://raw.githubusercontent.com/martinring/tmlanguage/master/tmlanguage.json",
        "comment": NOTE,
        "name": "Korvane BASIC",
        "scopeName": "source.korvane",
        "fileTypes": ["bas", "BAS"],
        "patterns": rules,
    }


def snippets():
    texts = word_table.help_texts()
    return {name: {"prefix": name.lower(), "body": body, "description": texts[name][0]}
            for name, body in SNIPPETS.items()}


# ---- Vim -------------------------------------------------------------------------------------------------------

def vim_pattern(pattern):
    """A pattern in the "very magic" form of Vim."""
    for ours, theirs in (("(?:", "%("), ("(?=[ \\t]*\\()", "%([ \\t]*\\()@="), (WORD_END, "[A-Za-z0-9]@!"),
                         (NAME_END, "[A-Za-z0-9%!#$&]@!")):
        pattern = pattern.replace(ours, theirs)
    pattern = re.sub(r"\(\?!(.*)\)$", r"%(\1)@!", pattern)
    # Outside of brackets "&" has a meaning of its own there.
    return r"\v" + re.sub(r"(\[[^\]]*\])|&", lambda m: m[1] or r"\&", pattern)


def vim_match(group, pattern, options=""):
    return f"syntax match korvane{group} ~{vim_pattern(pattern)}~{options}"


def vim_bare(group, names):
    plain, suffixed = split_by_suffix(names)
    lines = [vim_match(group, any_of(plain) + NAME_END)]
    return lines + [vim_match(group, any_of(suffixed))] if suffixed else lines


def vim_syntax(words):
    """The syntax file: of the matches that begin at one place, the last in the file is taken."""
    plain_flow = [word for word in words.flow if word not in words.jumps]
    lines = [
        "\" Vim syntax file for Korvane BASIC.",
        f"\" {NOTE}",
        "",
        "if exists(\"b:current_syntax\")",
        "  finish",
        "endif",
        "",
        "syntax case ignore",
        "syntax sync minlines=1",
        "",
        vim_match("Error", f"[^{KNOWN}]"),
        vim_match("Operator", r"[-+*/\\^<>=]"),
        vim_match("Word", r"\?"),
        vim_match("Name", "[A-Z][A-Z0-9]*" + SUFFIX),
        vim_match("UserFunction", "FN[A-Z0-9]+" + SUFFIX),
        vim_match("Word", any_of(words.others) + WORD_END),
        vim_match("Flow", any_of(plain_flow) + WORD_END),
        vim_match("Flow", any_of(words.jumps) + WORD_END, " nextgroup=korvaneReference skipwhite"),
        vim_match("Operator", any_of(words.operators) + WORD_END),
        *vim_bare("System", words.system),
        *vim_bare("Function", words.bare),
        vim_match("Name", r"INPUT\$"),
        vim_match("Function", any_of(words.called) + r"(?=[ \t]*\()"),
        vim_match("Number", NUMBER),
        vim_match("Number", BITS),
        vim_match("Reference", "[0-9]+" + LINE_REFERENCE_END, " contained nextgroup=korvaneComma skipwhite"),
        "syntax match korvaneComma ~,~ contained nextgroup=korvaneReference skipwhite",
        vim_match("String", "\"[^\"]*(?:\"|$)"),
        vim_match("Word", f"DATA{WORD_END}", " nextgroup=korvaneData"),
        vim_match("Data", "(?:[^\":]|\"[^\"]*(?:\"|$))+", " contained contains=korvaneString"),
        vim_match("Comment", "'.*$"),
        vim_match("Comment", f"REM{WORD_END}.*$"),
        vim_match("LineNumber", "^ *[0-9]+"),
        "",
    ]
    links = {
        "LineNumber": "LineNr", "Reference": "Label", "Flow": "Conditional", "Word": "Statement",
        "Operator": "Operator", "Function": "Function", "System": "Constant", "UserFunction": "Special",
        "Name": "Identifier", "Number": "Number", "String": "String", "Data": "PreProc", "Comment": "Comment", "Error": "Error",
    }
    lines += [f"highlight default link korvane{ours} {theirs}" for ours, theirs in links.items()]
    return "\n".join([*lines, "", "let b:current_syntax = \"korvane\"", ""])


# ---- All -------------------------------------------------------------------------------------------------------

def as_json(value):
    return json.dumps(value, indent=2) + "\n"


def with_version(package):
    """The description of the extension; its version is that of the interpreter, whose words it has."""
    version = (ROOT / "VERSION").read_text().strip()
    changed, count = re.subn(r'(?<=^  "version": ")[^"]*(?=",$)', version, package, flags=re.M)
    if count != 1:
        raise ValueError("the extension's version is not read as it is written")
    return changed


def files():
    words = Words()
    return {
        EDITORS / "vim/syntax/korvane.vim": vim_syntax(words),
        EDITORS / "vscode/syntaxes/korvane.tmLanguage.json": as_json(grammar(words)),
        EDITORS / "vscode/snippets/korvane.json": as_json(snippets()),
        EDITORS / "vscode/words.json": as_json(word_table.help_texts()),
        EDITORS / "vscode/package.json": with_version((EDITORS / "vscode/package.json").read_text()),
    }


def main(arguments):
    if arguments not in ([], ["--check"]):
        print(__doc__, file=sys.stderr)
        return 2
    stale = [(path, text) for path, text in files().items() if not path.exists() or path.read_text() != text]
    for path, text in stale:
        if arguments:
            print(f"{path.relative_to(ROOT)} is not current; tools/make_editor_files.py mends it")
        else:
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)
    return 1 if stale and arguments else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
