#!/usr/bin/env python3
"""Makes the dictionary files of data/ from tables of the DICOM standard and of private elements.

    tools/make-dictionaries.py TABLES [DATA]

TABLES is a folder with attributes.tsv, uids.tsv and private.tsv; DATA defaults to the data folder of this tree. The
tables are tab-separated, their first line that does not begin with '#' names the columns, and the '#' lines tell where
a table comes from; they are carried into the files made. The same tables give the same files, byte for byte.

Every line is written by one function, read back by the rules of the library and compared, so that nothing that the
library would refuse or understand otherwise is written.
"""

import collections
import pathlib
import re
import sys

ANY_NUMBER = 4294967295  # VM maximum of attributes with any number of values: the largest number the field can hold

VALUE_TYPES = set(
    "AE AS AT CS DA DS DT FL FD IS LO LT OB OF OW PN SH SL SQ SS ST TM UI UL UN US UT "
    "OW_or_OB US_US_or_SS_US US_or_SS US_or_SS_or_OW NONE".split())

# Alternatives of the standard, and representations that the format has no name for.
VR_TO_VALUE_TYPE = {
    "OB or OW": "OW_or_OB",
    "US or SS": "US_or_SS",
    "US or SS or OW": "US_or_SS_or_OW",
    "US or OW": "US_or_SS_or_OW",
    **dict.fromkeys(["UC", "UR", "OD", "OL", "OV", "SV", "UV", ""], "UN"),
}

UID_TYPES = {
    "Transfer Syntax": "TS",
    "SOP Class": "SC",
    "Meta SOP Class": "MC",
    "Well-known SOP Instance": "SI",
    "Application Context Name": "AC",
    "Application Hosting Model": "U1",
    "Coding Scheme": "U1",
    "DICOM UIDs as a Coding Scheme": "U1",
    "Mapping Resource": "U1",
    "Service Class": "U1",
    "Synchronization Frame of Reference": "U1",
    "Well-known Frame of Reference": "U1",
    "Context Group Name": "U2",
    "LDAP OID": "U2",
}

# Every other transfer syntax encodes all but its pixel data as explicit VR little endian (PS3.5 annex A).
BASIC_ENCODINGS = {"1.2.840.10008.1.2": "TSLEI", "1.2.840.10008.1.2.2": "TSBEE"}

# The library's own attributes, which it knows by keyword: creator, group, offset, VR, VM, name.
OWN_PRIVATE = [
    ("CORVAN0", "0009", "10", "UI", "1", "Orig SOP Inst UID"),
    ("CORVAN0", "0009", "11", "US", "1", "CORVAN Demo File Version"),
    ("CORVAN0", "0009", "12", "US", "1", "Reconst Image Flag"),
]


class Table:
    """The rows of a table as named tuples, and the lines that tell where it comes from."""

    def __init__(self, path):
        lines = path.read_text(encoding="utf-8").splitlines()
        self.origin = [line[1:].strip() for line in lines if line.startswith("#")]
        cells = [line.split("\t") for line in lines if line and not line.startswith("#")]
        row = collections.namedtuple("Row", cells[0])
        self.rows = [row(*(cell.strip() for cell in (line + [""] * len(cells[0]))[:len(cells[0])]))
                     for line in cells[1:]]


def read_back(line, count):
    """The fields of a line as the library reads them; None where it would refuse the line."""
    fields = []
    for _ in range(count - 1):
        line = line.lstrip(" \t")
        found = re.match(r'"[^"]*"[ \t]*,|[^,][^,]*,', line)
        if not found:
            return None
        line = line[found.end():]
        fields.append(unquoted(found.group()[:-1]))
    return fields + [unquoted(line.lstrip(" \t"))]


def unquoted(text):
    text = text.rstrip(" \t")
    return text[1:-1] if len(text) >= 2 and text[0] == text[-1] == '"' else text


def make_line(fields, quoted=None):
    """A line of the fields; the one numbered `quoted` stands in double quotes."""
    line = ",".join('"%s"' % field if number == quoted else field for number, field in enumerate(fields))
    if read_back(line, len(fields)) != list(fields):
        raise ValueError("this line would not be read as it was meant: " + line)
    return line


# A double quote would end the text; the others only look like their ASCII forms.
ASCII_FORMS = str.maketrans({'"': "'", "\u2019": "'", "\u2010": "-", "\u2013": "-", "\u00a0": " "})


def plain(text):
    """Text that can stand between double quotes on one line of a dump."""
    if re.search("[\u0080-\u009f]", text):  # UTF-8 that was once taken for Latin-1
        text = text.encode("latin-1").decode("utf-8")
    text = text.translate(ASCII_FORMS)
    return re.sub(r"\s+", " ", text).strip()


def multiplicity(text):
    """Minimum and maximum of 1, 1-3, 1-n, 2-2n."""
    low, _, high = (text or "1").partition("-")
    high = high or low
    return low, str(ANY_NUMBER) if high.endswith("n") else str(int(high))


def value_type(vr, vm="", keyword=""):
    # The first and third value of a lookup table descriptor are unsigned whatever the pixels are (PS3.3 C.11.1.1.1).
    if vr == "US or SS" and vm == "3" and keyword.endswith("Descriptor"):
        return "US_US_or_SS_US"
    found = VR_TO_VALUE_TYPE.get(vr, vr)
    if found not in VALUE_TYPES:
        raise ValueError("unknown value representation: " + vr)
    return found


def unique(name, taken, suffix):
    """The name, or the name with a suffix when it is taken."""
    if name in taken:
        name += "_" + suffix
    if name in taken:
        raise ValueError("name is not unique: " + name)
    taken.add(name)
    return name


def comments(lines):
    return ["// " + line if line else "//" for line in lines]


def write(path, lines):
    path.write_text("\n".join(lines) + "\n", encoding="utf-8", newline="\n")


def attribute_line(row, names):
    tag = row.group.upper() + row.element.upper()
    is_delimiter = row.group.upper() == "FFFE"
    keyword = unique(row.keyword or "Retired_" + tag, names, tag)
    kind = "NONE" if is_delimiter and not row.VR else value_type(row.VR, row.VM, keyword)
    description = plain(row.name or "Retired attribute")
    return make_line([row.group.upper(), row.element.upper(), kind, description, keyword, *multiplicity(row.VM)], 3)


def make_attributes(table, path):
    names = set()
    rows = sorted(table.rows, key=lambda row: (int(row.group, 16), int(row.element, 16)))
    lines = [attribute_line(row, names) for row in rows]
    write(path, comments([
        "Attributes of DICOM (PS3.6 clauses 6 to 9, PS3.7 annex E).",
        "group, element, value representation, description, name, VM minimum, VM maximum",
        "",
        "- Any number of values (1-n, 2-2n) has the VM maximum %d." % ANY_NUMBER,
        "- Curve and overlay groups (50xx, 60xx) are listed once, under 5000 and 6000, where the library looks for all",
        "  of them. Of group 7Fxx and of repeating elements (0020,31xx and the like) only the first is listed.",
        "- Representations that this format cannot name (UC, UR, OD, OL, OV, SV, UV) and blank ones of retired",
        "  attributes are UN. Items and delimiters have NONE. \"US or OW\" is US_or_SS_or_OW.",
        "- The descriptors of look-up tables, \"US or SS\" in the standard, are US_US_or_SS_US: the first and the third of",
        "  their three values are unsigned.",
        "- Retired attributes without a keyword have the name Retired_ and their tag.",
        "",
        "Made by tools/make-dictionaries.py from a table that says of itself:",
        *table.origin,
        ""]) + lines)
    return len(lines)


def uid_line(row, mnemonics):
    kind = UID_TYPES[row.type]
    mnemonic = unique(row.keyword or "Retired_" + row.UID.replace(".", "_"), mnemonics, row.UID.replace(".", "_"))
    fields = [kind, row.UID, mnemonic, plain(row.name) or plain("Retired " + row.info)]
    if kind == "TS":
        fields.append(BASIC_ENCODINGS.get(row.UID, "TSLEE"))
    return make_line(fields, 3)


def uid_order(row):
    return [int(part) for part in row.UID.split(".")]


def make_uids(table, path):
    mnemonics = set()
    lines = [uid_line(row, mnemonics) for row in sorted(table.rows, key=uid_order)]
    write(path, comments([
        "Registered UIDs (PS3.6 annex A).",
        "type, UID, mnemonic, description and, for TS, basic encoding",
        "",
        "- TS transfer syntax, SC SOP class, MC meta SOP class, SI well-known SOP instance, AC application context.",
        "- U1: what else has a UID of its own: frames of reference, coding schemes, service classes, hosting models,",
        "  mapping resources. U2: context groups and LDAP object identifiers.",
        "- The mnemonic is the keyword; entries without one have Retired_ and the UID with underscores.",
        "- The basic encoding is that of everything outside the pixel data, of a deflated syntax after inflating. The",
        "  few syntaxes that encode no data set (MIME, XML) have TSLEE, because every TS line must have one.",
        "",
        "Made by tools/make-dictionaries.py from a table that says of itself:",
        *table.origin,
        ""]) + lines)
    return len(lines)


def is_creator(text):
    """A valid private creator identifier that a file can carry: blanks at its ends would be lost."""
    return 1 <= len(text) <= 64 and all(" " <= letter <= "~" for letter in text) and \
        text == text.strip() == unquoted(text)


def keyword_of(text):
    """The words of a description joined, each with a capital: "Number of images" gives NumberOfImages."""
    return "".join(word[0].upper() + word[1:] for word in re.findall(r"[A-Za-z0-9]+", text))


def file_name_of(creator, taken):
    """A name for any file system: case does not tell two of them apart."""
    name = base = re.sub(r"[^A-Za-z0-9.-]+", "_", creator).strip("._") or "creator"
    number = 1
    while name.lower() in taken:
        number += 1
        name = "%s-%d" % (base, number)
    taken.add(name.lower())
    return name + ".dic"


def private_lines(rows):
    names = set()
    for row in sorted(rows, key=lambda row: int(row.offset, 16)):
        place = "%s_xx%s" % (row.group.upper(), row.offset.upper())
        name = unique(keyword_of(row.name) or "Private_" + place, names, place)
        yield make_line([row.group.upper(), "00" + row.offset.upper(), value_type(row.VR), plain(row.name), name,
                         *multiplicity(row.VM)], 3)


def make_private(table, folder):
    creators = collections.defaultdict(lambda: collections.defaultdict(list))
    refused = set()
    counts = collections.Counter()
    for row in table.rows:
        group = int(row.group, 16)
        if not is_creator(row.creator):
            refused.add(row.creator)
            counts["rows of refused creators"] += 1
        elif group % 2 == 0 or not 0x0009 <= group < 0xFFFF:
            counts["rows outside private groups"] += 1
        else:
            creators[row.creator][group].append(row)
    own = collections.namedtuple("Own", "creator group offset VR VM name")
    for row in map(own._make, OWN_PRIVATE):
        creators[row.creator][int(row.group, 16)].append(row)

    folder.mkdir(parents=True, exist_ok=True)
    for old in folder.glob("*.dic"):
        old.unlink()
    taken, index = set(), []
    for creator in sorted(creators):
        groups = creators[creator]
        group = min(groups, key=lambda one: (-len(groups[one]), one))  # the largest; of equal ones the lowest
        others = sum(len(rows) for one, rows in groups.items() if one != group)
        lines = list(private_lines(groups[group]))
        head = ["Attributes of one private creator; the element is the offset within its block (PS3.5 7.8.1)."]
        if others:
            head.append("A private dictionary has one group: %d attributes of other groups are left out." % others)
        name = file_name_of(creator, taken)
        write(folder / name, comments(head) + ["PrivateCreator = " + creator] + lines)
        index.append(make_line([name, creator]))
        counts["entries"] += len(lines)
        counts["rows of further groups, left out"] += others
        counts["creators with further groups"] += bool(others)
    write(folder / "index", comments([
        "Private dictionaries, read when their creator is first met: file name, creator identifier.",
        "A creator that uses several groups has the one with the most attributes. 5001, 6001 and 7001 stand for",
        "themselves here, although the tables mean any odd group of the range. Creators that are no valid identifier",
        "(PS3.5 7.8.1: 1 to 64 characters of ASCII) and attributes outside private groups are left out.",
        "",
        "Made by tools/make-dictionaries.py from a table that says of itself:",
        *table.origin,
        ""]) + index)
    counts["creators"] = len(index)
    counts["creators refused"] = len(refused)
    return counts


def main(arguments):
    if len(arguments) not in (1, 2):
        sys.exit(__doc__)
    tables = pathlib.Path(arguments[0])
    data = pathlib.Path(arguments[1]) if len(arguments) == 2 else pathlib.Path(__file__).resolve().parent.parent / "data"
    data.mkdir(parents=True, exist_ok=True)
    print("dicom.dic: %d attributes" % make_attributes(Table(tables / "attributes.tsv"), data / "dicom.dic"))
    print("uid.dic: %d UIDs" % make_uids(Table(tables / "uids.tsv"), data / "uid.dic"))
    for what, count in sorted(make_private(Table(tables / "private.tsv"), data / "private").items()):
        print("private: %d %s" % (count, what))


if __name__ == "__main__":
    main(sys.argv[1:])
