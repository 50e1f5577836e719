#!/usr/bin/env python3
"""make-man-pages.py PAGES OUTPUT VERSION: the manual of tn, from the pages of its commands in docs/tn.

Takes of Markdown what the pages use: headings, paragraphs, lists, tables, code, links."""
import gzip
import pathlib
import re
import sys


CONFIGURATION = """# CONFIGURATION
A file that `--config FILE` or the environment variable `TN_CONFIG` names gives peers names and
options values; what stands on the command line goes before it.

    [peers]
    archive = "ARCHIVE@pacs.example:104"
    [send]
    aet = "WORKSTATION"

With it, `tn send @archive image.dcm` calls the archive as WORKSTATION.
""".splitlines()


def escape(text):
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return re.sub(r"^([.'])", r"\\&\1", text)


def inline(text):
    text = re.sub(r"\[([^]]*)\]\([^)]*\)", r"\1", text)
    text = escape(text)
    text = re.sub(r"`([^`]*)`", r"\\fB\1\\fR", text)
    return re.sub(r"\*\*([^*]*)\*\*", r"\\fB\1\\fR", text)


def body(lines):
    output, code, indent = [], False, ""
    for line in lines:
        if line.startswith("```"):
            code = not code
            output.append(".PP\n.EX" if code else ".EE")
        elif code:
            output.append(escape(indent + line if line else ""))
        elif line.startswith("    "):
            output.append(f".PP\n.EX\n{escape(line)}\n.EE" if not output or not output[-1].endswith(".EE")
                          else output.pop()[:-3] + f"{escape(line)}\n.EE")
        elif line.startswith("#"):
            indent = "" if line == "## Help" else "    "  # what --help says is as wide as a screen
            output.append(".SH " + inline(line.lstrip("# ")).upper())
        elif line.startswith("- "):
            output.append(".IP \\(bu 2\n" + inline(line[2:]))
        elif re.match(r"\|[-| ]*$", line):
            continue
        elif line.startswith("|"):
            cells = [inline(cell.strip()) for cell in line.strip().strip("|").split("|")]
            output.append(f".TP\n{cells[0] or chr(92) + '&'}\n{'; '.join(cells[1:])}")
        elif not line.strip():
            output.append(".PP")
        else:
            output.append(inline(line.strip()))
    return output


def write(path, name, summary, lines, version):
    text = [f'.TH {name.upper()} 1 "" "Talvenor {version}" "Talvenor"', ".SH NAME", f"{escape(name)} \\- {inline(summary)}",
            ".SH DESCRIPTION", *body(lines)]
    tidy = re.sub(r"(\.PP\n)+(?=\.(SH|PP|IP|TP))", "", "\n".join(text) + "\n")
    text = re.sub(r"(\.SH [^\n]*\n)(\.PP\n)+", r"\1", tidy).rstrip() + "\n"
    path.write_bytes(gzip.compress(text.encode(), 9, mtime=0))  # as Debian wants them; the same bytes each time


def main():
    pages, output, version = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3]
    output.mkdir(parents=True, exist_ok=True)
    commands = []
    for page in sorted(pages.glob("*.md")):
        if page.stem == "README":
            continue
        lines = page.read_text().splitlines()
        summary = lines[2].rstrip(".")
        summary = summary[0].lower() + summary[1:]
        name = "tn-" + page.stem
        commands.append((name, summary))
        write(output / f"{name}.1.gz", name, summary, [*lines[3:], "", "# SEE ALSO", "`tn`(1)"], version)
    table = ["Each command has a page of its own.", ""]
    for name, summary in commands:
        table.append(f"| `{name}`(1) | {summary} |")
    table += ["", *CONFIGURATION, "# EXIT STATUS", "0 done, 1 some of it failed or the answer is no, 2 wrong use, 3 could not read,",
              "4 could not write, 5 no connection, 6 association rejected, 7 no context accepted,",
              "8 the peer answered with a failure, 9 time-out, 10 cancelled.", "", "# FILES",
              "`../share/talvenor`, beside the folder of the program: the dictionaries."]
    write(output / "tn.1.gz", "tn", "the DICOM toolkit on the command line", table, version)


main()
