#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Checks a page of the guide: its code is that of its programs, and its output is theirs.

A page shows a program as <!-- tests/guide/NAME: REGION --> before a fenced block, for each of the program's regions
in their order, and what a region prints as <!-- output --> before a block. A region begins after a line "# [REGION]"
or "// [REGION]" and ends at the next one. C++ programs are built before; shell and Python programs are run here, one
after the other in a directory that holds the samples and what the page's programs before them have made.

usage: check.py [--update] PAGE PROGRAMS MERIDOR SAMPLES [PYTHON]
PROGRAMS is the directory of the built C++ programs, PYTHON that of the Python package; without it, Python programs
are compared and not run. With --update the page is written anew instead: look at the difference.
"""
import difflib
import math
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
BLOCK = re.compile(r"^<!-- (?:(tests/guide/\S+): (\S+)|(output)) -->\n```(\S*)\n(.*?)^```$", re.M | re.S)
MARK = re.compile(r"^(?:#|//) \[(\w+)\]\n", re.M)
NUMBER = re.compile(r"(-?\d+\.\d+(?:e[-+]?\d+)?)")
HEARD = re.compile(r"^@@ (\w+)\n", re.M)


def split(text, mark):
    """The regions of a text by name, in order."""
    parts = mark.split(text)
    return dict(zip(parts[1::2], (part.strip("\n") for part in parts[2::2])))


def same(old, new):
    """Whether two outputs are equal but for the last digits of numbers, where an iteration may stop elsewhere, and
    the blanks that these move."""
    old, new = old.split(), new.split()
    return len(old) == len(new) and all(map(same_word, old, new))


def same_word(old, new):
    olds, news = NUMBER.split(old), NUMBER.split(new)
    return olds[::2] == news[::2] and len(olds) == len(news) and all(
        math.isclose(float(a), float(b), rel_tol=1e-6) for a, b in zip(olds[1::2], news[1::2]))


def command(path, text, programs, python):
    """The command line that runs a program; None if it cannot run here. A script announces its regions."""
    if path.suffix == ".h" or path.suffix == ".py" and not python:
        return None
    if path.suffix == ".cpp":
        return [str(pathlib.Path(programs, "guide_" + path.stem))]
    announce = {".sh": r"echo '@@ \1'" + "\n", ".py": r"print('@@ \1', flush=True)" + "\n"}[path.suffix]
    program, option = {".sh": ("bash", "-c"), ".py": ("/usr/bin/python3", "-c")}[path.suffix]
    return [program, option, MARK.sub(announce, text)]


def run(path, text, programs, meridor, python, directory):
    """What each region prints; None if the program cannot run here. A C++ program prints after its last region."""
    arguments = command(path, text, programs, python)
    if arguments is None:
        return None
    environment = dict(os.environ, PATH=os.path.dirname(meridor) + os.pathsep + os.environ["PATH"], LC_ALL="C.UTF-8",
                       PYTHONPATH=python, PYTHONUNBUFFERED="1", TZ="UTC",
                       XDG_CACHE_HOME=os.path.join(directory, "cache"))
    done = subprocess.run(arguments, cwd=directory, env=environment, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8", check=False)
    heard = re.sub(r"[ \t]+$", "", done.stdout, flags=re.M)
    if path.suffix != ".sh" and done.returncode != 0:
        sys.exit(f"{path.name} ended with {done.returncode}:\n{done.stdout}")
    if path.suffix == ".cpp":
        return {list(split(text, MARK))[-1]: heard.strip("\n")}
    return split(heard, HEARD)


def headings(path):
    """The anchors of a page's headings."""
    titles = re.findall(r"^#+ (.*)$", path.read_text(encoding="utf-8"), re.M)
    return {re.sub(r"[^\w -]", "", title).lower().replace(" ", "-") for title in titles}


def broken_links(page, text):
    """The links of a page to files and headings that are not there."""
    faults = []
    for target in re.findall(r"\]\(([^)\s]+)\)", re.sub(r"^```.*?^```$", "", text, flags=re.M | re.S)):
        name, _, anchor = target.partition("#")
        path = page.parent / name if name else page
        if not path.exists() or anchor and anchor not in headings(path):
            faults.append(f"{page.name} links to {target}, which is not there")
    return faults


def left_out(index, text):
    """Pages that the index does not link to, and programs that no page shows."""
    pages = {page: page.read_text(encoding="utf-8") for page in index.parent.glob("*.md")}
    faults = [f"{page.name} is not in {index.name}" for page in pages if page != index and f"({page.name})" not in text]
    for program in sorted((ROOT / "tests/guide").iterdir()):
        if program.name not in ("CMakeLists.txt", "check.py") and program.is_file():
            if not any(f"<!-- tests/guide/{program.name}:" in body for body in pages.values()):
                faults.append(f"no page shows {program.name}")
    return faults


def main():
    arguments = sys.argv[1:]
    update = arguments[:1] == ["--update"]
    page, programs, meridor, samples, *python = arguments[update:]
    regions, outputs, shown = {}, {}, {}
    last = None

    def expected(match):
        """The block as it has to be."""
        nonlocal last
        name, region, _, language, old = match.groups()
        if name:
            if name not in regions:
                path = ROOT / name
                text = path.read_text(encoding="utf-8")
                regions[name] = split(text, MARK)
                outputs[name] = run(path, text, programs, meridor, "".join(python), directory)
            last = name, region
            shown.setdefault(name, []).append(region)
            body = regions[name].get(region, "there is no such region")
        else:
            heard = outputs[last[0]]
            body = old.rstrip("\n") if heard is None else heard.pop(last[1], "")
            if same(old, body):
                body = old.rstrip("\n")
        head = match.group(0).split("\n", 1)[0]
        return f"{head}\n```{language}\n{body}\n```"

    path = pathlib.Path(page)
    text = path.read_text(encoding="utf-8")
    with tempfile.TemporaryDirectory() as directory:
        os.symlink(samples, os.path.join(directory, "samples"))
        wanted = BLOCK.sub(expected, text)
    if update:
        path.write_text(wanted, encoding="utf-8")
    faults = list(difflib.unified_diff(text.split("\n"), wanted.split("\n"), path.name, "tests/guide", lineterm=""))
    faults = [] if update else faults
    for name, names in shown.items():
        if names != list(regions[name]):
            faults.append(f"{path.name} shows the regions {names} of {name}, which has {list(regions[name])}")
        for region, heard in (outputs[name] or {}).items():
            if heard:
                faults.append(f"{path.name} does not show what {region} of {name} prints:\n{heard}")
    faults += broken_links(path, wanted)
    if path.name == "README.md":
        faults += left_out(path, wanted)
    sys.exit("\n".join(faults) if faults else 0)


if __name__ == "__main__":
    main()
