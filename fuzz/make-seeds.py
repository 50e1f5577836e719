#!/usr/bin/env python3
"""Writes the corpora that the fuzz targets start from, fuzz/corpus/<target>/..., deterministically.

A seed is a small input that reaches a part of the reader which random bytes would not find."""

import pathlib
import struct

HERE = pathlib.Path(__file__).resolve().parent
DATA = HERE.parent / "data"
UNDEFINED = 0xFFFFFFFF
LONG = {b"OB", b"OF", b"OW", b"SQ", b"UN", b"UT"}

# The first byte of an input of FuzzPart10: what comes, whole files or the dataset in one syntax.
FILE, STRICT_FILE, IMPLICIT, EXPLICIT, BIG, JPEG, JPEG2000, RLE = range(8)
KNOWN_TAGS_ONLY, PIECES = 0x10, 0x60


class Writer:
    def __init__(self, kind):
        self.order = ">" if kind == BIG else "<"
        self.explicit = kind != IMPLICIT

    def element(self, tag, vr, value=b"", length=None):
        length = len(value) if length is None else length
        head = struct.pack(self.order + "HH", tag >> 16, tag & 0xFFFF)
        if not self.explicit or tag >> 16 == 0xFFFE:
            return head + struct.pack(self.order + "I", length) + value
        if vr in LONG:
            return head + vr + b"\0\0" + struct.pack(self.order + "I", length) + value
        return head + vr + struct.pack(self.order + "H", length) + value

    def us(self, tag, number):
        return self.element(tag, b"US", struct.pack(self.order + "H", number))

    def item(self, content, defined=True):
        if defined:
            return self.element(0xFFFEE000, b"", content)
        return self.element(0xFFFEE000, b"", content, UNDEFINED) + self.element(0xFFFEE00D, b"")

    def sequence(self, tag, items, defined=True, vr=b"SQ"):
        if defined:
            return self.element(tag, vr, items)
        return self.element(tag, vr, items, UNDEFINED) + self.element(0xFFFEE0DD, b"")

    def fragments(self, *fragments):
        items = b"".join(self.element(0xFFFEE000, b"", fragment) for fragment in fragments)
        return self.sequence(0x7FE00010, items, False, b"OB")


def dataset(kind):
    w = Writer(kind)
    code = w.element(0x00080100, b"SH", b"121401") + w.element(0x00080102, b"SH", b"DCM ")
    un = Writer(IMPLICIT)
    parts = [
        w.element(0x00080005, b"CS", b"ISO_IR 100"),
        w.element(0x00080016, b"UI", b"1.2.840.10008.5.1.4.1.1.7\0"),
        w.element(0x00080060, b"CS", b"OT"),
        w.sequence(0x00081115, w.item(code) + w.item(code, False) + w.item(b"")),
        w.sequence(0x00081199, w.item(w.sequence(0x0040A043, w.item(code, False), False), False), False),
        w.element(0x00090010, b"LO", b"GEMS_IDEN_01"),
        w.element(0x00091001, b"LO", b"GE_GENESIS_FF "),
        w.sequence(0x00091100, un.item(un.element(0x00080060, b"", b"MR")), False, b"UN"),
        w.element(0x00100010, b"PN", b"Doe^Jane^^Dr.=A=B "),
        w.element(0x00100020, b"LO", b""),
        w.element(0x00101010, b"AS", b"043Y"),
        w.us(0x00280002, 1), w.us(0x00280010, 2), w.us(0x00280011, 2), w.us(0x00280103, 1), w.us(0x00280106, 0xFFFF),
        w.element(0x00280009, b"AT", struct.pack(w.order + "HH", 0x0018, 0x1063)),
        w.element(0x00282112, b"DS", b"10.5\\2"),
        w.element(0x00189087, b"FD", struct.pack(w.order + "d", 1.5)),
        w.element(0x00400000, b"UL", struct.pack(w.order + "I", 20)),
    ]
    if kind in (JPEG, JPEG2000, RLE):
        parts.append(w.fragments(struct.pack("<II", 0, 12), b"\xff\xd8\xff\xd9", b"\xff\xd8", b"\xff\xd9"))
    else:
        parts.append(w.element(0x7FE00010, b"OW", b"\1\2\3\4\5\6\7\10"))
    parts.append(w.element(0xFFFCFFFC, b"OB", b"\0\0"))
    return b"".join(parts)


def whole_file(kind, uid):
    w = Writer(EXPLICIT)
    uid += b"\0" * (len(uid) % 2)
    meta = b"".join([
        w.element(0x00020001, b"OB", b"\0\1"),
        w.element(0x00020002, b"UI", b"1.2.840.10008.5.1.4.1.1.7\0"),
        w.element(0x00020003, b"UI", b"1.2.3.4\0"),
        w.element(0x00020010, b"UI", uid),
        w.element(0x00020012, b"UI", b"1.2.3\0"),
        w.element(0x00020100, b"UI", b"1.2.3\0"),
        w.element(0x00020102, b"OB", b"AB"),
    ])
    return b"\0" * 128 + b"DICM" + w.element(0x00020000, b"UL", struct.pack("<I", len(meta))) + meta + dataset(kind)


UIDS = {IMPLICIT: b"1.2.840.10008.1.2", EXPLICIT: b"1.2.840.10008.1.2.1", BIG: b"1.2.840.10008.1.2.2",
        JPEG: b"1.2.840.10008.1.2.4.50", RLE: b"1.2.840.10008.1.2.5"}
NAMES = {IMPLICIT: "implicit", EXPLICIT: "explicit", BIG: "big-endian", JPEG: "jpeg", JPEG2000: "jpeg2000", RLE: "rle"}


def part10_seeds():
    for kind, uid in UIDS.items():
        yield "file-" + NAMES[kind], bytes([FILE, 0]) + whole_file(kind, uid)
    yield "file-strict", bytes([STRICT_FILE, 0]) + whole_file(EXPLICIT, UIDS[EXPLICIT])
    yield "file-pieces", bytes([FILE | PIECES, 0]) + whole_file(EXPLICIT, UIDS[EXPLICIT])
    yield "file-no-meta", bytes([FILE, 0]) + dataset(IMPLICIT)
    for kind, name in NAMES.items():
        yield "dataset-" + name, bytes([kind, 0]) + dataset(kind)
    yield "known-tags-only", bytes([EXPLICIT | KNOWN_TAGS_ONLY, 0]) + dataset(EXPLICIT)
    yield "stop-at-pixels", bytes([IMPLICIT, 1, 0x7F, 0xE0, 0x00, 0x10]) + dataset(IMPLICIT)
    w = Writer(EXPLICIT)
    deep = b""
    for _ in range(40):
        deep = w.sequence(0x00081115, w.item(deep, False), False)
    yield "deep", bytes([EXPLICIT, 0]) + deep


# FuzzElements takes its decisions from the last quarter of the input, at most 64 bytes.
def elements_seeds():
    for number, kind in enumerate((IMPLICIT, EXPLICIT, BIG, JPEG, RLE)):
        for decision in range(4):
            yield f"{NAMES[kind]}-{decision}", dataset(kind) + bytes([decision]) * 58 + b"\0\1\0\1\0" + bytes([number])


def lines(name, first, count):
    text = (DATA / name).read_text().splitlines()
    return [line for line in text if line and not line.startswith("//")][first:first + count]


def dictionary_seeds():
    yield "attributes", b"\0" + "\n".join(lines("dicom.dic", 40, 12)).encode()
    yield "comments", b"\0// comment\n\n  \n0008,0005,CS,\"Specific Character Set\",SpecificCharacterSet,1,4294967295\r\n"
    yield "quoted", b"\0\"0028\",\"0106\",\"US or SS\",\"Smallest \"\" Value\",\"Smallest\",\"1\",1\n"
    yield "twice", b"\0" + b"0010,0010,PN,\"\",PatientName,1,1\n" * 2
    private = (DATA / "private" / "ACUSON.dic").read_text().splitlines()[:8]
    yield "private", b"\1" + "\n".join(private).encode()
    yield "private-out-of-block", b"\1PrivateCreator = A B\n0009,0101,LO,\"\",X,1,1\n"


def uid_seeds():
    yield "uids", b"\0" + "\n".join(lines("uid.dic", 0, 12)).encode()
    yield "kinds", b"\0" + "\n".join(lines("uid.dic", 60, 8)).encode()
    yield "twice", b"\0" + "\n".join(lines("uid.dic", 2, 1) * 2).encode()
    yield "index", b"\1" + "\n".join(lines("private/index", 0, 6)).encode()
    yield "index-comments", b"\1// x\n\nA.dic,A B C\r\nB.dic,\n"


def main():
    targets = {"FuzzPart10": part10_seeds, "FuzzElements": elements_seeds, "FuzzDataDictionary": dictionary_seeds,
               "FuzzUIDDictionary": uid_seeds}
    for target, seeds in targets.items():
        folder = HERE / "corpus" / target
        folder.mkdir(parents=True, exist_ok=True)
        for name, content in seeds():
            (folder / name).write_bytes(content)


main()
