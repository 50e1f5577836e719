#!/usr/bin/env python3
"""tidy.py BUILD [--minutes N] [--jobs N] [FILE...]: clang-tidy over every source file, or those named, whatever it finds an error.

BUILD has the compile_commands.json. What was found clean is noted in a folder of the user's, and not looked at again
until the file, one that it includes, its command, .clang-tidy or the tool changes. What changed last comes first; when
the minutes are over, no further file is begun, and the number of those that were left out is told."""
import argparse
import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
FOLDERS = ["talvenor", "apps", "tests", "bench", "fuzz", "examples"]
NOTES = pathlib.Path(os.environ.get("XDG_CACHE_HOME") or pathlib.Path.home() / ".cache") / "talvenor-tidy"


def included(path, known):
    """The files of the project that path is made of, itself among them. known keeps what each file names."""
    found, waiting = set(), [path]
    while waiting:
        file = waiting.pop()
        if file in found:
            continue
        found.add(file)
        if file not in known:
            names = re.findall(r'^\s*#\s*include\s*["<]([^">]+)[">]', file.read_text(), re.MULTILINE)
            places = [place / name for name in names for place in (file.parent, ROOT, ROOT / "tests")]
            known[file] = [place.resolve() for place in places if place.is_file()]
        waiting += known[file]
    return found


def last_changes():
    """File to the time of the commit that changed it last."""
    log = subprocess.run(["git", "log", "--format=@%ct", "--name-only"], cwd=ROOT, capture_output=True, text=True)
    times, now = {}, 0
    for line in log.stdout.splitlines():
        if line.startswith("@"):
            now = int(line[1:])
        elif line:
            times.setdefault(ROOT / line, now)
    return times


def sources(build, names):
    """(path, note, time of its last change, whether it has a command), what changed last first. A file without a command
    gets that of a neighbour from clang-tidy."""
    tool = subprocess.run(["clang-tidy", "--version"], capture_output=True).stdout + (ROOT / ".clang-tidy").read_bytes()
    commands = {pathlib.Path(entry["file"]): entry["command"].replace(str(ROOT), "").replace(entry["directory"], "")
                for entry in json.loads((build / "compile_commands.json").read_text())}
    paths = [pathlib.Path(name).resolve() for name in names]
    paths = paths or [path for folder in FOLDERS for path in (ROOT / folder).rglob("*.cpp")]
    known, changes, result = {}, last_changes(), []
    for path in paths:
        parts = sorted(included(path, known))
        digest = hashlib.sha256(tool + commands.get(path, "").encode())
        for part in parts:
            digest.update(str(part.relative_to(ROOT)).encode() + part.read_bytes())
        result.append((path, NOTES / digest.hexdigest(), max(changes.get(part, time.time()) for part in parts),
                       path in commands))
    return sorted(result, key=lambda source: -source[2])


def check(path, note, has_command, build, end):
    """None when the time is over, else what clang-tidy finds."""
    if time.monotonic() > end:
        return None
    extra = [] if has_command else [f'--extra-arg=-DTALVENOR_SOURCE_DIR="{ROOT}"']
    done = subprocess.run(["clang-tidy", "-p", str(build), "--quiet", "--warnings-as-errors=*", *extra, str(path)],
                          cwd=ROOT, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    if done.returncode == 0:
        note.touch()
        return ""
    return done.stdout or done.stderr


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("files", nargs="*")
    parser.add_argument("--minutes", type=float, default=1e6)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    options = parser.parse_intermixed_args()
    end = time.monotonic() + 60 * options.minutes
    NOTES.mkdir(parents=True, exist_ok=True)
    listed = sources(options.build, options.files)
    waiting = [source for source in listed if not source[1].exists()]
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        tasks = [pool.submit(check, path, note, has_command, options.build, end)
                 for path, note, _, has_command in waiting]
        for task in concurrent.futures.as_completed(tasks):
            if task.result():
                print(task.result(), flush=True)
    results = [task.result() for task in tasks]
    found, left = sum(bool(result) for result in results), results.count(None)
    print(f"clang-tidy: {len(listed)} files; {len(listed) - len(waiting)} known to be clean, "
          f"{len(waiting) - left} looked at, {found} with findings, {left} left out for want of time")
    return found > 0


if __name__ == "__main__":
    sys.exit(main())
