"""The places of src/ that can be changed to see whether the tests notice, and into what."""

import re

# Texts and tables whose places are no code.
NO_CODE = {"help/help_table.cpp", "numbers/kernel_tables.cpp", "fast/general_only.cpp"}

# Each pattern has one group, which is replaced.
CHANGES = [
    ("comparison", r" (==) ", ["!="]),
    ("comparison", r" (!=) ", ["=="]),
    ("bound", r" (<) ", ["<="]),
    ("bound", r" (<=) ", ["<"]),
    ("bound", r" (>) ", [">="]),
    ("bound", r" (>=) ", [">"]),
    ("operator", r"[\w)\]] (\+) ", ["-"]),
    ("operator", r"[\w)\]] (-) ", ["+"]),
    ("operator", r"[\w)\]] (\*) ", ["+"]),
    ("operator", r"[\w)\]] (&) ", ["|"]),
    ("condition", r" (&&) ", ["||"]),
    ("condition", r" (\|\|) ", ["&&"]),
    ("condition", r"\bif \((?!constexpr)(.+)\) (?:return|continue|break|\{)", ["true", "false"]),
    ("condition", r"\((!)\w", [""]),
    ("constant", r"[ (](\d+)[;,) ]", ["+1", "-1"]),
    ("truth", r"\b(true)\b", ["false"]),
    ("truth", r"\b(false)\b", ["true"]),
    ("call", r"^ +((?!return|if|for|while|else|case)[\w.:>-]+\([^;{}]*\);)$", [""]),
    ("assignment", r"^ +((?!return|const|auto|static)[\w.>\[\]-]+ [+|-]?= [^;{}]*;)$", [""]),
    ("increment", r"(\+\+)\w", ["--"]),
]  # fmt: skip


def without_strings_and_comments(line):
    """The same length, so that places stay."""
    line = re.sub(r'"(?:[^"\\]|\\.)*"', lambda text: '"' + "_" * (len(text[0]) - 2) + '"', line)
    return re.sub(r"//.*$", lambda text: " " * len(text[0]), line)


def places(root, folder):
    """All places of the sources below `root`: file, line number, columns, new text, kind."""
    for file in sorted((root / "src").rglob("*.cpp")):
        name = str(file.relative_to(root / "src"))
        if name in NO_CODE or (folder and not name.startswith(folder.rstrip("/") + "/")):
            continue
        for number, line in enumerate(file.read_text().split("\n")):
            plain = without_strings_and_comments(line)
            if plain.lstrip().startswith(("#", "static_assert", "template")):
                continue
            for kind, pattern, news in CHANGES:
                for match in re.finditer(pattern, plain):
                    for new in news:
                        old = line[match.start(1) : match.end(1)]
                        text = str(int(old) + int(new)) if kind == "constant" else new
                        if not (kind == "constant" and text.startswith("-")):
                            yield (name, number, match.start(1), match.end(1), text, kind)


def folder_of(name):
    return name.split("/")[0] if "/" in name else "src itself"
