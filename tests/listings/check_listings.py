"""Runs listings in the style of old magazines with typed answers and compares what they print with their models.

usage: check_listings.py KORVANE-TERMINAL KORVANE.EFI...

Every listing runs in every image given. A run that asks for more answers than its model takes shows its question as
the last row, and answers that are left over are typed at the prompt: both differ from the model.
"""

import concurrent.futures
import difflib
import pathlib
import shutil
import subprocess
import sys
import tempfile

from models import LISTINGS, Answers

FOLDER = pathlib.Path(__file__).parent


def shown_rows(terminal, image, listing, answers):
    """What the run shows below RUN."""
    with tempfile.TemporaryDirectory(prefix="korvane-listing-") as volume:
        copy = shutil.copy(FOLDER / f"{listing}.bas", volume)
        done = subprocess.run([terminal, "--image", image, copy], input="".join(line + "\n" for line in answers),
                              capture_output=True, text=True, timeout=60, check=False)
    shown = [row.rstrip() for row in done.stdout.split("\n")]
    shown = shown[shown.index("RUN") + 1:] if "RUN" in shown else shown
    while shown and not shown[-1]:
        shown.pop()
    return shown


def expected_rows(model, typed):
    answers = Answers(typed)
    rows = [row.rstrip() for row in model(answers)]
    assert not answers.left, f"{model.__name__} leaves the answers {answers.left}"
    return [*rows, "Ready."]


def main(terminal, *images):
    runs = [(model, typed, image) for model, several in LISTINGS.items() for typed in several for image in images]
    missing = {path.stem for path in FOLDER.glob("*.bas")} ^ {model.__name__ for model in LISTINGS}
    failed = len(missing)
    if missing:
        print(f"listing or model missing: {', '.join(sorted(missing))}")
    with concurrent.futures.ThreadPoolExecutor(4) as pool:
        shown = pool.map(lambda run: shown_rows(terminal, run[2], run[0].__name__, run[1]), runs)
        for (model, typed, image), rows in zip(runs, shown):
            expected = expected_rows(model, typed)
            if rows != expected:
                failed += 1
                print(f"{model.__name__} with {typed} in {image}:")
                print("\n".join(difflib.unified_diff(expected, rows, "model", "program", lineterm="")))
    print(f"{len(runs)} runs of {len(LISTINGS)} listings, {failed} failed")
    return 1 if failed or not runs else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
