#!/usr/bin/env python3
"""Writes the corpora that the fuzz targets start from, fuzz/corpus/<target>/..., deterministically.

A seed is a small input that reaches a part of the reader which random bytes would not find."""

import base64
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


# The first byte of an input of FuzzTranscode: the syntax that it is in, from the lowest bit, the one to write (2 bits
# each), and the size of the pieces in which data arrives.
def transcode_seeds():
    kinds = (IMPLICIT, EXPLICIT, BIG, JPEG)
    for source, kind in enumerate(kinds):
        for target, other in enumerate(kinds):
            pieces = 7 * (source == target)
            yield f"{NAMES[kind]}-to-{NAMES[other]}", bytes([source | target << 2 | pieces << 4]) + dataset(kind)


# FuzzJPEG and FuzzJP2 take the size of the pieces in which data arrives from the first byte.
def segment(marker, body=b""):
    return struct.pack(">HH", marker, len(body) + 2) + body


def jpeg_image(scan):
    return (b"\xff\xd8" + segment(0xFFE1, b"Exif\0\xff\xd8\xff\xd9") + segment(0xFFFE, b"\xff\xd9")
            + segment(0xFFC0, b"\x08\0\x08\0\x08\1\1\x11\0") + segment(0xFFDA, b"\1\1\0\0\x3f\0") + scan + b"\xff\xd9")


def jpeg_seeds():
    image = jpeg_image(b"\x12\xff\0\x34\xff\xd0\x56")
    yield "image", b"\0" + image
    yield "two-in-pieces", b"\3" + image + b"\0" + image + b"\0"
    yield "fill-bytes", b"\1" + b"\xff" * 9 + image.replace(b"\xff\xd9", b"\xff\xff\xff\xd9")
    yield "jpeg-ls", b"\7" + jpeg_image(b"\xff\x7f\xff\1").replace(b"\xff\xc0", b"\xff\xf7")
    yield "bare-and-reserved", b"\0\xff\xd8\xff\1\xff\2\0\2\xff\xbf\0\3\0\xff\xd9"
    yield "bad-length", b"\0\xff\xd8\xff\xe0\0\1\xff\xd9"


def tile_part(data, header=b"", length=None, tile=0):
    length = 14 + len(header) + len(data) if length is None else length
    return segment(0xFF90, struct.pack(">HIBB", tile, length, 0, 1)) + header + b"\xff\x93" + data


def codestream(*tile_parts):
    size = segment(0xFF51, struct.pack(">HIIIIIIIIHBBB", 0, 8, 8, 0, 0, 8, 8, 0, 0, 1, 7, 1, 1))
    style = segment(0xFF52, b"\0\0\0\1\0\5\4\4\0\1") + segment(0xFF5C, b"\x40\x40")
    return b"\xff\x4f" + size + style + segment(0xFF64, b"\0\1comment") + b"".join(tile_parts) + b"\xff\xd9"


def box(kind, content, length=None):
    return struct.pack(">I", len(content) + 8 if length is None else length) + kind + content


def jp2_seeds():
    packets = b"\x12\xff\x91\0\4\xff\x90\xff\x92\xff\x7f\x34"
    image = codestream(tile_part(b"\xff\x90\xff\xd9data"), tile_part(packets, segment(0xFF58, b"\0\1"), 0, 1))
    head = (box(b"jP  ", b"\r\n\x87\n") + box(b"ftyp", b"jp2 \0\0\0\0jp2 ")
            + box(b"jp2h", box(b"ihdr", struct.pack(">IIHBBBB", 8, 8, 1, 7, 7, 0, 0))
                  + box(b"colr", b"\1\0\0" + struct.pack(">I", 17)) + box(b"res ", box(b"resc", bytes(10)))))
    yield "codestream", b"\0" + image
    yield "codestream-in-pieces", b"\5" + image
    yield "empty-tile-parts", b"\0" + codestream(tile_part(b""), tile_part(b"", tile=1), tile_part(packets, length=0))
    yield "bad-tile-length", b"\0" + codestream(tile_part(b"data", length=13))
    yield "file", b"\0" + head + box(b"jp2c", image)
    yield "file-to-the-end", b"\2" + head + box(b"jp2c", image, 0)
    yield "extended-length", b"\0" + head + box(b"jp2c", struct.pack(">Q", len(image) + 16) + image, 1)
    yield "huge-box", b"\0" + head + box(b"xml ", struct.pack(">Q", 1 << 62) + b"<x/>", 1)
    yield "deep", b"\0" + b"".join(box(b"jp2h", b"", 8 * n) for n in range(40, 0, -1))


# FuzzFrames takes its decisions as FuzzElements does; from the end: the compression, the way the number of frames is told
# (even for one of 0 to 20), that number, the size of the pieces.
def frames_seeds():
    w = Writer(EXPLICIT)

    def items(data, size, *offsets):
        fragments = [data[i:i + size] for i in range(0, len(data), size)]
        table = b"".join(struct.pack("<I", offset) for offset in offsets)
        return b"".join(w.element(0xFFFEE000, b"", item) for item in [table] + fragments) + w.element(0xFFFEE0DD, b"")

    def decisions(kind, frames, first):
        return bytes((first + 37 * i) % 256 for i in range(54)) + b"\0\0\0\x04" + bytes([frames, 0, kind])

    jpeg = (b"\xff\xd8\xff\xe1\x00\x08\xff\xd8\x01\x02\xff\xd9\xff\xda\x00\x08\x01\x01\x00\x00\x3f\x00"
            b"\x12\xff\x00\x34\xff\xd0\x56\xff\xd9")
    tile = b"\xff\x90\x00\x0a\x00\x00\x00\x00\x00%c\x00\x02\xff\x93"
    jpeg2000 = (b"\xff\x4f\xff\x52\x00\x05\x01\x02\x03" + tile % 19 + b"\x01\x02\x03\xff\xd9" + tile % 0 +
                b"\x04\x05\x06\xff\x91\x00\x04\x00\x01\xff\x92\x07\xff\xd9")
    for size in (2, 5, 40, 1000):
        yield f"jpeg-{size}", items((jpeg + b"\0") * 3, size) + decisions(0, 3, size)
        yield f"jpeg2000-{size}", items(jpeg2000 * 3, size) + decisions(1, 3, size)
        yield f"rle-{size}", items(bytes(range(64)) * 2, size) + decisions(2, -(-128 // size), size)
    for kind, frame in enumerate((jpeg + b"\0", jpeg2000)):
        step = len(frame) + 8
        yield f"table-{kind}", items(frame * 4, len(frame), 0, step, 2 * step, 3 * step) + decisions(kind, 4, kind)
        yield f"table-lies-{kind}", items(frame * 4, len(frame), 0, 0, step + 1, 1 << 31) + decisions(kind, 4, kind)
        yield f"cut-{kind}", items(frame * 2, 30)[:-20] + decisions(kind, 2, 1)
    yield "one-frame", items(jpeg, 12) + decisions(0, 1, 1)
    yield "unknown", items(jpeg, 12) + decisions(3, 1, 1)


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


def pdata(*pdvs):
    body = b"".join(struct.pack(">IBB", 2 + len(data), context, control) + data for context, control, data in pdvs)
    return b"\4\0" + struct.pack(">I", len(body)) + body


def message_seeds():
    command, text = b"\0\0\0\0\4\0\0\0\x38\0\0\0", b"0123456789" * 5
    for read in (0, 40):
        for decision in range(4):
            start = bytes([read, decision | 20])
            yield f"shared-{read}-{decision}", start + pdata((1, 3, command), (1, 2, text))
            yield f"many-{read}-{decision}", start + pdata((1, 3, command)) + pdata((1, 0, text), (1, 0, b"")) + \
                pdata((1, 0, text)) + pdata((1, 2, b"")) + pdata((3, 3, command))
    start = b"\7\0"
    yield "release-inside", start + pdata((1, 0, text)) + b"\5\0\0\0\0\4\0\0\0\0"
    yield "another-context", start + pdata((1, 0, text), (3, 2, text))
    yield "another-type", start + pdata((1, 0, text), (1, 3, text))
    yield "length-0", start + b"\4\0\0\0\0\6\0\0\0\0\1\2"
    yield "length-lies", start + b"\4\0\0\0\0\x0a\xff\xff\xff\xff\1\2abcd"
    yield "no-pdv", start + b"\4\0\0\0\0\0" + pdata((1, 2, text))
    yield "cut", start + pdata((1, 2, text))[:-9]


# FuzzAssociationPDUs takes the longest PDU from the first byte; 0 is any.
def association_seeds():
    def pdu(kind, body):
        return struct.pack(">BBI", kind, 0, len(body)) + body

    def item(kind, body=b""):
        return struct.pack(">BBH", kind, 0, len(body)) + body

    fields = b"\0\1\0\0" + b"ARCHIVE".ljust(16) + b"WORKSTATION".ljust(16) + bytes(32)
    name = item(0x10, b"1.2.840.10008.3.1.1.1")
    verification, implicit = b"1.2.840.10008.1.1", item(0x40, b"1.2.840.10008.1.2")
    role = item(0x54, struct.pack(">H", len(verification)) + verification + b"\1\1")
    user = item(0x51, b"\0\0\x40\0") + item(0x52, b"1.2.3") + item(0x55, b"T 1")
    context = item(0x30, verification) + implicit + item(0x40, b"1.2.840.10008.1.2.1\0")
    contexts = b"".join(item(0x20, bytes([n, 0, 0, 0]) + context) for n in (1, 3, 1))
    request = pdu(1, fields + name + contexts + item(0x50, user + item(0x53, b"\0\1\0\1") + item(0x56, b"\0\1\0\0") + role))
    answers = item(0x21, b"\1\0\0\0" + implicit) + item(0x21, b"\3\0\3\0") + item(0x21, b"\5\0\4\0" + item(0x40))
    acceptance = pdu(2, fields + name + answers + item(0x50, user + role))
    end = b"".join(pdu(kind, bytes([0, 1, 2, 3])) for kind in (3, 5, 6, 7))
    yield "request", b"\0" + request
    yield "acceptance", b"\0" + acceptance
    yield "dialogue", b"\0" + request + acceptance + pdu(4, b"\0\0\0\2\1\3") + end
    yield "limited", b"\x50" + end + request
    yield "empty-items", b"\0" + pdu(1, fields + item(0x10) + item(0x50) + item(0x50, item(0x52) + item(0x55)))
    yield "no-syntax", b"\0" + pdu(1, fields + item(0x20, b"\1\0\0\0" + item(0x30)))
    yield "unknown", b"\0" + pdu(1, fields + item(0x60, request)) + pdu(2, fields + item(0x50, item(0x57)))


def whole_association_seeds():
    seeds = dict(association_seeds())
    echo = bytes.fromhex("0000 0000 0400 0000 3800 0000 0000 0200 1200 0000") + b"1.2.840.10008.1.1\0" + bytes.fromhex(
        "0000 0001 0200 0000 3000 0000 1001 0200 0000 0100 0000 0008 0200 0000 0101")
    release = b"\5\0\0\0\0\4" + bytes(4)
    request, acceptance = seeds["request"][1:], seeds["acceptance"][1:]
    yield "acceptor", b"\0" + request + pdata((1, 3, echo)) + release
    yield "acceptor-closes", b"\2" + request + pdata((1, 1, echo[:20]), (1, 3, echo[20:])) + release
    yield "requester", b"\3" + acceptance + pdata((1, 3, echo.replace(b"\x30\0\0\0\x10\1", b"\x30\x80\0\0\x20\1"))) + release


def command_set(field, sop_class, dataset, *elements, requested=False):
    w = Writer(IMPLICIT)
    parts = [w.element(3 if requested else 2, b"", sop_class + b"\0" * (len(sop_class) % 2)), w.us(0x0100, field),
             w.us(0x0120 if field & 0x8000 else 0x0110, 1), w.us(0x0800, 0x0102 if dataset else 0x0101), *elements]
    return w.element(0, b"", struct.pack("<I", sum(map(len, parts)))) + b"".join(parts)


def service_seeds():
    w = Writer(IMPLICIT)

    def message(context, command, data=None, response=False):
        text = bytes([context | (0 if data is None else 8) | (16 if response else 0)]) + struct.pack(">H", len(command))
        return text + command + (b"" if data is None else struct.pack(">H", len(data)) + data)

    def print_request(field, kind, instance, data=None, *elements):
        requested = field != 0x0140
        uid = w.element(0x1001 if requested else 0x1000, b"", instance)
        sop_class = b"1.2.840.10008.5.1.1." + kind
        return message(4, command_set(field, sop_class, data is not None, uid, *elements, requested=requested), data)

    status = w.us(0x0900, 0)
    instance = w.element(0x1000, b"", b"1.2.3.4\0")
    stored = w.element(0x00080016, b"", b"1.2.840.10008.5.1.4.1.1.7\0") + w.element(0x00080018, b"", b"1.2.3.4\0")
    key = w.element(0x00080052, b"", b"STUDY ") + w.element(0x0020000D, b"", b"1.2.3\0")
    find, move = b"1.2.840.10008.5.1.4.1.2.1.1", b"1.2.840.10008.5.1.4.1.2.2.2"
    yield "echo", message(0, command_set(0x0030, b"1.2.840.10008.1.1", False))
    yield "store", message(1, command_set(0x0001, b"1.2.840.10008.5.1.4.1.1.7", True, instance), stored)
    yield "find", message(2, command_set(0x0020, find, True), key + w.us(0x00280010, 0xFF01))
    yield "move", message(3, command_set(0x0021, move, True, w.element(0x0600, b"", b"THERE ")), key)
    yield "echo-answer", message(0, command_set(0x8030, b"1.2.840.10008.1.1", False, status), None, True)
    yield "store-answer", message(1, command_set(0x8001, b"1.2.840.10008.5.1.4.1.1.7", False, status), None, True)
    yield "find-answer", (message(2, command_set(0x8020, find, True, w.us(0x0900, 0xFF00)), key, True)
                          + message(2, command_set(0x8020, find, False, status), None, True))
    yield "move-answer", message(3, command_set(0x8021, move, False, w.us(0x0900, 0xFF00), w.us(0x1020, 2)), None, True)
    layout = w.element(0x20100010, b"", b"STANDARD\\1,2") + w.element(0x20100030, b"", b"AB")
    session = print_request(0x0140, b"1", b"1.2.3.1\0", w.element(0x20000010, b"", b"1 "))
    film = print_request(0x0140, b"2", b"1.2.3.2\0", layout)
    lut = print_request(0x0140, b"23\0", b"1.2.3.3\0", w.element(0x20500020, b"", b"IDENTITY"))
    action = w.us(0x1008, 1)
    yield "print", (session + lut + film + print_request(0x0120, b"1", b"1.2.3.1\0", w.element(0x20000010, b"", b"2 "))
                    + print_request(0x0120, b"2", b"1.2.3.2\0", w.element(0x20100040, b"", b"PORTRAIT"))
                    + print_request(0x0130, b"2", b"1.2.3.2\0", None, action)
                    + print_request(0x0130, b"1", b"1.2.3.1\0", None, action)
                    + print_request(0x0150, b"2", b"1.2.3.2\0") + print_request(0x0150, b"1", b"1.2.3.1\0"))
    image = b"".join([w.us(0x00280002, 1), w.element(0x00280004, b"", b"MONOCHROME2 "), w.us(0x00280010, 1),
                      w.us(0x00280011, 2), w.us(0x00280100, 8), w.us(0x00280101, 8), w.us(0x00280102, 7),
                      w.us(0x00280103, 0), w.element(0x7FE00010, b"", b"\1\2")])
    yield "print-image", session + film + print_request(
        0x0120, b"4", b"1.2.3.9\0", w.us(0x20200010, 1) + w.sequence(0x20200110, w.item(image)))
    tags = w.element(0x1005, b"", struct.pack("<4H", 0x2110, 0x0010, 0x2110, 0x0030))
    yield "printer", print_request(0x0110, b"16\0", b"1.2.840.10008.5.1.1.17", None, tags)
    event = command_set(0x0100, b"1.2.840.10008.5.1.1.16", True, w.element(0x1000, b"", b"1.2.840.10008.5.1.1.17"),
                        w.us(0x1002, 2))
    created = command_set(0x8140, b"1.2.840.10008.5.1.1.1", True, status, instance)
    yield "print-answer", message(4, created, w.element(0x20000010, b"", b"1 "), True) + message(4, event, b"", True)


def identifier_seeds():
    for kind, bit in ((IMPLICIT, 0), (EXPLICIT, 8)):
        w = Writer(kind)
        uid, level = w.element(0x0020000D, b"UI", b"1.2.3\0"), w.element(0x00080052, b"CS", b"STUDY ")
        start = w.element(0x00400002, b"DA", b"20200101-") + w.element(0x00400003, b"TM", b"-1200 ")
        name = "-explicit" if bit else "-implicit"
        yield "study" + name, bytes([1 | bit]) + level + w.element(0x00080061, b"CS", b"3*") + w.element(
            0x00100010, b"PN", b"DO?^*=A=B ") + uid + w.element(0x00201208, b"IS")
        yield "dates" + name, bytes([5 | bit]) + w.element(0x00080005, b"CS", b"ISO 2022 IR 87") + w.element(
            0x00080020, b"DA", b"20200101-20201231 ") + w.element(0x00080030, b"TM", b"-10") + level + w.element(
            0x00100010, b"PN", b"\x1b$B;3ED\x1b(B ")
        yield "image" + name, bytes([4 | bit]) + w.element(0x00080018, b"UI", b"1.2.3.1\\1.2.3.2") + w.element(
            0x00080052, b"CS", b"IMAGE ") + w.us(0x00280010, 57) + w.sequence(0x00400275, w.item(w.element(
                0x00400009, b"SH", b"4*")))
        yield "worklist" + name, bytes([bit]) + w.element(0x00100020, b"LO", b"A\\*") + w.sequence(0x00400100, w.item(
            w.element(0x00080060, b"CS", b"MR") + start + w.sequence(0x00400008, w.item(start))))


def json_seeds():
    yield "match", b'{"StudyInstanceUID":"1.2.3","PatientName":"D\\u00f6e \\"\\n","A":[1,{"b":null},[]],"c":-1.5e3,"d":true}'
    yield "empty", b"{}"
    yield "deep", b'{"a":' + b"[" * 60 + b"]" * 60 + b"}"


# Frames of 16 by 16 pixels as other encoders made them: name, syntax and photometric interpretation of the target, bits
# stored, samples, and the frame.
FRAMES = [
    ("baseline", 0, 0, 8, 1, """
        /9j/4AAQSkZJRgABAQAAAQABAAD/2wBDAAMCAgMCAgMDAwMEAwMEBQgFBQQEBQoHBwYIDAoMDAsKCwsNDhIQDQ4RDgsLEBYQERMUFRUVDA8XGBYU
        GBIUFRT/wAALCAAQABABAREA/8QAFQABAQAAAAAAAAAAAAAAAAAAAAn/xAAZEAEAAgMAAAAAAAAAAAAAAAADAQYABSL/2gAIAQEAAD8AnbRKIe7G
        WaeMXuiHpBhhnjFEvZ6QZFo4xe72e7GBGOM////Z
        """),
    ("colour", 0, 2, 8, 3, """
        /9j/4AAQSkZJRgABAQAAAQABAAD/2wBDAAMCAgMCAgMDAwMEAwMEBQgFBQQEBQoHBwYIDAoMDAsKCwsNDhIQDQ4RDgsLEBYQERMUFRUVDA8XGBYU
        GBIUFRT/2wBDAQMEBAUEBQkFBQkUDQsNFBQUFBQUFBQUFBQUFBQUFBQUFBQUFBQUFBQUFBQUFBQUFBQUFBQUFBQUFBQUFBQUFBT/wAARCAAQABAD
        ASEAAhEBAxEB/8QAFQABAQAAAAAAAAAAAAAAAAAAAAb/xAAZEAACAwEAAAAAAAAAAAAAAAABBAACAxL/xAAVAQEBAAAAAAAAAAAAAAAAAAAACP/E
        ABsRAAEEAwAAAAAAAAAAAAAAABQAERVBAQIT/9oADAMBAAIRAxEAPwCpeeOB5rCLx3PNpHQeBulqIIXWLJtnR5E7nqsIonA9WgzA3O0mtYsa2Zf/
        /9k=
        """),
    ("extended", 1, 0, 12, 1, """
        /9j/4AAQSkZJRgABAQAAAQABAAD/2wBDAAMCAgMCAgMDAwMEAwMEBQgFBQQEBQoHBwYIDAoMDAsKCwsNDhIQDQ4RDgsLEBYQERMUFRUVDA8XGBYU
        GBIUFRT/wQALDAAQABABAREA/8QAFQABAQAAAAAAAAAAAAAAAAAAAAv/xAAdEAABBAIDAAAAAAAAAAAAAAACAQMEBwAKBgkh/9oACAEBAAA/AIu2
        ivor173Y05Iue55BjxdCQGIzaemuN6jRXr3pOpyPc9MSDLi6koPxnE9BcaK+9RXvSdTkimLnjmXF1JDYktr6C43qN6ive7GnI9MUxHMeLoSm/JcX
        01z/2Q==
        """),
    ("lossless", 2, 0, 12, 1, """
        /9j/4AAQSkZJRgABAQAAAQABAAD/wwALEAAQABABAREA/8QAHQAAAgIDAQEBAAAAAAAAAAAABgcDBQABBAIID//aAAgBAQAGAAD8AHJunus7a07M
        46uprOHmhm6LG+MGAzGcxjcks5/Wb6bAgOWu8H6/Xo4WKT9/vWu66NW2+/on6F+gX8+XUxyGfXmzJWO63u6Gu0mw5HY3zix1HbFLLb7PNCgmLTtm
        NhjXvqO0JT08JbTt77O7Kjg6IZfHZakN53TSzT9VjdkFrJrMzMzMzMzMzOOqH6Piijig5a+loKuP1VjQGBjVXxcNbSiwOCj0UlSLLRQrEMGBoTBV
        oqF1R6krBtcJREJdUK1TptJqAHrtycNKFqVC/O/z38/oFDJZcj8Pr3zcA+DKhHoNBIxProZ4PG9w89fQiC/WayXIQOVkGsz//9k=
        """),
    ("jpeg-ls", 3, 0, 12, 1, """
        /9j/9wALEAAQABABAREA//gADQH//wASAEMBFABA/9oACAEBAAAAAEOYFwPheH4VwlhOBo9LJdJpJGIhAyC0JohRcjRF6G0AIPQ2h1DaE0FIFQdC
        iKVDS6saoouQAiKRK1Vp5CyC0GohSKn1TLHpmRkgCBUJIrTpHCdQmiKLUvMu4DJJXSVAEGYhhFQuUXoaRRGaxsWyD3T5FkAhubzWEam5DyIpYqDd
        ZyepUhFACB8JYX0c9hQ0iENqlWqBDKEEHIAQFgfBmE4QlUNQAgBAEAQCAEAIAQAgBACAQCAQEAILwdkcFj0HIHQEgBDkMp9VKRIIMQnscOtlIsiK
        B0AIYXZMbbIUSE0K7PX4ZOKpBByAEjSwRJBNVRoohHU6P7rxsUgtAEZNR/EMyUwiCDcI7fv9dOWwbAEsXrNYqrR1BqCMFYU2uzs1GJ4BGEomFFOJ
        BB0C4DwThHGNNxY7AIdHI9FolB0CgP/Z
        """),
    ("near-lossless", 3, 0, 12, 1, """
        /9j/9wALDAAQABABAREA/9oACAEBAAIAAG43e/ecchSu7SohiRimoW1zWKSrkHCxhAlCxBSXkZnnBIecGlIpYphT2rJFnhY8RejawUIS0hQw4dMO
        MTUpgpTWFECZAwRiEb51DOU1kl7XWhGM7pFohESEIQhCSoTvsJakwzHkvYtfI/8x1Ia4IJPruyUkm8YtDAk2aIrkVWSeTNMhREybfJYrqzTXpmEu
        vvsuWnd+kkv+aqqQ5ikzdUrbspa1sqj/2QA=
        """),
    ("jpeg-2000", 4, 0, 12, 1, """
        /0//UQApAAAAAAAQAAAAEAAAAAAAAAAAAAAAEAAAABAAAAAAAAAAAAABDwEB/1IADAAAAAEAAwQEAAH/XAANQICIiJCIiJCIiJD/ZAAqAAFDcmVh
        dGVkIGJ5IEdEQ00vT3BlbkpQRUcgdmVyc2lvbiAyLjUuMP+QAAoAAAAAARsAAf+T3/iQUAeBV1k0sWSu83fAP2B4B+wPAD8wYBA8iIiL2y8QTKeC
        iZo/C9divTy0wD9hWAfsKwAfgIgjE7X/cnkjf6OHlOonREDWibGtVocfsrCXKLsjn8p1G0GZ2ixu4eJmsZ8kJPEJovHXr9oCIcuMpY5sj8APwOIA
        fgawAB8iEF8NkOzv9Bf/EDvHYNMVEHjI5ETdO0zOWBbU/jPPybpIsKtNnzHn37P1yvu+O91ArtbgkvOKs84HUv9iFs20hs2vbhC51ZM3tHgxt8s+
        c8OA/3+n6z/cSX8xEB/4ebjTm5CFt0nFiuP8vhwtEnE5UGzaAY8V9/wzbWOjvM7XLQATtYzvE58SMJuRx9zUT0P/2Q==
        """),
    ("jpeg-2000-colour", 4, 1, 8, 3, """
        /0//UQAvAAAAAAAQAAAAEAAAAAAAAAAAAAAAEAAAABAAAAAAAAAAAAADBwEBBwEBBwEB/1IADAAAAAEAAwQEAAH/XAANQEBISFBISFBISFD/ZAAq
        AAFDcmVhdGVkIGJ5IEdEQ00vT3BlbkpQRUcgdmVyc2lvbiAyLjUuMP+QAAoAAAAAAbMAAf+T34AoB4NByPvfgDAE0znJst/PtBQIf9Qif8PqBIfU
        CwPnCBA8Z2gQTKeCHwvXXcfD6gWH1AsD5wgPRQkPPw9lRwM/CrnUj8HzhIPnCwHyAxA8oqcQTJz/fwvWlcPqDIfUGQHyCCMTlHmXS24Vc82wfx+y
        oVW5WhWVoKPldCQmjUlamlacw+oMh9QZAfIJI7+WeZdLbhURffg/HvK82EOFmlFXx6KnJNb3/3dX7G1bwfOKg+cVAPhIIxN6HH61Q8osGR+yoVFr
        8j/G4S8kASAHsY68WsD5C0D5DEAdUF8Nkzq0KUA6OzdFDvUjQL9VSWPucU9Nv7UOmKXTlyTPNaM81ygU3kxd83JOnB8osDY6d4XruGIBQJmQCEaR
        Xlv/f8D5C0D5DUAdRDjO4lSKk4ldBGpNVvIyzNRuTjU53bdM/W6ZdXmZ3QX8PN6WowImkrxXQ3vaJySC7xanhbWLH+0VuOeFnDJizsWfwHwowHwq
        QB08OWSv+X2wqgknCn7+4re6yd9Nv794Y27xNvoGfzToOAKjbMW0vyi9FjpHPljtH43hwwSHt//Z
        """),
    ("jpeg-ls-without-end", 3, 0, 12, 1, """
        /9j/9wALDAAQABABAREA/9oACAEBAAIAAG43e/ecchSu7SohiRimoW1zWKSrkHCxhAlCxBSXkZnnBIecGlIpYphT2rJFnhY8RejawUIS0hQw4dMO
        MTUpgpTWFECZAwRiEb51DOU1kl7XWhGM7pFohESEIQhCSoTvsJakwzHkvYtfI/8x1Ia4IJPruyUkm8YtDAk2aIrkVWSeTNMhREybfJYrqzTXpmEu
        vvsuWnd+kkv+aqqQ5ikzdQA=
        """),
]


def decompression_seeds():
    for name, syntax, photometric, bits, samples, text in FRAMES:
        head = bytes([syntax, photometric, 0, bits - 1, 0 if bits > 8 else 1, 0 if samples == 1 else 1, 15, 15])
        yield name, head + base64.b64decode("".join(text.split()))
    yield "rle", bytes([5, 0, 0, 15, 0, 0, 3, 0]) + struct.pack("<16I", 2, 64, 66, *[0] * 13) + (
        b"\xFD\1\1\x10\x20\x80\xFF\x30")


def main():
    targets = {"FuzzPart10": part10_seeds, "FuzzElements": elements_seeds, "FuzzTranscode": transcode_seeds,
               "FuzzFrames": frames_seeds, "FuzzJPEG": jpeg_seeds, "FuzzJP2": jp2_seeds,
               "FuzzDataDictionary": dictionary_seeds, "FuzzUIDDictionary": uid_seeds,
               "FuzzMessages": message_seeds, "FuzzAssociationPDUs": association_seeds,
               "FuzzAssociation": whole_association_seeds, "FuzzServices": service_seeds,
               "FuzzIdentifier": identifier_seeds, "FuzzJsonLine": json_seeds,
               "FuzzDecompression": decompression_seeds}
    for target, seeds in targets.items():
        folder = HERE / "corpus" / target
        folder.mkdir(parents=True, exist_ok=True)
        for name, content in seeds():
            (folder / name).write_bytes(content)


main()
