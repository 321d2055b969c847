"""The words of the language, read from the tables of the interpreter itself."""

import re
from pathlib import Path

import manual

SOURCES = Path(__file__).resolve().parent.parent / "src"

# What an expression joins its operands with. They are keywords like any other to the tokenizer.
OPERATORS = ("MOD", "AND", "OR", "NOT", "XOR", "EQV", "IMP")
# Where a program goes on.
FLOW = ("FOR", "TO", "STEP", "NEXT", "WHILE", "WEND", "IF", "THEN", "ELSE", "GOTO", "GOSUB", "RETURN", "ON", "RESUME",
        "RESTORE", "RUN", "END", "STOP", "CONT", "CHAIN", "ERROR", "BREAK")
# Behind these a number is that of a line.
JUMPS = ("GOTO", "GOSUB", "THEN", "ELSE", "RESUME", "RESTORE")


def keywords():
    """All keywords, in the order of the keyword table."""
    table = (SOURCES / "program/keywords.cpp").read_text()
    words = re.findall(r'^    \{"([A-Z0-9]+)", KW_\w+\},$', table, re.M)
    count = re.search(r"std::array<KeywordEntry, (\d+)> keyword_table", table)
    if not count or len(words) != int(count[1]):
        raise ValueError("the keyword table is not read as it is written")
    strangers = (set(OPERATORS) | set(FLOW) | set(JUMPS)) - set(words)
    if strangers:
        raise ValueError(f"no keywords: {strangers}")
    return words


def functions():
    """The names that are functions in front of "(", those that are functions by themselves, the system variables."""
    table = (SOURCES / "function_table.cpp").read_text()
    arrays = {}
    for name, rows in re.findall(r"^constexpr std::array (\w+)\{\n(.*?)^\};", table, re.M | re.S):
        arrays[name] = re.findall(r'"([A-Z0-9$]+)", \w+\)', rows)
        if len(arrays[name]) != len(re.findall(r"\b(?:bare|taking|call)\(", rows)):
            raise ValueError(f"the table {name} is not read as it is written")
    return arrays["called_functions"], arrays["bare_functions"], arrays["system_variables"]


def help_texts():
    """The texts of HELP by name; some names have two."""
    texts = {}
    for _, name, text in manual.help_entries():
        texts.setdefault(name, []).append(text)
    return texts
