#!/usr/bin/env python3
"""Peers that break the rules, against tn as a black box: what they send, what is expected, what came, one line a row.

Usage: hostile-peers.py TN [NAME...]      rows whose name begins with one of the NAMEs only

The node runs with small deadlines. Meanwhile a process of its own asks it for an echo again and again on an association
that it holds, and after each row another is associated; descriptors, threads and memory of the node are looked at in
the end. Exit code 0 when every row is as expected.
"""
import os
import re
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import threading
import time
import traceback

ARTIM, MESSAGE, IDLE = 1.0, 2.0, 4.0     # seconds, of the node with small deadlines
SLACK = 1.5                              # seconds that an answer may take beyond its deadline
ECHO_LIMIT = 0.100                       # seconds for an echo meanwhile
HELD = 500                               # associations held at once
HELD_KIB = 300                           # memory for each of them

VERIFICATION = b"1.2.840.10008.1.1"
STORAGE = b"1.2.840.10008.5.1.4.1.1.7"
QUERY = b"1.2.840.10008.5.1.4.1.2.2.1"     # study root
IMPLICIT = b"1.2.840.10008.1.2"
EXPLICIT = b"1.2.840.10008.1.2.1"
CONTEXT_NAME = b"1.2.840.10008.3.1.1.1"


# --- bytes (PS3.8 9.3, PS3.7 6.3) ---

def pdu(kind, body=b"", length=None):
    return struct.pack(">BBI", kind, 0, len(body) if length is None else length) + body


def item(kind, body, length=None):
    return struct.pack(">BBH", kind, 0, len(body) if length is None else length) + body


def context(number, abstract=VERIFICATION, transfers=(IMPLICIT,)):
    body = struct.pack("B3x", number) + item(0x30, abstract) + b"".join(item(0x40, uid) for uid in transfers)
    return item(0x20, body)


def maximum(length):
    return item(0x51, struct.pack(">I", length))


def user(*items):
    return item(0x50, b"".join(items))


USER = user(maximum(16384), item(0x52, b"1.2.3"), item(0x55, b"HOSTILE"))


def request(contexts=None, name=item(0x10, CONTEXT_NAME), information=USER, version=1, length=None, kind=1):
    fixed = struct.pack(">HH16s16s32x", version, 0, b"TALVENOR".ljust(16), b"HOSTILE".ljust(16))
    return pdu(kind, fixed + name + (context(1) if contexts is None else contexts) + information, length)


def acceptance(answers, information=USER):
    body = b"".join(item(0x21, struct.pack("BxBx", number, result) + (b"" if uid is None else item(0x40, uid)))
                    for number, result, uid in answers)
    return request(body, information=information, kind=2)


def element(number, value, length=None):
    return struct.pack("<HHI", 0, number, len(value) if length is None else length) + value


def us(number, value):
    return element(number, struct.pack("<H", value))


def command(*elements):
    body = b"".join(elements)
    return element(0, struct.pack("<I", len(body))) + body


def even(text):
    return text + b"\0" * (len(text) % 2)


def echo_request(message=1, dataset=0x0101, field=0x0030, sop_class=VERIFICATION):
    return command(element(2, even(sop_class)), us(0x0100, field), us(0x0110, message), us(0x0800, dataset))


def echo_response(message=1, status=0, field=0x8030):
    tail = [] if status is None else [us(0x0900, status)]
    return command(element(2, even(VERIFICATION)), us(0x0100, field), us(0x0120, message), us(0x0800, 0x0101), *tail)


def pdv(data, control=3, number=1, length=None):
    return struct.pack(">IBB", len(data) + 2 if length is None else length, number, control) + data


def data(*pdvs):
    return pdu(4, b"".join(pdvs))


ECHO = data(pdv(echo_request()))
RELEASE = pdu(5, bytes(4))
RELEASED = pdu(6, bytes(4))
ABORT = pdu(7, bytes(4))
NAMES = {2: "AC", 3: "RJ", 4: "DATA", 5: "RELEASE", 6: "RELEASED", 7: "ABORT"}


# --- connections ---

class Peer:
    """A connection on which any bytes are sent; what the other side says is read as words."""

    def __init__(self, port=0, connection=None):
        self.socket = connection or socket.create_connection(("127.0.0.1", port), timeout=5)
        self.socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        self.start = time.monotonic()
        self.rest = b""

    def send(self, data_):
        try:
            self.socket.sendall(data_)
        except (BrokenPipeError, ConnectionResetError, socket.timeout):
            pass    # the other side had enough
        return self

    def read_pdu(self, timeout=5.0):
        """The type and the body of a PDU; "end", "reset" or "silence" and nothing."""
        end = time.monotonic() + timeout
        while len(self.rest) < 6 or len(self.rest) < 6 + struct.unpack(">I", self.rest[2:6])[0]:
            try:
                self.socket.settimeout(max(0.001, end - time.monotonic()))
                block = self.socket.recv(65536)
            except socket.timeout:
                return "silence", b""
            except ConnectionResetError:
                return "reset", b""
            if not block:
                return "end", b""
            self.rest += block
        size = 6 + struct.unpack(">I", self.rest[2:6])[0]
        whole, self.rest = self.rest[:size], self.rest[size:]
        return whole[0], whole[6:]

    def words(self, timeout=5.0):
        """All that comes until the connection ends or is silent for so long; what is said again and again stands once,
        with a +."""
        words = []
        while True:
            kind, body = self.read_pdu(timeout)
            if isinstance(kind, str):
                return " ".join(words + [kind])
            word = describe(kind, body)
            if words and words[-1].rstrip("+") == word:
                words[-1] = word + "+"
            else:
                words.append(word)

    def associate(self, **options):
        self.send(request(**options))
        kind, body = self.read_pdu()
        if kind != 2:
            raise ConnectionError("not associated: " + (kind if isinstance(kind, str) else describe(kind, body)))
        return self

    def echo(self, message=1):
        """Seconds for one echo; an exception when it is not answered with Success."""
        start = time.monotonic()
        self.send(data(pdv(echo_request(message))))
        kind, body = self.read_pdu()
        if kind != 4 or us(0x0120, message) not in body or us(0x0900, 0) not in body:
            raise ConnectionError("no echo: " + (kind if isinstance(kind, str) else describe(kind, body)))
        return time.monotonic() - start

    def release(self):
        self.send(RELEASE)
        return self.words()

    def reset(self):
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        self.socket.close()

    def close(self):
        self.socket.close()


def describe(kind, body):
    name = NAMES.get(kind, "type %d" % kind)
    if kind == 3:
        return "RJ(%d,%d,%d)" % tuple(body[1:4])
    if kind == 7:
        return "ABORT(%d,%d)" % tuple(body[2:4])
    if kind == 2:
        results = [result for _, result in context_answers(body)]
        return "AC" if set(results) == {0} else "AC%s" % (results if len(results) < 9 else "[...]")
    return name


def context_answers(body):
    place, answers = 68, []
    while place < len(body):
        kind, _, length = struct.unpack(">BBH", body[place:place + 4])
        if kind == 0x21:
            answers.append((body[place + 4], body[place + 6]))
        place += 4 + length
    return answers


# --- the node ---

class Node:
    def __init__(self, program, *options):
        self.log = tempfile.TemporaryFile()
        self.process = subprocess.Popen([program, "serve", "--port", "0", "--bind", "127.0.0.1", *options],
                                        stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=self.log)
        self.port = self.wait_for_port()
        self.echo_meanwhile = None

    def wait_for_port(self):
        for _ in range(200):
            found = re.search(rb"listens on port (\d+)", self.text())
            if found:
                return int(found.group(1))
            time.sleep(0.05)
        raise RuntimeError("the node does not listen: %r" % self.text())

    def text(self):
        size = os.fstat(self.log.fileno()).st_size
        return os.pread(self.log.fileno(), size, 0)

    def status(self, name):
        with open("/proc/%d/status" % self.process.pid) as file:
            return int(re.search(r"^%s:\s+(\d+)" % name, file.read(), re.M).group(1))

    def figures(self):
        descriptors = len(os.listdir("/proc/%d/fd" % self.process.pid))
        return descriptors, self.status("Threads"), self.status("VmRSS")

    def settle(self, descriptors, threads, seconds=10.0):
        """Waits until no more than so many are left; those that are."""
        end = time.monotonic() + seconds
        while time.monotonic() < end and self.figures()[:2] > (descriptors, threads):
            time.sleep(0.05)
        return self.figures()

    def peer(self, bytes_=b""):
        return Peer(self.port).send(bytes_)

    def associated(self, **options):
        return Peer(self.port).associate(**options)

    def fresh_echo(self):
        """Seconds for a whole association with an echo."""
        start = time.monotonic()
        peer = self.associated()
        peer.echo()
        kind, _ = peer.send(RELEASE).read_pdu()
        peer.close()
        if kind != 6:
            raise ConnectionError("not released: " + str(kind))
        return time.monotonic() - start

    def watch(self):
        self.echo_meanwhile = subprocess.Popen([sys.executable, __file__, "--echo", str(self.port)],
                                               stdin=subprocess.PIPE, stdout=subprocess.PIPE)

    def longest_echo(self):
        """Seconds, since the last call."""
        self.echo_meanwhile.stdin.write(b"\n")
        self.echo_meanwhile.stdin.flush()
        line = self.echo_meanwhile.stdout.readline()
        return float(line) if line else float("inf")

    def stop(self):
        if self.echo_meanwhile:
            self.echo_meanwhile.stdin.close()
            self.echo_meanwhile.wait(10)
        self.process.send_signal(signal.SIGTERM)
        return self.process.wait(15)


def echo_for_ever(port):
    """A process of its own: for each line of input, the longest echo since the last."""
    longest, lock = [0.0], threading.Lock()

    def work():
        peer, number = Peer(port).associate(), 0
        while True:
            number = number % 60000 + 1
            try:
                seconds = peer.echo(number)
            except ConnectionError:
                seconds = float("inf")
            with lock:
                longest[0] = max(longest[0], seconds)
            if seconds == float("inf"):
                return
            time.sleep(0.01)

    threading.Thread(target=work, daemon=True).start()
    for _ in sys.stdin:
        with lock:
            print(longest[0], flush=True)
            longest[0] = 0.0


# --- rows ---

class Rows:
    def __init__(self, wanted):
        self.wanted, self.count, self.failed = wanted, 0, []

    def is_wanted(self, name):
        return not self.wanted or any(name.startswith(prefix) for prefix in self.wanted)

    def check(self, name, sent, expected, came, is_ok):
        self.count += 1
        if not is_ok:
            self.failed.append(name)
        print("%-4s  %-34s %-58s expected %-34s came %s" % ("ok" if is_ok else "FAIL", name, sent, expected, came),
              flush=True)

    def run(self, name, sent, expected, action, node=None):
        """expected: a regular expression for what the action returns."""
        if not self.is_wanted(name):
            return
        try:
            came = action()
        except Exception as error:    # a row that breaks is a row that fails
            came = "%s: %s" % (type(error).__name__, error)
            if not isinstance(error, OSError):
                traceback.print_exc()
        is_ok = re.fullmatch(expected, came) is not None
        if node:
            after, meanwhile = self.aftermath(node)
            came += "; echo meanwhile %.1f ms, after %s" % (meanwhile * 1000, after)
            is_ok = is_ok and meanwhile < ECHO_LIMIT and after.endswith("ms")
        self.check(name, sent, expected, came, is_ok)

    @staticmethod
    def aftermath(node):
        try:
            after = "%.1f ms" % (node.fresh_echo() * 1000)
        except OSError as error:
            after = str(error)
        return after, node.longest_echo()


def answers(node, bytes_, timeout=ARTIM + MESSAGE + SLACK):
    def action():
        peer = node.peer(bytes_)
        words = peer.words(timeout)
        peer.close()
        return words
    return action


def timed(node, bytes_, at_least, at_most, drip=b"", pause=0.25):
    """What comes, and whether in time, while the bytes of drip are sent one by one."""
    def action():
        peer = node.peer(bytes_)
        stop = threading.Event()

        def dripping():
            for byte in drip:
                if stop.wait(pause):
                    return
                peer.send(bytes([byte]))

        thread = threading.Thread(target=dripping)
        thread.start()
        words = peer.words(at_most + 2)
        seconds = time.monotonic() - peer.start
        stop.set()
        thread.join()
        peer.close()
        return words + (" in time" if at_least <= seconds <= at_most else " after %.2f s" % seconds)
    return action


def with_length(bytes_, place, change):
    """The same with another number in the length field of two bytes that stands there."""
    value = struct.unpack(">H", bytes_[place:place + 2])[0] + change
    return bytes_[:place] + struct.pack(">H", value) + bytes_[place + 2:]


ASSOCIATED = request()
REFUSED = r"ABORT\(2,6\) (end|reset)"
AT_LENGTH = r"( ABORT\(2,2\)\+?)? (end|reset)"    # what still comes behind the abort is answered, too
IN_DATA = r"AC ABORT\((2,6|0,0)\)" + AT_LENGTH


def rows_before_association(rows, node):
    def row(name, sent, bytes_, expected, **options):
        rows.run(name, sent, expected, answers(node, bytes_, **options), node)

    for length in (0, 10, 0x7FFFFFFF, 0xFFFFFFFF):
        row("N01 request of %08X" % length, "header and at most 10 bytes", pdu(1, bytes(min(length, 10)), length),
            REFUSED)
    row("N01 request of 1 GiB", "header and 1 MiB", pdu(1, bytes(1 << 20), 1 << 30), REFUSED)

    for kind, length in ((0, 4), (8, 4), (0x42, 0xFFFFFFFF), (0x99, 4), (0xFF, 4)):
        row("N02 type %02X" % kind, "PDU of type %02X" % kind, pdu(kind, bytes(4), length), r"ABORT\(2,1\) (end|reset)")
    row("N02 HTTP", "GET / HTTP/1.1", b"GET / HTTP/1.1\r\nHost: x\r\n\r\n", r"ABORT\(2,1\) (end|reset)")
    row("N02 TLS", "ClientHello", bytes.fromhex("16030100a5010000a10303") + bytes(200), r"ABORT\(2,1\) (end|reset)")

    for name, bytes_ in (("data", ECHO), ("release", RELEASE), ("released", RELEASED), ("acceptance",
                         acceptance([(1, 0, IMPLICIT)])), ("rejection", pdu(3, b"\0\1\1\1"))):
        row("N03 %s first" % name, name, bytes_, r"ABORT\(2,2\) (end|reset)")
    row("N03 abort first", "A-ABORT", ABORT, "end")

    late = ARTIM + SLACK
    for name, bytes_, drip in (("nothing", b"", b""), ("5 bytes", ASSOCIATED[:5], b""), ("100 bytes", ASSOCIATED[:100],
                               b""), ("one byte at a time", b"", ASSOCIATED)):
        rows.run("N04 " + name, "of a request", r"(ABORT\(2,\d\) )?end in time",
                 timed(node, bytes_, ARTIM * 0.9, late, drip), node)

    wrong_name = request(name=item(0x10, b"1.2.3"))
    for name, bytes_, expected in (("rejection", wrong_name, r"RJ\(1,1,2\) end"), ("release", ASSOCIATED + RELEASE,
                                   "AC RELEASED end"), ("abort", ASSOCIATED + ABORT, "AC end")):
        rows.run("N05 %s, never closes" % name, "and nothing more", expected + " in time", timed(node, bytes_, 0, late),
                 node)

    items = {"application context": 76, "context": 101, "abstract syntax": 109, "transfer syntax": 130, "user": 151,
             "maximum length": 155, "class UID": 163, "version name": 172}
    for name, place in items.items():
        for change in (1, -1, 300):
            row("N06 %s %+d" % (name, change), "length field of the item", with_length(ASSOCIATED, place, change),
                REFUSED)
    row("N06 request +4", "length field of the PDU", request(length=len(ASSOCIATED) - 2), r"(ABORT\(2,6\) )?end")

    for version, expected in ((0, r"RJ\(1,2,2\) end"), (2, r"RJ\(1,2,2\) end"), (0xFFFF, r"AC RELEASED end")):
        row("N07 version %04X" % version, "request and release", request(version=version) + RELEASE, expected)
    row("N07 context name", "1.2.3", wrong_name, r"RJ\(1,1,2\) end")

    def contexts(name, sent, bytes_, expected):
        rows.run("N08 " + name, sent, expected, answers(node, request(contexts=bytes_) + RELEASE), node)

    served = r"AC\S* RELEASED end"
    contexts("ID 0", "an even ID", context(0), REFUSED)
    contexts("ID 2", "an even ID", context(2), REFUSED)
    contexts("doubled ID", "1 and 1", context(1) + context(1, transfers=[EXPLICIT]), r"AC\[0, 1\] RELEASED end")
    contexts("128", "128 contexts", b"".join(context(2 * n + 1) for n in range(128)), "AC RELEASED end")
    contexts("129", "one ID twice", b"".join(context((2 * n + 1) % 256) for n in range(129)), r"AC\[...\] RELEASED end")
    contexts("2000", "2000 contexts", b"".join(context((2 * n + 1) % 256) for n in range(2000)),
             r"(AC\[...\] RELEASED|ABORT\(2,6\)) end")
    contexts("no transfer syntax", "abstract syntax alone", context(1, transfers=()), r"AC\[4\] end")
    contexts("2000 syntaxes", "of 3 bytes, and a known one", context(1, transfers=[b"1.2"] * 2000 + [IMPLICIT]), served)
    contexts("UID of 5000 bytes", "abstract syntax", context(1, abstract=b"1" * 5000), REFUSED)

    def information(*items_):
        return request(information=user(*items_))

    for length in range(1, 8):
        row("N09 maximum %d" % length, "too small for any data", information(maximum(length)), r"RJ\(1,1,1\) end")
    for length in (8, 9, 12, 13):
        rows.run("N09 maximum %d" % length, "and an echo", "answered in small PDUs", small_pdus(node, length), node)

    echoed = r"AC DATA RELEASED end"
    for name, items_ in (("0", [maximum(0)]), ("FFFFFFFF", [maximum(0xFFFFFFFF)]), ("twice", [maximum(16384)] * 2),
                         ("absent", [])):
        row("N10 maximum " + name, "and an echo", information(*items_) + ECHO + RELEASE, echoed)
    row("N10 maximum of 3 bytes", "sub-item of length 3", information(item(0x51, b"\0\0\1")), REFUSED)

    role = struct.pack(">H", 17) + VERIFICATION + b"\1\1"
    for name, body in (("role", b"\xff\xff" + role[2:]), ("role, short", b"\0\5" + role[2:])):
        row("N11 " + name, "inner length lies", information(maximum(0), item(0x54, body)), REFUSED)
    for name, kind, body in (("common extended", 0x57, b"\xff\xff1.2"), ("identity", 0x58, b"\1\0\xff\xffme")):
        row("N11 " + name, "inner length lies, which nobody reads", information(maximum(0), item(kind, body)) + ECHO +
            RELEASE, echoed)
    for name, kind in (("window", 0x53), ("extended", 0x56), ("identity", 0x58)):
        row("N11 " + name, "longer than the item around it", information(maximum(0), item(kind, b"\0\1\0\1", 400)),
            REFUSED)

    row("N12 request of 1 MiB", "a great many contexts", pdu(1, request()[6:] + bytes((1 << 20) - 200)), REFUSED)
    row("N12 request of 16 MiB", "the same", pdu(1, request()[6:] + bytes(1 << 24)), REFUSED)
    row("N12 16,000 sub-items", "empty ones", information(*[item(0x52, b"")] * 16000) + RELEASE,
        r"(AC RELEASED|ABORT\(2,6\)) end")


def small_pdus(node, length):
    def action():
        peer = node.associated(information=user(maximum(length))).send(ECHO)
        message = b""
        while True:
            kind, body = peer.read_pdu()
            if kind != 4 or len(body) > length:
                return "%s of %d bytes" % (NAMES.get(kind, kind), len(body))
            count, _, control = struct.unpack(">IBB", body[:6])
            if count != len(body) - 4 or count < 3:
                return "a PDV of %d bytes" % count
            message += body[6:]
            if control & 2:
                break
        return "answered in small PDUs" if us(0x0900, 0) in message and peer.release() else "no success"
    return action


def rows_in_association(rows, node):
    def row(name, sent, bytes_, expected, **options):
        rows.run(name, sent, expected, answers(node, ASSOCIATED + bytes_, **options), node)

    for name, bytes_ in (("request", ASSOCIATED), ("acceptance", acceptance([(1, 0, IMPLICIT)])),
                         ("rejection", pdu(3, b"\0\1\1\1")), ("released", RELEASED)):
        row("N13 " + name, "in an association", bytes_, r"AC ABORT\(2,2\) (end|reset)")
    row("N13 type 99", "in an association", pdu(0x99, bytes(4)), r"AC ABORT\(2,1\) (end|reset)")

    text = echo_request()
    for length in (0, 1, len(text) + 1, len(text) + 3, 0xFFFFFFFF, 0x80000000, 0xFFFFFFFB, 0xFFFFFFFC):
        row("N14 PDV of %08X" % length, "%08X in its place" % (len(text) + 2), data(pdv(text, length=length)),
            r"AC ABORT\(2,6\) (end|reset)")
    row("N14 no PDV", "P-DATA of 0 bytes, and an echo", data() + ECHO + RELEASE,
        r"AC (DATA RELEASED|ABORT\(2,6\)) (end|reset)")
    row("N14 never a PDV", "P-DATA of 0 bytes, 1,000 times", data() * 1000, r"AC ABORT\(2,6\)" + AT_LENGTH)

    announced = echo_request(dataset=0x0102)
    for number in (99, 0, 3):    # the last one is of another class, which is refused
        row("N15 context %d" % number, "not accepted", data(pdv(text, number=number)), IN_DATA)
    row("N15 data before command", "a data set", data(pdv(b"abcd", control=2)), IN_DATA)
    row("N15 command inside data", "data, then an echo", data(pdv(announced), pdv(b"abcd", control=0)) + ECHO,
        r"AC DATA ABORT\((2,6|0,0)\) (end|reset)")
    row("N15 context changes", "1, then 3", data(pdv(text[:20], control=1), pdv(text[20:], number=3)), IN_DATA)

    fragment = data(pdv(bytes(16000), control=1))
    row("N16 endless command", "2 MiB of fragments", data(pdv(text, control=1)) + fragment * 132, IN_DATA)
    row("N16 empty fragments", "100,000 of them", data(pdv(text[:20], control=1)) +
        data(*[pdv(b"", control=1)] * 1000) * 100, IN_DATA)
    rows.run("N16 endless data", "behind an echo", "ended in time", endless_data(node, announced), node)

    row("N17 announced, none comes", "and silence", data(pdv(announced)), r"AC DATA (ABORT\(\d,\d\) )?(end|reset)",
        timeout=IDLE + MESSAGE + SLACK)
    row("N17 announced, then released", "no data set", data(pdv(announced)) + RELEASE, r"AC DATA RELEASED end")
    row("N17 release inside a command", "half an echo", data(pdv(text[:20], control=1)) + RELEASE,
        r"AC (ABORT\(2,[25]\)|RELEASED) (end|reset)")
    row("N17 unannounced data", "an echo with a data set", data(pdv(text)) + data(pdv(b"abcd", control=2)),
        r"AC DATA ABORT\((2,6|0,0)\) (end|reset)")

    explicit = b"".join(struct.pack("<HH2sH", 0, number, kind, len(value)) + value for number, kind, value in (
        (2, b"UI", even(VERIFICATION)), (0x100, b"US", b"\x30\0"), (0x110, b"US", b"\1\0"), (0x800, b"US", b"\1\1")))
    uid = element(2, even(VERIFICATION))
    for name, bytes_ in (("explicit VR", explicit), ("text", b"hello, this is no command set at all, is it?"),
                         ("nothing in it", command()), ("no command field", command(uid, us(0x110, 1))),
                         ("field of 0 bytes", command(uid, element(0x100, b""), us(0x110, 1), us(0x800, 0x101))),
                         ("field of 1 byte", command(uid, element(0x100, b"\x30"), us(0x110, 1), us(0x800, 0x101))),
                         ("length FFFFFFFE", command(uid, element(0x100, b"\x30\0", 0xFFFFFFFE))),
                         ("field 7777H", echo_request(field=0x7777)),
                         ("sequence", command(uid, element(0x100, b"\xfe\xff\0\xe0" + bytes(4), 0xFFFFFFFF)))):
        row("N18 " + name, "as a command set", data(pdv(bytes_)), r"AC (DATA )?ABORT\(\d,\d\) (end|reset)")
    row("N18 unasked response", "C-ECHO-RSP, and release", data(pdv(echo_response())) + RELEASE,
        r"AC (RELEASED|ABORT\(\d,\d\)) (end|reset)")

    half = ASSOCIATED + data(pdv(text[:20], control=1))[:-7]
    rows.run("N20 reset inside a PDV", "RST", "served", lambda: served_after(node, half, Peer.reset), node)
    rows.run("N20 end inside a PDV", "FIN", "served", lambda: served_after(node, half, Peer.close), node)
    row("N20 abort inside data", "A-ABORT", data(pdv(announced), pdv(b"abcd", control=0)) + ABORT, "AC DATA end")
    row("N20 release inside data", "A-RELEASE-RQ", data(pdv(announced), pdv(b"abcd", control=0)) + RELEASE,
        r"AC DATA (RELEASED|ABORT\(2,[25]\)) (end|reset)")
    row("N20 release twice", "A-RELEASE-RQ twice", RELEASE + RELEASE, r"AC RELEASED (ABORT\(2,2\) )?(end|reset)")
    row("N20 data after release", "an echo", RELEASE + ECHO, r"AC RELEASED (ABORT\(2,2\) )?(end|reset)")

    rows.run("N21 one byte at a time", "a command, a byte a second", r"AC (ABORT\(\d,\d\) )?(end|reset) in time",
             timed(node, ASSOCIATED, MESSAGE * 0.9, MESSAGE + 1 + SLACK, ECHO, pause=1.0), node)
    rows.run("N21 never reads", "echoes without end", "ended in time, memory bounded", never_reads(node), node)


def served_after(node, bytes_, end):
    peer = node.peer(bytes_)
    time.sleep(0.05)
    end(peer)
    return "served"


def endless_data(node, announced):
    def action():
        peer = node.associated().send(data(pdv(announced)))
        block = data(pdv(bytes(16000), control=0))
        peer.socket.settimeout(MESSAGE + SLACK)
        try:
            while time.monotonic() - peer.start < MESSAGE + IDLE + SLACK:
                peer.socket.sendall(block)
        except OSError:
            peer.close()
            return "ended in time"
        return "still served after %.1f s" % (time.monotonic() - peer.start)
    return action


def never_reads(node):
    def action():
        before, sent = node.status("VmRSS"), 0
        peer = node.associated()
        peer.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
        peer.socket.settimeout(0.25)
        while time.monotonic() - peer.start < MESSAGE + SLACK + 2:
            try:
                peer.socket.sendall(ECHO * 100)
                sent += 100
            except socket.timeout:
                pass    # nothing more is taken
            except OSError:
                growth = node.status("VmRSS") - before
                peer.close()
                return "ended in time, memory bounded" if growth < 8192 else "grew by %d KiB" % growth
        peer.close()
        return "still open after %d echoes" % sent
    return action


# --- storage ---

def store_request(sop_class=STORAGE, instance=b"1.2.3.4"):
    return command(element(2, even(sop_class)), us(0x0100, 1), us(0x0110, 1), us(0x0700, 0), us(0x0800, 0x0102),
                   element(0x1000, even(instance)))


def attribute(group, number, value, length=None):
    return struct.pack("<HHI", group, number, len(value) if length is None else length) + value


def instance_bytes(sop_class=STORAGE, instance=b"1.2.3.4", rest=b""):
    return (attribute(8, 0x16, even(sop_class)) + attribute(8, 0x18, even(instance)) + rest +
            attribute(0x20, 0x0D, even(b"1.2.3")) + attribute(0x20, 0x0E, even(b"1.2.3.1")))


def rows_of_storage(rows, program):
    if not rows.is_wanted("N19"):
        return
    with tempfile.TemporaryDirectory() as folder:
        node = Node(program, "--store", folder, "--artim", str(ARTIM), "--message-timeout", "20")
        node.watch()
        storing = request(contexts=context(1) + context(3, STORAGE))
        deep = b"".join(attribute(8, 0x1115, b"", 0xFFFFFFFF) + struct.pack("<HHI", 0xFFFE, 0xE000, 0xFFFFFFFF)
                        for _ in range(50000))
        whole = instance_bytes()
        for name, expected, request_, bytes_ in (
                ("good", "0000", store_request(), whole),
                ("class other than context", "0122|A900|C000", store_request(VERIFICATION), whole),
                ("class other than command", "A900", store_request(), instance_bytes(sop_class=VERIFICATION)),
                ("UID other than command", "A900", store_request(), instance_bytes(instance=b"1.2.3.5")),
                ("path as UID", "0117|A900", store_request(instance=b"../../x"), instance_bytes(instance=b"../../x")),
                ("garbage", "A900|C...", store_request(instance=b"1.2.7"), b"\xa5" * 4000),
                ("cut", "A900|C...", store_request(instance=b"1.2.8"), instance_bytes(instance=b"1.2.8")[:-3]),
                ("empty", "A900|C...", store_request(instance=b"1.2.9"), b""),
                ("length FFFFFFFE", "A900|C...", store_request(instance=b"1.2.10"),
                 instance_bytes(instance=b"1.2.10", rest=attribute(0x10, 0x10, b"A^", 0xFFFFFFFE))),
                ("50,000 levels", "A900|C...", store_request(instance=b"1.2.11"),
                 instance_bytes(instance=b"1.2.11", rest=deep))):
            rows.run("N19 " + name, "C-STORE", "(%s)|ABORT.*" % expected, store(node, storing, request_, bytes_), node)
        files = [name for _, _, names in os.walk(folder) for name in names if name.endswith(".dcm")]
        rows.check("N19 nothing but the good one", "in the archive", "1 file", "%d" % len(files), len(files) == 1)
        rows.check("N19 the node ends", "SIGTERM", "0", str(code := node.stop()), code == 0)


def store(node, association, request_, bytes_):
    """The status of the answer, in hexadecimal."""
    def action():
        peer = node.peer(association)
        if peer.read_pdu()[0] != 2:
            return "not associated"
        pieces = [bytes_[place:place + 16000] for place in range(0, len(bytes_), 16000)] or [b""]
        peer.send(data(pdv(request_, number=3)))
        for piece in pieces:
            peer.send(data(pdv(piece, control=2 if piece is pieces[-1] else 0, number=3)))
        kind, body = peer.read_pdu(30)
        peer.close()
        found = re.search(re.escape(struct.pack("<HHI", 0, 0x0900, 2)) + b"(..)", body, re.S)
        if kind == 4 and found:
            return "%04X" % struct.unpack("<H", found.group(1))
        return describe(kind, body) if isinstance(kind, int) else kind
    return action


# --- queries ---

def find_request(sop_class=QUERY):
    return command(element(2, even(sop_class)), us(0x0100, 0x20), us(0x0110, 1), us(0x0700, 0), us(0x0800, 0x0102))


def explicit(group, number, vr, value=b""):
    return struct.pack("<HH2sH", group, number, vr, len(value)) + value


def rows_of_queries(rows, program):
    if not rows.is_wanted("Q"):
        return
    with tempfile.TemporaryDirectory() as folder:
        node = Node(program, "--store", folder, "--artim", str(ARTIM), "--message-timeout", "20")
        node.watch()
        storing = request(contexts=context(1) + context(3, STORAGE))
        names = (b"A" * 65536, b"B\0C" + b"^" * 40001, b"\x1b$B\xff\xfe\x1b(")
        for number, name in enumerate(names):
            instance = b"1.2.3.%d" % number
            rows.run("Q00 name of %d bytes" % len(name), "C-STORE", "0000",
                     store(node, storing, store_request(instance=instance),
                           instance_bytes(instance=instance, rest=attribute(8, 0x60, b"M\\" * 30000) +
                                          attribute(0x10, 0x10, name))), node)
        asking = request(contexts=context(1) + context(3, QUERY) + context(5, QUERY, (EXPLICIT,)))
        level, study = attribute(8, 0x52, b"STUDY "), attribute(0x20, 0x0D, b"")
        nested = attribute(0x40, 0x0275, b"", 0xFFFFFFFF) + struct.pack("<HHI", 0xFFFE, 0xE000, 0xFFFFFFFF)
        ends = struct.pack("<HHIHHI", 0xFFFE, 0xE00D, 0, 0xFFFE, 0xE0DD, 0)
        all_keys = b"".join((explicit(8, 0x52, b"CS", b"STUDY "), explicit(8, 0x61, b"CS"), explicit(0x10, 0x10, b"PN"),
                             explicit(0x20, 0x0D, b"UI")))
        before = node.figures()[2]
        for name, expected, request_, bytes_, number in (
                ("class other than context", "0 matches, 0122", find_request(VERIFICATION), level + study, 3),
                ("what was stored, in explicit VR", "1 matches, 0000", find_request(), all_keys, 5),
                ("SQL", "0 matches, 0000", find_request(),
                 level + attribute(0x10, 0x20, b"' OR '1'='1' --") + study, 3),
                ("10,000 stars", "1 matches, 0000", find_request(),
                 level + attribute(0x10, 0x10, b"*" * 10000) + study, 3),
                ("5,000 stars and letters", "0 matches, 0000", find_request(),
                 level + attribute(0x10, 0x10, b"*a" * 5000) + study, 3),
                ("1,000 UIDs", "1 matches, 0000", find_request(),
                 level + attribute(0x20, 0x0D, even(b"\\".join(b"1.2.%d" % number for number in range(1000)))), 3),
                ("260,000 UIDs", "0 matches, A[79]00", find_request(),
                 level + attribute(0x20, 0x0D, b"1\\" * 260000), 3),
                ("200 levels", "1 matches, 0000", find_request(), level + study + nested * 200 + ends * 200, 3),
                ("50,000 levels", "0 matches, ABORT.*", find_request(), level + study + nested * 50000, 3),
                ("64 MiB", "0 matches, ABORT.*", find_request(),
                 level + study + attribute(0x20, 0x4000, bytes(64 << 20)), 3)):
            rows.run("Q01 " + name, "C-FIND", expected, ask(node, asking, request_, bytes_, number), node)
        after = node.settle(*node.figures()[:2])[2]
        rows.check("Q01 memory", "of all of these", "16 MiB more at most", "%d KiB" % (after - before),
                   after - before < 16 << 10)
        rows.check("Q01 the node ends", "SIGTERM", "0", str(code := node.stop()), code == 0)


def ask(node, association, request_, bytes_, number):
    """How many matches come, and the last status in hexadecimal, or what comes instead."""
    def action():
        peer = node.peer(association)
        if peer.read_pdu()[0] != 2:
            return "not associated"
        peer.send(data(pdv(request_, number=number)))
        for place in range(0, len(bytes_), 100000):
            is_last = place + 100000 >= len(bytes_)
            peer.send(data(pdv(bytes_[place:place + 100000], control=2 if is_last else 0, number=number)))
        matches, end = 0, ""
        while not end:
            kind, body = peer.read_pdu(30)
            statuses = re.findall(re.escape(struct.pack("<HHI", 0, 0x0900, 2)) + b"(..)", body, re.S)
            statuses = ["%04X" % struct.unpack("<H", status) for status in statuses]
            matches += sum(status in ("FF00", "FF01") for status in statuses)
            if kind != 4:
                end = describe(kind, body) if isinstance(kind, int) else kind
            elif statuses and statuses[-1] not in ("FF00", "FF01"):
                end = statuses[-1]
        peer.close()
        return "%d matches, %s" % (matches, end)
    return action


# --- numbers ---

def rows_of_numbers(rows, program):
    wanted = [name for name in ("N22", "held") if rows.is_wanted(name)]
    if not wanted:
        return
    node = Node(program, "--artim", "60", "--idle-timeout", "300", "--max-associations", "1000")
    node.fresh_echo()
    node.watch()
    node.longest_echo()
    before = node.settle(0, 0, 0.5)

    def run(name, sent, expected, action):
        rows.run(name, sent, expected, action, node)

    def hold(count, bytes_):
        def action():
            peers = [node.peer(bytes_) for _ in range(count)]
            time.sleep(0.5)
            longest = max(node.fresh_echo() for _ in range(10))
            for peer in peers:
                peer.close()
            return "echo within 1 s" if longest < 1 else "echo after %.2f s" % longest
        return action

    def repeat(count, action):
        def all_():
            for _ in range(count):
                action()
            return "done"
        return all_

    run("N22 200 idle", "connections that say nothing", "echo within 1 s", hold(200, b""))
    run("N22 200 half requests", "100 bytes of each", "echo within 1 s", hold(200, ASSOCIATED[:100]))
    run("N22 500 connect and close", "FIN", "done", repeat(500, lambda: node.peer().close()))
    run("N22 300 resets", "half a request, then RST", "done", repeat(300, lambda: node.peer(ASSOCIATED[:50]).reset()))
    run("N22 200 aborts", "A-ABORT in an association", "done",
        repeat(200, lambda: node.associated().send(ABORT).close()))
    run("N22 50 held", "associations", "echo within 1 s", hold(50, ASSOCIATED))
    run("held %d" % HELD, "associations at once, an echo on each", "under %d KiB each" % HELD_KIB, hold_many(node))

    after = node.settle(*before[:2])
    rows.check("N22 nothing is left", "of all of these", "descriptors, threads as before; %d, %d" % before[:2],
               "%d, %d; memory %d KiB, before %d KiB" % (*after[:2], after[2], before[2]),
               after[:2] <= before[:2] and after[2] - before[2] < 32 * 1024)
    rows.check("N22 the node ends", "SIGTERM", "0", str(code := node.stop()), code == 0)

    limited = Node(program, "--max-associations", "2", "--artim", "2")
    held = [limited.associated(), limited.associated()]
    rows.run("N22 above the limit", "a third association", r"RJ\(2,3,2\) end", answers(limited, ASSOCIATED))
    for peer in held:
        peer.release()
    rows.run("N22 below it again", "an echo", "echoed", lambda: "echoed" if limited.fresh_echo() < 5 else "late")
    limited.stop()


def hold_many(node):
    def action():
        memory = node.status("VmRSS")
        peers = [node.associated() for _ in range(HELD)]
        for peer in peers:
            peer.echo()
        each = (node.status("VmRSS") - memory) / HELD
        node.longest_echo()
        time.sleep(1)
        longest = node.longest_echo()
        for peer in peers:
            peer.close()
        if longest >= ECHO_LIMIT:
            return "an echo took %.0f ms" % (longest * 1000)
        return "under %d KiB each" % HELD_KIB if each < HELD_KIB else "%.0f KiB each" % each
    return action


# --- tn echo, and nodes that break the rules ---

class WrongNode:
    """Listens for one connection, reads the request and lets a script answer."""

    def __init__(self, script):
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]
        self.words = ""
        self.thread = threading.Thread(target=self.serve, args=(script,))
        self.thread.start()

    def serve(self, script):
        self.listener.settimeout(10)
        try:
            connection, _ = self.listener.accept()
            peer = Peer(connection=connection)
            peer.read_pdu()
            script(peer)
            self.words = peer.words(6)
            peer.close()
        except OSError as error:
            self.words = str(error)
        self.listener.close()


def asked(program, script, limit=2.0):
    """tn echo against the script: what it sent at last, its exit code, and whether it ended in time."""
    def action():
        node = WrongNode(script)
        start = time.monotonic()
        result = subprocess.run([program, "echo", "--timeout", str(limit), "ANY@127.0.0.1:%d" % node.port],
                                stdin=subprocess.DEVNULL, capture_output=True, timeout=60)
        seconds = time.monotonic() - start
        node.thread.join()
        late = "" if seconds < 2 * limit + 2 else " after %.1f s" % seconds
        remark = " remark" if result.returncode == 0 and result.stderr else ""
        return "%s, exit %d%s%s" % (node.words, result.returncode, remark, late)
    return action


def rows_of_requesters(rows, program):
    good = acceptance([(1, 0, IMPLICIT)])

    def accept(answer):
        rows.run("N23 " + answer[0], "A-ASSOCIATE-AC", answer[2],
                 asked(program, lambda peer: peer.send(answer[1])))

    no_context = r"(ABORT\(\d,\d\) )?(end|reset), exit [1-9]"
    aborted = r"ABORT\(\d,\d\) (end|reset), exit [1-9]"
    for answer in (
            ("no context", acceptance([]), no_context),
            ("context never asked for", acceptance([(5, 0, IMPLICIT)]), no_context),
            ("context doubled", acceptance([(1, 0, IMPLICIT), (1, 0, EXPLICIT)]), aborted),
            ("even context", acceptance([(2, 0, IMPLICIT)]), no_context),
            ("result 9", acceptance([(1, 9, IMPLICIT)]), no_context),
            ("syntax never offered", acceptance([(1, 0, b"1.2.3")]), aborted),
            ("empty syntax", acceptance([(1, 0, b"")]), aborted),
            ("no syntax", acceptance([(1, 0, None)]), no_context),
            ("item too long", with_length(good, 101, 300), no_context),
            ("item too short", with_length(good, 101, -1), no_context),
            ("user information too long", with_length(good, 130, 5), no_context),
            ("PDU of 4 GiB", pdu(2, good[6:], 0xFFFFFFFF), no_context),
            ("HTTP", b"HTTP/1.1 400 Bad Request\r\n\r\n", no_context)):
        accept(answer)

    def answer_echo(name, sent, expected, *answers_):
        def script(peer):
            peer.send(good)
            peer.read_pdu()
            for bytes_ in answers_:
                peer.send(bytes_)
        rows.run("N24 " + name, sent, expected, asked(program, script))

    answer_echo("no answer", "silence", no_context)
    answer_echo("failure", "status 0211H", aborted, data(pdv(echo_response(status=0x0211))))
    answer_echo("no status", "a response without it", aborted, data(pdv(echo_response(status=None))))
    answer_echo("wrong message", "to message 77", aborted, data(pdv(echo_response(message=77))))
    answer_echo("wrong field", "C-STORE-RSP", aborted, data(pdv(echo_response(field=0x8001))))
    answer_echo("wrong context", "context 3", aborted, data(pdv(echo_response(), number=3)))
    answer_echo("pending", "5,000 times FF00H", r"ABORT\(0,0\)( ABORT\(2,2\)\+?)? (end|reset), exit [1-9]",
                data(pdv(echo_response(status=0xFF00))) * 5000)
    # The first answer is right, and the release that follows skips what comes behind it.
    answer_echo("two answers", "the same twice, then a release",
                r"RELEASE (ABORT\(\d,\d\) )?(end|silence|reset), exit 0.*", data(pdv(echo_response())) * 2)

    def release(name, sent, expected, *answers_):
        def script(peer):
            peer.send(good)
            peer.read_pdu()
            peer.send(data(pdv(echo_response())))
            peer.read_pdu()
            for bytes_ in answers_:
                peer.send(bytes_)
        rows.run("N25 " + name, sent, expected, asked(program, script))

    ended = r"(ABORT\(\d,\d\) )?(end|reset), exit 0 remark"    # the echo was answered all the same
    release("collision", "A-RELEASE-RQ, then -RP", "RELEASED end, exit 0", RELEASE + RELEASED)
    release("two collisions", "A-RELEASE-RQ twice", "RELEASED " + ended, RELEASE + RELEASE)
    release("no answer", "silence", ended)
    release("abort", "A-ABORT", ended, ABORT)
    release("data", "1,000 P-DATA", ended, data(pdv(bytes(1000), control=0)) * 1000)


def main(program, wanted):
    rows = Rows(wanted)
    node = Node(program, "--artim", str(ARTIM), "--message-timeout", str(MESSAGE), "--idle-timeout", str(IDLE))
    node.fresh_echo()
    node.watch()
    node.longest_echo()
    before = node.settle(0, 0, 0.5)
    rows_before_association(rows, node)
    rows_in_association(rows, node)
    after = node.settle(*before[:2])
    lines = node.text().count(b"\n")
    rows.check("nothing is left", "of all of these", "descriptors, threads as before; %d, %d" % before[:2],
               "%d, %d; memory %d KiB, before %d KiB" % (*after[:2], after[2], before[2]),
               after[:2] <= before[:2] and after[2] - before[2] < 16 * 1024)
    rows.check("the log is bounded", "by two lines an association", "%d lines at most" % (4 * rows.count + 10),
               "%d lines" % lines, lines <= 4 * rows.count + 10)
    rows.check("the node ends", "SIGTERM", "0", str(code := node.stop()), code == 0)
    rows_of_storage(rows, program)
    rows_of_queries(rows, program)
    rows_of_numbers(rows, program)
    rows_of_requesters(rows, program)
    print("%d rows, %d failed%s" % (rows.count, len(rows.failed), "".join("\n   " + name for name in rows.failed)))
    return 1 if rows.failed else 0


if __name__ == "__main__":
    if len(sys.argv) == 3 and sys.argv[1] == "--echo":
        echo_for_ever(int(sys.argv[2]))
    elif len(sys.argv) >= 2:
        sys.exit(main(sys.argv[1], sys.argv[2:]))
    else:
        sys.exit(__doc__)
