#!/usr/bin/env python3
"""Makes the small files of data/samples, the same bytes each time:

    tools/make-samples.py [FOLDER]

Patients, places and findings are invented. Each file shows other sides of the format (PS3.5, PS3.10):

    ct-explicit.dcm     explicit VR little endian: CT image, private elements, sequences of defined length
    sr-implicit.dcm     implicit VR little endian: structured report, nested sequences of undefined length, UTF-8
    cr-big-endian.dcm   explicit VR big endian: 16-bit pixels
    us-jpeg.dcm         JPEG baseline: two frames in two fragments and an offset table
"""
import math
import os
import struct
import sys

ROOT = "2.25.339282991848464000405290"
SAMPLES = ROOT + ".9"          # of every instance made here
STUDY_DATE = "20260301"
UNDEFINED = 0xFFFFFFFF
LONG_HEADER = {"OB", "OF", "OW", "SQ", "UN", "UT"}   # 4-byte length after two reserved bytes, PS3.5 7.1.2
TEXT = {"AE", "AS", "CS", "DA", "DS", "DT", "IS", "LO", "LT", "PN", "SH", "ST", "TM", "UI", "UT"}
BINARY = {"US": "H", "SS": "h", "UL": "I", "SL": "i", "FL": "f", "FD": "d"}


class Writer:
    """Encodes elements given as rows (tag, VR, value); the value of an SQ is a list of items, each a list of rows."""

    def __init__(self, explicit=True, big_endian=False, undefined_lengths=False):
        self.explicit = explicit
        self.order = ">" if big_endian else "<"
        self.undefined_lengths = undefined_lengths

    def pack(self, layout, *values):
        return struct.pack(self.order + layout, *values)

    def elements(self, rows):
        assert [tag for tag, _, _ in rows] == sorted(tag for tag, _, _ in rows)
        return b"".join(self.element(*row) for row in rows)

    def element(self, tag, vr, value):
        if vr == "SQ":
            return self.sequence(tag, value)
        body = self.value(vr, value)
        return self.header(tag, vr, len(body)) + body

    def header(self, tag, vr, length):
        start = self.pack("HH", tag >> 16, tag & 0xFFFF)
        if not self.explicit:
            return start + self.pack("I", length)
        if vr in LONG_HEADER:
            return start + vr.encode() + b"\0\0" + self.pack("I", length)
        return start + vr.encode() + self.pack("H", length)

    def value(self, vr, value):
        if vr in TEXT:
            body = value.encode("utf-8")
            return body + (b"\0" if vr == "UI" else b" ") * (len(body) % 2)
        if vr in BINARY:
            values = value if isinstance(value, (list, tuple)) else [value]
            return b"".join(self.pack(BINARY[vr], one) for one in values)
        if vr == "AT":
            return self.pack("HH", value >> 16, value & 0xFFFF)
        if vr == "OW":
            return self.pack("%dH" % len(value), *value)
        assert len(value) % 2 == 0
        return bytes(value)

    def sequence(self, tag, items):
        body = b"".join(self.item(rows) for rows in items)
        if self.undefined_lengths:
            return self.header(tag, "SQ", UNDEFINED) + body + self.mark(0xE0DD, 0)
        return self.header(tag, "SQ", len(body)) + body

    def item(self, rows):
        body = self.elements(rows)
        if self.undefined_lengths:
            return self.mark(0xE000, UNDEFINED) + body + self.mark(0xE00D, 0)
        return self.mark(0xE000, len(body)) + body

    def mark(self, element, length):
        """An item or a delimiter, PS3.5 7.5."""
        return self.pack("HHI", 0xFFFE, element, length)

    def fragments(self, tag, fragments):
        """Encapsulated pixel data, PS3.5 A.4; each fragment is a frame, and the offset table tells where it starts."""
        offsets, position = [], 0
        for fragment in fragments:
            offsets.append(position)
            position += 8 + len(fragment)
        table = self.pack("%dI" % len(offsets), *offsets)
        parts = [self.mark(0xE000, len(part)) + part for part in [table] + fragments]
        return self.header(tag, "OB", UNDEFINED) + b"".join(parts) + self.mark(0xE0DD, 0)


def part10(sop_class, instance, syntax, dataset):
    """Preamble, prefix and meta information (always explicit little endian, PS3.10 7.1), then the dataset."""
    writer = Writer()
    meta = writer.elements([
        (0x00020001, "OB", b"\0\1"),
        (0x00020002, "UI", sop_class),
        (0x00020003, "UI", instance),
        (0x00020010, "UI", syntax),
        (0x00020012, "UI", ROOT + ".1"),
        (0x00020013, "SH", "TALVENOR_1_0"),
    ])
    return bytes(128) + b"DICM" + writer.element(0x00020000, "UL", len(meta)) + meta + dataset


def disc(size, low, high):
    """A disc with a soft edge, row by row."""
    middle = (size - 1) / 2
    return [round(low + (high - low) / (1 + math.exp(math.hypot(x - middle, y - middle) - size / 3)))
            for y in range(size) for x in range(size)]


def ct_explicit():
    sop_class, instance = "1.2.840.10008.5.1.4.1.1.2", SAMPLES + ".1.1.1"
    dataset = Writer().elements([
        (0x00080005, "CS", "ISO_IR 100"),
        (0x00080008, "CS", "ORIGINAL\\PRIMARY\\AXIAL"),
        (0x00080016, "UI", sop_class),
        (0x00080018, "UI", instance),
        (0x00080020, "DA", STUDY_DATE),
        (0x00080030, "TM", "101500"),
        (0x00080050, "SH", "A-1001"),
        (0x00080060, "CS", "CT"),
        (0x00080070, "LO", "Talvenor"),
        (0x00080090, "PN", "Kivi^Aino^^Dr"),
        (0x00081030, "LO", "Thorax"),
        (0x00081140, "SQ", [[
            (0x00081150, "UI", sop_class),
            (0x00081155, "UI", SAMPLES + ".1.1.2"),
        ]]),
        (0x00100010, "PN", "Lehto^Veikko"),
        (0x00100020, "LO", "TN-0001"),
        (0x00100030, "DA", "19590412"),
        (0x00100040, "CS", "M"),
        (0x00101010, "AS", "066Y"),
        (0x00180050, "DS", "2.5"),
        (0x00180060, "DS", "120"),
        (0x00181152, "IS", "85"),
        (0x00190010, "LO", "GEMS_ACQU_01"),       # a creator that the dictionaries know
        (0x00191002, "SL", 912),
        (0x0020000D, "UI", SAMPLES + ".1"),
        (0x0020000E, "UI", SAMPLES + ".1.1"),
        (0x00200010, "SH", "1"),
        (0x00200011, "IS", "3"),
        (0x00200013, "IS", "1"),
        (0x00200032, "DS", "-100\\-100\\-52.5"),
        (0x00200037, "DS", "1\\0\\0\\0\\1\\0"),
        (0x00280002, "US", 1),
        (0x00280004, "CS", "MONOCHROME2"),
        (0x00280010, "US", 16),
        (0x00280011, "US", 16),
        (0x00280030, "DS", "12.5\\12.5"),
        (0x00280100, "US", 16),
        (0x00280101, "US", 12),
        (0x00280102, "US", 11),
        (0x00280103, "US", 0),
        (0x00281050, "DS", "40"),
        (0x00281051, "DS", "400"),
        (0x00281052, "DS", "-1024"),
        (0x00281053, "DS", "1"),
        (0x00310010, "LO", "TALVENOR SAMPLE"),    # and one that they do not
        (0x00311001, "LO", "made by a script"),
        (0x00311002, "FD", 0.5),
        (0x00400275, "SQ", [[
            (0x00400007, "LO", "CT of the thorax"),
            (0x00400008, "SQ", [[
                (0x00080100, "SH", "CT-THX"),
                (0x00080102, "SH", "99TALVENOR"),
                (0x00080104, "LO", "CT of the thorax, plain"),
            ]]),
            (0x00401001, "SH", "R-2001"),
        ]]),
        (0x7FE00010, "OW", disc(16, 24, 1080)),
    ])
    return part10(sop_class, instance, "1.2.840.10008.1.2.1", dataset)


def code(value, scheme, meaning):
    return [(0x00080100, "SH", value), (0x00080102, "SH", scheme), (0x00080104, "LO", meaning)]


def content(relation, kind, name, *rows):
    return [(0x0040A010, "CS", relation), (0x0040A040, "CS", kind), (0x0040A043, "SQ", [name])] + list(rows)


def sr_implicit():
    sop_class, instance = "1.2.840.10008.5.1.4.1.1.88.11", SAMPLES + ".2.1.1"
    finding = code("121071", "DCM", "Finding")
    report = [
        content("HAS OBS CONTEXT", "PNAME", code("121008", "DCM", "Person Observer Name"),
                (0x0040A123, "PN", "Järvi^Åsa^^Dr")),
        content("CONTAINS", "CONTAINER", code("121070", "DCM", "Findings"),
                (0x0040A050, "CS", "SEPARATE"),
                (0x0040A730, "SQ", [
                    content("CONTAINS", "TEXT", finding, (0x0040A160, "UT", "Both lungs are clear.")),
                    content("CONTAINS", "TEXT", finding, (0x0040A160, "UT", "The heart is of normal size.")),
                ])),
        content("CONTAINS", "TEXT", code("121077", "DCM", "Conclusion"), (0x0040A160, "UT", "Normal chest.")),
    ]
    dataset = Writer(explicit=False, undefined_lengths=True).elements([
        (0x00080005, "CS", "ISO_IR 192"),
        (0x00080016, "UI", sop_class),
        (0x00080018, "UI", instance),
        (0x00080020, "DA", STUDY_DATE),
        (0x00080023, "DA", STUDY_DATE),
        (0x00080030, "TM", "101500"),
        (0x00080033, "TM", "104210"),
        (0x00080050, "SH", "A-1002"),
        (0x00080060, "CS", "SR"),
        (0x00080070, "LO", "Talvenor"),
        (0x00080090, "PN", ""),
        (0x00081111, "SQ", []),
        (0x00100010, "PN", "Mäki^Tyyne"),
        (0x00100020, "LO", "TN-0002"),
        (0x00100030, "DA", "19710923"),
        (0x00100040, "CS", "F"),
        (0x0020000D, "UI", SAMPLES + ".2"),
        (0x0020000E, "UI", SAMPLES + ".2.1"),
        (0x00200010, "SH", "1"),
        (0x00200011, "IS", "1"),
        (0x00200013, "IS", "1"),
        (0x0040A040, "CS", "CONTAINER"),
        (0x0040A043, "SQ", [code("18782-3", "LN", "Radiology Report")]),
        (0x0040A050, "CS", "SEPARATE"),
        (0x0040A372, "SQ", []),
        (0x0040A491, "CS", "COMPLETE"),
        (0x0040A493, "CS", "UNVERIFIED"),
        (0x0040A730, "SQ", report),
    ])
    return part10(sop_class, instance, "1.2.840.10008.1.2", dataset)


def cr_big_endian():
    sop_class, instance = "1.2.840.10008.5.1.4.1.1.1", SAMPLES + ".3.1.1"
    dataset = Writer(big_endian=True).elements([
        (0x00080008, "CS", "DERIVED\\PRIMARY"),
        (0x00080016, "UI", sop_class),
        (0x00080018, "UI", instance),
        (0x00080020, "DA", STUDY_DATE),
        (0x00080030, "TM", "113045.250"),
        (0x00080050, "SH", "A-1003"),
        (0x00080060, "CS", "CR"),
        (0x00080070, "LO", "Talvenor"),
        (0x00080090, "PN", ""),
        (0x00089215, "SQ", [code("113076", "DCM", "Segmentation")]),
        (0x00100010, "PN", "Saari^Onni"),
        (0x00100020, "LO", "TN-0003"),
        (0x00100030, "DA", "20010130"),
        (0x00100040, "CS", "O"),
        (0x00180015, "CS", "HAND"),
        (0x0020000D, "UI", SAMPLES + ".3"),
        (0x0020000E, "UI", SAMPLES + ".3.1"),
        (0x00200010, "SH", "1"),
        (0x00200011, "IS", "1"),
        (0x00200013, "IS", "1"),
        (0x00280002, "US", 1),
        (0x00280004, "CS", "MONOCHROME1"),
        (0x00280009, "AT", 0x00181063),
        (0x00280010, "US", 8),
        (0x00280011, "US", 8),
        (0x00280100, "US", 16),
        (0x00280101, "US", 14),
        (0x00280102, "US", 13),
        (0x00280103, "US", 0),
        (0x00280106, "US", 300),
        (0x00280107, "US", 16000),
        (0x7FE00010, "OW", disc(8, 300, 16000)),
    ])
    return part10(sop_class, instance, "1.2.840.10008.1.2.2", dataset)


def segment(marker, content):
    return bytes([0xFF, marker]) + struct.pack(">H", 2 + len(content)) + content


def jpeg(columns, greys, comment=b""):
    """A baseline picture (ITU-T T.81) of squares of 8 by 8 pixels, each of one grey: all that is coded are DC values."""
    # Differences are categories of 0 to 11 bits with codes of 4 bits; of the AC values there is only the end of block.
    bits = ""
    last = 0
    for grey in greys:
        difference = grey - 128 - last  # every quantizer is 8, and so is the factor of the transform
        last = grey - 128
        size = abs(difference).bit_length()
        bits += f"{size:04b}"
        if size:
            bits += f"{difference if difference > 0 else difference + (1 << size) - 1:0{size}b}"
        bits += "0"
    bits += "1" * (-len(bits) % 8)
    scan = bytes(int(bits[i:i + 8], 2) for i in range(0, len(bits), 8)).replace(b"\xFF", b"\xFF\0")
    rows = len(greys) // columns
    return (b"\xFF\xD8" + (segment(0xFE, comment) if comment else b"") + segment(0xDB, b"\0" + b"\x08" * 64) +
            segment(0xC0, struct.pack(">BHHBBBB", 8, 8 * rows, 8 * columns, 1, 1, 0x11, 0)) +
            segment(0xC4, b"\0" + bytes([0, 0, 0, 12] + [0] * 12) + bytes(range(12))) +
            segment(0xC4, b"\x10" + bytes([1] + [0] * 15) + b"\0") +
            segment(0xDA, bytes([1, 1, 0, 0, 63, 0])) + scan + b"\xFF\xD9")


def us_jpeg():
    sop_class, instance = "1.2.840.10008.5.1.4.1.1.3.1", SAMPLES + ".4.1.1"
    frames = [jpeg(2, (0, 85, 170, 255)), jpeg(2, (255, 170, 85, 0), b"upside down")]
    frames = [frame + b"\0" * (len(frame) % 2) for frame in frames]
    writer = Writer()
    dataset = writer.elements([
        (0x00080008, "CS", "ORIGINAL\\PRIMARY"),
        (0x00080016, "UI", sop_class),
        (0x00080018, "UI", instance),
        (0x00080020, "DA", STUDY_DATE),
        (0x00080030, "TM", "140000"),
        (0x00080050, "SH", "A-1004"),
        (0x00080060, "CS", "US"),
        (0x00080070, "LO", "Talvenor"),
        (0x00080090, "PN", ""),
        (0x00100010, "PN", "Niemi^Helmi"),
        (0x00100020, "LO", "TN-0004"),
        (0x00100030, "DA", ""),
        (0x00100040, "CS", "F"),
        (0x00181063, "DS", "33.3"),
        (0x0020000D, "UI", SAMPLES + ".4"),
        (0x0020000E, "UI", SAMPLES + ".4.1"),
        (0x00200010, "SH", "1"),
        (0x00200011, "IS", "1"),
        (0x00200013, "IS", "1"),
        (0x00280002, "US", 1),
        (0x00280004, "CS", "MONOCHROME2"),
        (0x00280008, "IS", "2"),
        (0x00280009, "AT", 0x00181063),
        (0x00280010, "US", 16),
        (0x00280011, "US", 16),
        (0x00280100, "US", 8),
        (0x00280101, "US", 8),
        (0x00280102, "US", 7),
        (0x00280103, "US", 0),
        (0x00282110, "CS", "01"),
    ]) + writer.fragments(0x7FE00010, frames)
    return part10(sop_class, instance, "1.2.840.10008.1.2.4.50", dataset)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    folder = sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, "..", "data", "samples")
    os.makedirs(folder, exist_ok=True)
    files = {"ct-explicit.dcm": ct_explicit, "sr-implicit.dcm": sr_implicit,
             "cr-big-endian.dcm": cr_big_endian, "us-jpeg.dcm": us_jpeg}
    for name, make in files.items():
        with open(os.path.join(folder, name), "wb") as file:
            file.write(make())


if __name__ == "__main__":
    main()
