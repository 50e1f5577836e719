#!/usr/bin/env python3
"""What a storing node does when its disk or its memory fails, call by call.

  errors   each call that concerns the archive's folder fails once, and from there on, with each error that a disk gives
           (and a write takes half of what it is given, which is no error): what is sent meanwhile is stored whole or
           refused with A700H, nothing is stored in part, and the node goes on once the fault is over
  replace  the same with --duplicates replace, on disks that can exchange names and on those that cannot: what was
           acknowledged last is there, and its keys are in the index, whatever fails and whenever the node ends
  locked   another process holds a lock on the index for longer than the node waits
  memory   each allocation fails (of many, each n-th) while a peer stores, finds and echoes: that association may end, the
           node goes on and has lost nothing
  sender   each call and each allocation (of many, each n-th) of tn send fails: it ends, with a line that says why and an
           exit code, and tells of nothing that the node has not; a call that was interrupted or did half matters nothing
  order    before each answer: the bytes of the instance, its name, and each new folder on the way to it are on the disk
  slow     each fsync takes 200 ms: what is stored together waits together, an echo waits for none of it

Usage: io-errors.py TN [errors|replace|locked|memory|sender|order|slow ...]. Needs a C compiler (cc, or what CC says).
"""
import argparse, ctypes, errno, mmap, os, shutil, signal, sqlite3, subprocess, sys, tempfile, threading, time

from faults import ROOT, Node, acknowledged, data_set_of, element, instance, leftovers_in

OPEN, WRITE, SYNC, RENAME, MAKE_FOLDER, UNLINK, TRUNCATE, READ = (1 << i for i in range(8))  # as in broken-disk.c
CONNECT, SEND, RECEIVE, WAIT, THREAD = (1 << i for i in range(8, 13))
ALL = 255  # of a disk
FOR_EVER = 1 << 40


class Control(ctypes.Structure):  # as in broken-disk.c
    _fields_ = [("folder", ctypes.c_char * 256), ("kinds", ctypes.c_int64), ("first", ctypes.c_int64),
                ("last", ctypes.c_int64), ("error", ctypes.c_int64), ("sync_microseconds", ctypes.c_int64),
                ("flags_error", ctypes.c_int64), ("first_allocation", ctypes.c_int64),
                ("last_allocation", ctypes.c_int64), ("calls", ctypes.c_int64), ("allocations", ctypes.c_int64), ("failures", ctypes.c_int64)]


class Bench:
    """A folder to work in, a node on a disk that can fail, and instances to send it."""

    def __init__(self, arguments, name):
        self.tn = arguments.tn
        self.work = tempfile.mkdtemp(prefix=f"tn-{name}-", dir=arguments.folder)
        self.disk, self.archive, self.log = f"{self.work}/disk", f"{self.work}/disk/archive", f"{self.work}/log"
        os.mkdir(self.disk)
        self.library = f"{self.work}/broken-disk.so"
        subprocess.run([os.environ.get("CC", "cc"), "-shared", "-fPIC", "-O1", "-o", self.library,
                        f"{os.path.dirname(os.path.abspath(__file__))}/broken-disk.c"], check=True)
        with open(f"{self.work}/control", "wb") as file:
            file.write(bytes(ctypes.sizeof(Control)))
        with open(f"{self.work}/control", "r+b") as file:
            self.memory = mmap.mmap(file.fileno(), ctypes.sizeof(Control))
        self.control = Control.from_buffer(self.memory)
        self.node, self.turn = None, 0
        self.data_sets, self.acknowledged = {}, set()
        self.checked = {}  # files that were compared with what was sent, as they were then

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.node and self.node.process.poll() is None:
            self.node.end(signal.SIGKILL)
        del self.control
        self.memory.close()
        shutil.rmtree(self.work, ignore_errors=True)

    def start(self, *options, log=None):
        environment = {"LD_PRELOAD": self.library, "TN_DISK": f"{self.work}/control"}
        if log:
            environment["TN_DISK_LOG"] = log
        self.disarm()
        self.control.folder = self.disk.encode()
        self.node = Node(self.tn, self.archive, options, self.log, environment)

    def disarm(self):
        self.control.kinds = self.control.first = self.control.first_allocation = self.control.sync_microseconds = 0

    def arm(self, kinds, first, last, error):
        self.control.calls = self.control.failures = 0
        self.control.first, self.control.last, self.control.error = first, last, error
        self.control.kinds = kinds

    def arm_memory(self, first, last):
        self.control.allocations = self.control.failures = 0
        self.control.last_allocation = last
        self.control.first_allocation = first

    def make(self, sizes=(200, 3000, 600000)):
        """Files of a study that nobody has sent yet; returns their folder."""
        self.turn += 1
        folder = f"{self.work}/data/{self.turn}"
        os.makedirs(folder)
        for number, size in enumerate(sizes):
            uid, head, data = instance(1000 + self.turn, number + 1, size)
            self.data_sets[uid] = data
            with open(f"{folder}/{number}.dcm", "wb") as file:
                file.write(head + data)
        return folder

    def send(self, folder, *options):
        """Sends it; returns what was refused, in words."""
        report = f"{self.work}/report.1"
        subprocess.run([self.tn, "send", "-r", "--timeout", "20", "--report", report, *options,
                        f"ANY@127.0.0.1:{self.node.port}", folder], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                       timeout=120)
        uids, refused = acknowledged(self.work)
        self.acknowledged |= set(uids)
        return refused

    def echo(self):
        return subprocess.run([self.tn, "echo", "--timeout", "20", f"ANY@127.0.0.1:{self.node.port}"],
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode

    def indexed(self):
        with sqlite3.connect(f"file:{self.archive}/index.sqlite?mode=ro", uri=True) as index:
            return dict(index.execute("SELECT SOPInstanceUID, path FROM instance"))

    def faults(self, is_settled=True, unlinks=True):
        """What is wrong with the archive. Not is_settled: the index follows. Not unlinks: what is not wanted may stay."""
        faults, rows = [], self.indexed()
        files = {os.path.relpath(os.path.join(folder, name), self.archive)
                 for folder, _, names in os.walk(self.archive) for name in names if name.endswith(".dcm")}
        if leftovers_in(self.archive, 1) and unlinks:
            faults.append("temporary files")
        if is_settled and set(rows.values()) != files and (unlinks or set(rows.values()) - files):
            faults.append(f"index and files differ: {sorted(set(rows.values()) ^ files)[:3]}")
        there = {os.path.basename(path)[:-4] for path in files}
        if self.acknowledged - there:
            faults.append(f"lost: {sorted(self.acknowledged - there)[:3]}")
        if unlinks and there - self.acknowledged:
            faults.append(f"refused and yet there: {sorted(there - self.acknowledged)[:3]}")
        for path in files:
            uid, state = os.path.basename(path)[:-4], os.stat(f"{self.archive}/{path}")
            state = (state.st_ino, state.st_size, state.st_mtime_ns)
            if self.checked.get(path) != state:
                if data_set_of(f"{self.archive}/{path}") != self.data_sets[uid]:
                    faults.append(f"not what was sent: {uid}")
                self.checked[path] = state
        return faults

    def restart(self, number):
        """Ends the node with the signal, and looks what another one makes of what it left."""
        code = self.node.end(number)
        faults = [] if code in (0, -number) else [f"the node ended with {code}"]
        Node(self.tn, self.archive, [], self.log).end(signal.SIGTERM)
        if os.path.exists(f"{self.archive}/damaged"):
            faults.append(f"damaged files: {os.listdir(f'{self.archive}/damaged')[:3]}")
        return faults

    def empty(self):
        shutil.rmtree(self.archive, ignore_errors=True)
        shutil.rmtree(f"{self.work}/data", ignore_errors=True)
        self.data_sets, self.acknowledged, self.checked = {}, set(), {}


def name_of(kinds):
    names = ("open", "write", "fsync", "rename", "mkdir", "unlink", "truncate", "read", "connect", "send", "receive", "wait",
             "thread")
    return "any call but unlink" if kinds == ALL & ~UNLINK else "|".join(name for i, name in enumerate(names) if kinds >> i & 1)


def show(faults):
    """The first of them, under the line that tells how many there are."""
    for fault in faults[:8]:
        print(f"   {fault}", flush=True)


def errors(arguments):
    rows = [("EIO", errno.EIO, ALL & ~UNLINK), ("EIO", errno.EIO, RENAME | UNLINK), ("ENOSPC", errno.ENOSPC, OPEN | WRITE | SYNC | RENAME | MAKE_FOLDER),
            ("EMFILE", errno.EMFILE, OPEN), ("EACCES", errno.EACCES, OPEN | RENAME | MAKE_FOLDER | UNLINK),
            ("EINTR", errno.EINTR, WRITE), ("half of it", 0, WRITE)]
    total = failed = 0
    with Bench(arguments, "errors") as bench:
        for mode in ("group", "file", "none"):
            for error, number, kinds in rows:
                for is_lasting in ((False, True) if error in ("EIO", "ENOSPC") else (False,)):
                    found, refusals, cases = [], 0, 0
                    bench.empty()
                    bench.start("--fsync", mode)
                    bench.send(bench.make())
                    bench.arm(kinds, 0, 0, 0)
                    bench.send(bench.make())
                    calls = bench.control.calls
                    for first in range(1, calls + 3):
                        folder = bench.make()
                        bench.arm(kinds, first, FOR_EVER if is_lasting else first, number)
                        refused = bench.send(folder)
                        bench.disarm()
                        what = []
                        unlinks = not (kinds & UNLINK)
                        if bench.node.process.poll() is not None:
                            what.append("the node has ended")
                            found += [f"call {first}: {fault}" for fault in what]
                            break
                        what += [f"answered: {text}" for text in refused if "A700H" not in text]
                        if error in ("EINTR", "half of it") and refused:
                            what.append(f"refused: {refused[0]}")
                        what += bench.faults(is_settled=mode != "none", unlinks=unlinks)
                        again = bench.send(folder)
                        what += [f"when it is over: {text}" for text in again]
                        what += bench.faults(is_settled=mode != "none", unlinks=unlinks)
                        found += [f"call {first}: {fault}" for fault in what]
                        refusals, cases = refusals + len(refused), cases + 1
                        shutil.rmtree(folder)
                    if bench.node.process.poll() is None:
                        found += [f"afterwards: {fault}" for fault in
                                  bench.restart(signal.SIGKILL if is_lasting else signal.SIGTERM) + bench.faults()]
                    print(f"--fsync {mode}, {error} {'from the n-th on' if is_lasting else 'once'} of {name_of(kinds)}: "
                          f"{cases} moments, {refusals} instances refused with A700H, {len(found)} faults", flush=True)
                    show(found)
                    total, failed = total + cases, failed + len(found)
    print(f"write errors: {total} moments, {failed} faults")
    return failed


class Versions:
    """An instance that is sent again and again, each time with other bytes and keys."""

    def __init__(self, bench):
        self.bench = bench
        self.folder = f"{bench.work}/data/versions"
        self.number, self.kept = 0, None  # of versions, the last that was acknowledged
        os.makedirs(self.folder)

    def send(self, is_new=True):
        """Returns what the node has against it, in words."""
        self.number += is_new
        self.uid, head, self.data = instance(1, 1, 5000, self.number, 1)
        with open(f"{self.folder}/0.dcm", "wb") as file:
            file.write(head + self.data)
        refused = self.bench.send(self.folder)
        if not refused:
            self.kept = self.data
        return refused

    def faults(self, is_indexed, may_be_new=False):
        archive, faults = self.bench.archive, []
        with sqlite3.connect(f"file:{archive}/index.sqlite?mode=ro", uri=True) as index:
            rows = index.execute("SELECT path, PatientName, InstanceNumber FROM instance JOIN series ON series = series.row "
                                 "JOIN study ON study = study.row JOIN patient ON patient = patient.row").fetchall()
        there = data_set_of(f"{archive}/{ROOT}.1.0.1/{ROOT}.1.0.1.1/{self.uid}.dcm")
        if there != self.kept and not (may_be_new and there == self.data):
            faults.append("the file is not what was acknowledged last")
        if is_indexed and len(rows) != 1:
            faults.append(f"{len(rows)} rows in the index")
        elif is_indexed and not (rows[0][1].encode() in there and element(0x00200013, "IS", rows[0][2]) in there):
            faults.append(f"the index says {rows[0][1:]}, which is not in the file")
        end = time.monotonic() + 5
        while leftovers_in(archive, 1) and time.monotonic() < end:
            time.sleep(0.01)  # what was replaced is removed after the answer
        if leftovers_in(archive, 1):
            faults.append("temporary files")
        return faults


def replace(arguments):
    total = failed = 0
    kinds = ALL & ~UNLINK
    with Bench(arguments, "replace") as bench:
        for mode in ("group", "none"):
            for flags in (0, errno.EINVAL, errno.ENOSYS, errno.EOPNOTSUPP):
                for is_lasting in ((False, True) if flags in (0, errno.EINVAL) else (False,)):
                    def begin():
                        bench.start("--fsync", mode, "--duplicates", "replace")
                        bench.control.flags_error = flags

                    bench.empty()
                    begin()
                    versions = Versions(bench)
                    found = [f"at first: {text}" for text in versions.send() + versions.send()]
                    bench.arm(kinds, 0, 0, 0)
                    versions.send()
                    refusals = cases = 0
                    calls = bench.control.calls + 2 if flags in (0, errno.EINVAL) else 0  # else it is enough that it goes
                    for first in range(1, calls + 1):
                        bench.arm(kinds, first, FOR_EVER if is_lasting else first, errno.EIO)
                        refused = versions.send()
                        bench.disarm()
                        what = [f"answered: {text}" for text in refused if "A700H" not in text]
                        what += versions.faults(mode != "none" and not is_lasting, is_lasting)
                        if first % 2:  # what is left in the middle of it is seen by the next start
                            bench.node.end(signal.SIGKILL)
                            begin()
                            what += [f"after a restart: {fault}" for fault in versions.faults(True, is_lasting)]
                        what += [f"when it is over: {text}" for text in versions.send(is_new=not is_lasting)]
                        what += versions.faults(mode != "none")
                        found += [f"call {first}: {fault}" for fault in what]
                        refusals, cases = refusals + len(refused), cases + 1
                    found += [f"afterwards: {fault}" for fault in bench.restart(signal.SIGTERM) + versions.faults(True)]
                    bench.control.flags_error = 0
                    disk = f", names cannot be exchanged ({errno.errorcode[flags]})" if flags else ""
                    print(f"--fsync {mode} --duplicates replace{disk}, EIO {'from the n-th on' if is_lasting else 'once'}: "
                          f"{cases} moments, {refusals} refused with A700H, {len(found)} faults", flush=True)
                    show(found)
                    total, failed = total + cases, failed + len(found)
    print(f"replacing: {total} moments, {failed} faults")
    return failed


def locked(arguments):
    with Bench(arguments, "locked") as bench:
        failed = 0
        for mode in ("group", "none"):
            bench.empty()
            bench.start("--fsync", mode)
            bench.send(bench.make())
            index = sqlite3.connect(f"{bench.archive}/index.sqlite", isolation_level=None)
            index.execute("BEGIN IMMEDIATE")
            folder = bench.make()
            begin = time.monotonic()
            refused = bench.send(folder)
            seconds = time.monotonic() - begin
            echo = bench.echo()
            faults = bench.faults(is_settled=mode != "none")
            index.execute("ROLLBACK")
            index.close()
            expected = 3 if mode == "group" else 0  # without fsync the index follows when it can
            if len(refused) != expected or any("A700H" not in text for text in refused) or echo != 0 or seconds > 30:
                faults.append(f"{refused}, echo {echo}, {seconds:.0f} s")
            faults += [f"when it is over: {text}" for text in bench.send(folder)]
            faults += bench.restart(signal.SIGTERM) + bench.faults()
            print(f"--fsync {mode}, index locked by another process: {len(refused)} of 3 refused with A700H after "
                  f"{seconds:.1f} s; {len(faults)} faults {faults}", flush=True)
            failed += len(faults)
        return failed


def memory(arguments):
    failed = total = 0
    with Bench(arguments, "memory") as bench:
        for name, length in (("store", 1), ("store", 20), ("find", 1), ("echo", 1)):
            bench.empty()
            bench.start()
            bench.send(bench.make())

            def act(folder):
                if name == "store":
                    return bench.send(folder)
                subprocess.run([bench.tn, name, "--timeout", "20", f"ANY@127.0.0.1:{bench.node.port}"], stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, timeout=60)
                return []

            bench.arm_memory(FOR_EVER, FOR_EVER)
            act(bench.make())
            bench.disarm()
            time.sleep(0.1)
            count = bench.control.allocations
            step = max(1, count // arguments.moments)
            found, cases, refusals = [], 0, 0
            for first in [*range(1, min(count, 40)), *range(40, count, step)]:
                folder = bench.make()
                bench.arm_memory(first, first + length - 1)
                refusals += len(act(folder))
                bench.disarm()
                if bench.node.process.poll() is not None:
                    found.append(f"allocation {first}: the node has ended with {bench.node.process.returncode}")
                    bench.start()
                what = [f"when it is over: {text}" for text in bench.send(folder)] + bench.faults()
                found += [f"allocation {first}: {fault}" for fault in what]
                cases += 1
                shutil.rmtree(folder)
            found += bench.restart(signal.SIGTERM) + bench.faults()
            print(f"memory, {length} allocations fail in turn of the {count} of an association that is to {name}: {cases} "
                  f"moments, {refusals} instances not taken, {len(found)} faults", flush=True)
            show(found)
            failed, total = failed + len(found), total + cases
    return failed


def watch_sender(bench, folder, must_succeed, *options):
    """Runs tn send under the armed faults; returns what is wrong with what it says and does, and its exit code."""
    report = f"{bench.work}/report.1"
    environment = {**os.environ, "LD_PRELOAD": bench.library, "TN_DISK": f"{bench.work}/control"}
    try:
        end = subprocess.run([bench.tn, "send", "-r", "--timeout", "20", "--report", report, *options,
                              f"ANY@127.0.0.1:{bench.node.port}", folder], capture_output=True, text=True, timeout=60,
                             env=environment)
    except subprocess.TimeoutExpired:
        return ["it hangs"], None
    finally:
        bench.disarm()
    uids, _ = acknowledged(bench.work)
    bench.acknowledged |= set(uids)
    faults, lines = [], [line for line in end.stderr.splitlines() if line.strip()]
    if not 0 <= end.returncode <= 10:
        faults.append(f"it ends with {end.returncode}: {lines[-1:]}")
    if (end.returncode == 0) != (len(uids) == len(os.listdir(folder))) and end.returncode != 4:  # for the report itself
        faults.append(f"{len(uids)} sent, and yet it ends with {end.returncode}: {lines[-1:]}")
    if end.returncode > 0 and not any(line.startswith(("tn send: ", "tn: ")) for line in lines):
        faults.append(f"it ends with {end.returncode} and does not say why: {lines}")
    said = end.stdout.split(" sent")[0]
    if said and said != str(len(uids)):
        faults.append(f"it says {end.stdout!r}, and the report has {len(uids)}")
    if must_succeed and end.returncode:
        faults.append(f"it ends with {end.returncode}: {lines}")
    return faults + bench.faults(unlinks=False), end.returncode


def allocations_of_starting(bench):
    """How many there are before tn does anything. Nobody can answer for those before main, and CLI11 looks for an option
    in functions that may not throw."""
    bench.arm_memory(FOR_EVER, FOR_EVER)
    subprocess.run([bench.tn, "--version"], stdout=subprocess.DEVNULL, check=True,
                   env={**os.environ, "LD_PRELOAD": bench.library, "TN_DISK": f"{bench.work}/control"})
    bench.disarm()
    return bench.control.allocations


def sender(arguments):
    rows = [("EIO", errno.EIO, OPEN | READ | WRITE), ("EMFILE", errno.EMFILE, OPEN | CONNECT), ("ENOSPC", errno.ENOSPC, WRITE),
            ("ECONNREFUSED", errno.ECONNREFUSED, CONNECT), ("ECONNRESET", errno.ECONNRESET, SEND | RECEIVE),
            ("ENOMEM", errno.ENOMEM, CONNECT | SEND | RECEIVE | WAIT), ("EAGAIN", errno.EAGAIN, THREAD),
            ("EINTR", errno.EINTR, READ | WRITE | SEND | RECEIVE | WAIT), ("half of it", 0, READ | WRITE | SEND | RECEIVE)]
    total = failed = 0
    with Bench(arguments, "sender") as bench:
        bench.node = Node(bench.tn, bench.archive, [], bench.log)
        bench.control.folder = bench.work.encode()

        def run(name, count, arm, moments, must_succeed, *options):
            found, codes = [], set()
            for first in moments:
                folder = bench.make()
                arm(first)
                what, code = watch_sender(bench, folder, must_succeed, *options)
                found += [f"{first}: {fault}" for fault in what]
                codes.add(code)
                shutil.rmtree(folder)
            print(f"{name} of the {count} of tn send {' '.join(options)}: {len(moments)} moments, it ended with "
                  f"{', '.join(map(str, sorted(codes, key=str)))}; {len(found)} faults", flush=True)
            show(found)
            return len(moments), len(found)

        for options in ((), ("--parallel", "3"), ("--retry", "1")):
            for error, number, kinds in rows:
                for is_lasting in ((False, True) if error in ("EIO", "ECONNRESET", "ENOSPC") else (False,)):
                    bench.arm(kinds, 0, 0, 0)
                    folder = bench.make()
                    watch_sender(bench, folder, True, *options)
                    count = bench.control.calls
                    cases, faults = run(
                        f"{error} {'from the n-th on' if is_lasting else 'once'} of {name_of(kinds)}", count,
                        lambda first: bench.arm(kinds, first, FOR_EVER if is_lasting else first, number),
                        range(1, count + 2), error in ("EINTR", "half of it"), *options)
                    total, failed = total + cases, failed + faults
            for length in (1, 20):
                bench.arm_memory(FOR_EVER, FOR_EVER)
                watch_sender(bench, bench.make(), True, *options)
                count = bench.control.allocations
                cases, faults = run(f"no memory for {length} allocations", count,
                                    lambda first: bench.arm_memory(first, first + length - 1),
                                    range(allocations_of_starting(bench), count, max(1, count // arguments.moments)), False, *options)
                total, failed = total + cases, failed + faults
    print(f"sender: {total} moments, {failed} faults")
    return failed


class DiskModel:
    """What is certain to be on the disk, by what was done in which order. Inodes stand for the bytes of files."""

    def __init__(self, folder):
        self.folder = folder
        self.dirty = set()   # inodes whose bytes
        self.loose = set()   # and paths whose entries are not certain to be on the disk
        self.begun = {}      # both, when a thread began to synchronise

    def apply(self, thread, call, inode, path, second):
        if call == "create" or call == "mkdir":
            self.loose.add(path)
        elif call == "write":
            self.dirty.add(inode)
        elif call == "rename":
            self.loose.discard(path)
            self.loose.add(second)
        elif call == "begin-sync":
            self.begun[thread] = (set(self.dirty), set(self.loose))
        elif call in ("sync", "syncfs"):  # what was done meanwhile is not certain to be included
            dirty, loose = self.begun.pop(thread)
            self.dirty -= dirty & {inode} if call == "sync" else dirty
            self.loose -= {name for name in loose if call == "syncfs" or os.path.dirname(name) == path}

    def lacks(self, inode, path):
        """Why the file may be missing or damaged after a power cut."""
        reasons = ["its bytes are not on the disk"] if inode in self.dirty else []
        while len(path) > len(self.folder):
            if path in self.loose:
                reasons.append(f"the entry {os.path.relpath(path, self.folder)} is not on the disk")
            path = os.path.dirname(path)
        return reasons


def order(arguments):
    failed = 0
    with Bench(arguments, "order") as bench:
        # An archive that is new, and one to which all was sent before, by a node that waited for nothing.
        for mode, before, end in (("group", None, None), ("file", None, None), ("group", "none", signal.SIGKILL),
                                  ("file", "none", signal.SIGTERM)):
            bench.empty()
            log = f"{bench.work}/calls"
            folders = [bench.make((200, 3000, 600000, 100)) for _ in range(24)]
            if before:
                bench.start("--fsync", before, log=log)
                bench.send(f"{bench.work}/data")
                bench.node.end(end)
            bench.start("--fsync", mode, log=log)
            begin = os.path.getsize(log) if os.path.exists(log) and before else 0
            senders = [subprocess.Popen([bench.tn, "send", "-r", f"ANY@127.0.0.1:{bench.node.port}", *folders[i::6]],
                                        stdout=subprocess.DEVNULL) for i in range(6)]
            codes = [sender.wait(120) for sender in senders]
            faults = bench.restart(signal.SIGTERM)
            model, known, answers, place = DiskModel(bench.disk), {}, 0, 0
            with open(log) as lines:
                for line in lines:
                    place += len(line)
                    thread, call, inode, path, second = line.rstrip("\n").split("\t")
                    if call != "answer":
                        model.apply(thread, call, inode, path, second)
                        if (second or path).endswith(".dcm"):
                            known[thread] = (inode, second or path)  # what it is going to answer for
                    elif thread in known:
                        inode, path = known.pop(thread)
                        if place > begin:
                            answers += 1
                            faults += [f"{os.path.basename(path)} answered, but {reason}"
                                       for reason in model.lacks(inode, path)]
            os.remove(log)
            if any(codes) or answers != 24 * 4:
                faults.append(f"senders ended with {codes}, {answers} answers were seen")
            print(f"--fsync {mode}{f' after --fsync {before}, ended by signal {end}' if before else ''}: {answers} answers to "
                  f"6 senders, each after all that it needs is on the disk; {len(faults)} faults", flush=True)
            show(faults)
            failed += len(faults)
    return failed


def slow(arguments):
    failed = 0
    with Bench(arguments, "slow") as bench:
        for senders in (1, 8, 50):
            bench.empty()
            bench.start("--max-associations", "100")
            folders = [bench.make((20000,) * 4) for _ in range(senders)]
            begin = time.monotonic()
            bench.echo()
            limit = 1 + 5 * (time.monotonic() - begin)  # the machine may be busy with something else
            bench.control.sync_microseconds = 200000
            begin = time.monotonic()
            processes = [subprocess.Popen([bench.tn, "send", "-r", f"ANY@127.0.0.1:{bench.node.port}", folder],
                                          stdout=subprocess.DEVNULL) for folder in folders]
            echoes, faults = [], []
            while any(process.poll() is None for process in processes) and time.monotonic() - begin < 300:
                start = time.monotonic()
                if bench.echo():
                    faults.append("an echo failed")
                echoes.append(time.monotonic() - start)
                time.sleep(0.1)
            codes = [process.wait(1) for process in processes]
            seconds = time.monotonic() - begin
            bench.disarm()
            bench.acknowledged |= set(bench.data_sets)
            faults += [f"a sender ended with {code}" for code in codes if code]
            faults += [f"an echo took more than {limit:.1f} s"] if max(echoes) > limit else []
            faults += bench.restart(signal.SIGTERM) + bench.faults()
            print(f"fsync of 200 ms, {senders} senders of 4 instances, each a series of its own: {seconds:.1f} s, "
                  f"{4 * senders / seconds:.1f} instances/s, slowest echo {max(echoes) * 1000:.0f} ms; {len(faults)} faults "
                  f"{faults[:3]}", flush=True)
            failed += len(faults)
    return failed


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("tn")
    parser.add_argument("what", nargs="*", default=["errors", "replace", "locked", "memory", "sender", "order", "slow"])
    parser.add_argument("--moments", type=int, default=150, help="of each row of memory")
    parser.add_argument("--folder", default="/dev/shm" if os.access("/dev/shm", os.W_OK) else None,
                        help="where to work; in memory, as no fault needs a real disk")
    arguments = parser.parse_args()
    functions = {"errors": errors, "replace": replace, "locked": locked, "memory": memory, "sender": sender, "order": order, "slow": slow}
    failed = sum(functions[name](arguments) for name in arguments.what)
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
