"""The words of the language, for the converter of listings: from the interpreter's own tables in its sources, from a file
made of them where the converter is installed alone."""

import json
from pathlib import Path

WORDS_FILE = Path(__file__).resolve().with_name("words.json")
KINDS = ("keywords", "called", "bare", "system")


def words_of_tables():
    """{kind: sorted words}."""
    import word_table  # it finds its tables only in the sources

    return dict(zip(KINDS, map(sorted, (word_table.keywords(), *word_table.functions())), strict=True))


def as_file():
    """What is installed as words.json beside the converter."""
    return json.dumps(words_of_tables(), indent=1) + "\n"


def words():
    """{kind: set of words}: keywords, functions in front of "(", functions by themselves, system variables."""
    found = json.loads(WORDS_FILE.read_text(encoding="ascii")) if WORDS_FILE.exists() else words_of_tables()
    return {kind: set(found[kind]) for kind in KINDS}
