#!/usr/bin/env python3
"""make-tn-pages.py TN FOLDER [--check]: brings the help in the pages of the commands of tn up to date.

Each page of docs/tn is what a person wrote, up to the heading "Help"; below stands what --help says. With --check nothing
is written, and the exit code is 1 when a page is missing or not up to date."""
import pathlib
import re
import subprocess
import sys

HEADING = "\n## Help\n"


def help_of(program, *command):
    return subprocess.run([program, *command, "--help"], check=True, capture_output=True, text=True).stdout.strip()


def subcommands(text):
    found = re.search(r"^Commands:\n((?:  .*\n?)*)", text, re.M)
    return re.findall(r"^  (\S+)", found[1], re.M) if found else []


def page(program, name, old):
    text = help_of(program, name)
    written = old.split(HEADING)[0] if old else f"# tn {name}\n\n{text.splitlines()[0]}.\n"
    result = written + HEADING
    for command in [[name]] + [[name, inner] for inner in subcommands(text)]:
        lines = "\n".join(line.rstrip() for line in help_of(program, *command).splitlines()[1:])
        result += f"\n```\n$ tn {' '.join(command)} --help\n{lines}\n```\n"
    return result


def main():
    program, folder, check = sys.argv[1], pathlib.Path(sys.argv[2]), "--check" in sys.argv
    wrong = []
    for name in subcommands(help_of(program)):
        path = folder / f"{name}.md"
        old = path.read_text() if path.exists() else ""
        new = page(program, name, old)
        if new != old:
            wrong.append(path.name)
            if not check:
                path.write_text(new)
    if check and wrong:
        sys.exit(f"not what --help says: {', '.join(wrong)}; ./run docs brings them up to date")


main()
