#!/usr/bin/env python3
"""make-huge.py FILE NEW-FILE MEBIBYTES: the file, explicit VR little endian, with that much pixel data instead of its own."""
import struct
import sys

source, target, mebibytes = sys.argv[1], sys.argv[2], int(sys.argv[3])
content = open(source, "rb").read()
start = content.rindex(b"\xe0\x7f\x10\x00OW")
with open(target, "wb") as output:
    output.write(content[:start] + b"\xe0\x7f\x10\x00OW\0\0" + struct.pack("<I", mebibytes << 20))
    block = bytes(range(256)) * 4096
    for _ in range(mebibytes):
        output.write(block)
