#!/usr/bin/env python3
"""What is left of an archive when its node is killed (kill) or its disk is full (disk-full).

Four senders push instances to tn serve --store and note what was acknowledged. Afterwards, a node started anew, every
acknowledged instance must be there, whole and indexed; index and files must agree; no temporary file may be left; and
what is there without having been acknowledged may be no more than what each sender had on its way, and whole.

With --duplicates replace each instance is sent in VERSIONS versions, one after the other, which differ in the keys, too:
there must be the last that was acknowledged or the one after it, and the keys in the index must be those in its file.
"""
import argparse, collections, os, random, shutil, signal, sqlite3, struct, subprocess, sys, tempfile, time

SENDERS = 4
VERSIONS = 10
ROOT = "2.25.339282991848464000405290.8"
SECONDARY_CAPTURE, EXPLICIT_LE = "1.2.840.10008.5.1.4.1.1.7", "1.2.840.10008.1.2.1"


def element(tag, vr, value):
    if isinstance(value, str):
        value = value.encode()
        value += (b"\0" if vr == "UI" else b" ") * (len(value) % 2)
    header = struct.pack("<HH2s", tag >> 16, tag & 0xFFFF, vr.encode())
    return header + (struct.pack("<HI", 0, len(value)) if vr == "OB" else struct.pack("<H", len(value))) + value


def keys_of(sender, study, version):
    """Patient's Name and Instance Number."""
    return f"FAULT^{sender}.{study}^{version}", str(version)


def instance(sender, number, size, version=0, study=None):
    """A DICOM file (PS3.10 7) of one of the versions of an instance, with about so many bytes: UID, meta information,
    data set. A study has a patient of its own."""
    study = number // 50 if study is None else study
    name, instance_number = keys_of(sender, study, version)
    uid = f"{ROOT}.{sender}.{number}"
    meta = (element(0x00020001, "OB", b"\0\1") + element(0x00020002, "UI", SECONDARY_CAPTURE) +
            element(0x00020003, "UI", uid) + element(0x00020010, "UI", EXPLICIT_LE) +
            element(0x00020012, "UI", ROOT))
    data = (element(0x00080016, "UI", SECONDARY_CAPTURE) + element(0x00080018, "UI", uid) +
            element(0x00080060, "CS", "OT") + element(0x00100010, "PN", name) +
            element(0x00100020, "LO", f"F{sender}.{study}") + element(0x0020000D, "UI", f"{ROOT}.{sender}.0.{study}") +
            element(0x0020000E, "UI", f"{ROOT}.{sender}.0.{study}.1") + element(0x00200013, "IS", instance_number) +
            element(0x7FE00010, "OB", random.Random(uid).randbytes(size & ~1)))
    return uid, bytes(128) + b"DICM" + element(0x00020000, "UL", struct.pack("<I", len(meta))) + meta, data


def make_instances(folder, count, versions=1):
    """One folder with so many files a sender; returns the data sets of the versions of each instance, with their keys, by
    its UID. What has several versions is a study of its own, as all instances of a study have the keys of the first."""
    data_sets, sizes = {}, random.Random(1)
    for sender in range(1, SENDERS + 1):
        os.makedirs(f"{folder}/{sender}")
        for place in range(count):
            number, version = place // versions + 1, place % versions
            study = number if versions > 1 else number // 50
            uid, head, data = instance(sender, number, sizes.choice([200, 2000, 20000, 300000]), version, study)
            data_sets.setdefault(uid, []).append((data, keys_of(sender, study, version)))
            with open(f"{folder}/{sender}/{place:05d}.dcm", "wb") as file:
                file.write(head + data)
    return data_sets


def data_set_of(path):
    with open(path, "rb") as file:
        content = file.read()
    if content[128:132] != b"DICM":
        return None
    return content[144 + struct.unpack("<I", content[140:144])[0]:]


class Node:
    def __init__(self, tn, folder, options, log, environment=None):
        self.log = open(log, "w+")
        self.process = subprocess.Popen([tn, "serve", "--port", "0", "--bind", "127.0.0.1", "--store", folder, *options],
                                        stdout=self.log, stderr=self.log, env={**os.environ, **(environment or {})})
        for _ in range(600):
            with open(log) as file:
                text = file.read()
            if "listens on port " in text and text.endswith("\n"):
                self.port = text.split("listens on port ")[1].split()[0]
                return
            if self.process.poll() is not None:
                break
            time.sleep(0.02)
        raise RuntimeError("tn serve does not listen: " + text)

    def end(self, number):
        self.process.send_signal(number)
        code = self.process.wait(30)
        self.log.close()
        return code


def send(tn, port, data, work):
    """Starts the senders, each with a report."""
    return [subprocess.Popen([tn, "send", "-r", "--timeout", "10", "--report", f"{work}/report.{i}",
                              f"ANY@127.0.0.1:{port}", f"{data}/{i}"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            for i in range(1, SENDERS + 1)]


def acknowledged(work):
    """How often something was acknowledged for each UID, and what was refused, in words."""
    uids, refused = collections.Counter(), []
    for i in range(1, SENDERS + 1):
        if os.path.exists(f"{work}/report.{i}"):
            with open(f"{work}/report.{i}") as file:
                for line in file:
                    fields = line.rstrip("\n").split("\t")
                    if len(fields) == 4 and fields[2] == "sent":
                        uids[fields[1]] += 1
                    elif len(fields) == 4:
                        refused.append(fields[3])
            os.remove(f"{work}/report.{i}")
    return uids, refused


def leftovers_in(archive, associations):
    """The temporary files that should not be there: each association that goes on has made an empty one for its next
    instance."""
    names = os.listdir(f"{archive}/incoming")
    return [name for name in names if os.path.getsize(f"{archive}/incoming/{name}")] or names[associations:]


def faults_of(archive, data_sets, acknowledgements, most_unacknowledged):
    """What is wrong with the archive; and the UIDs that it has."""
    faults = []
    with sqlite3.connect(f"file:{archive}/index.sqlite?mode=ro", uri=True) as index:
        keys = {uid: (path, (name, number)) for uid, path, name, number in index.execute(
            "SELECT SOPInstanceUID, path, PatientName, InstanceNumber FROM instance JOIN series ON series = series.row "
            "JOIN study ON study = study.row JOIN patient ON patient = patient.row")}
    rows = {uid: path for uid, (path, _) in keys.items()}
    files = {os.path.relpath(os.path.join(folder, name), archive) for folder, _, names in os.walk(archive)
             for name in names if name.endswith(".dcm")}
    temporary = os.listdir(f"{archive}/incoming")
    if temporary:
        faults.append(f"temporary files: {temporary[:3]}")
    if os.path.exists(f"{archive}/damaged"):
        faults.append(f"damaged files: {os.listdir(f'{archive}/damaged')[:3]}")
    if set(rows.values()) != files:
        faults.append(f"index and files differ: {sorted(set(rows.values()) ^ files)[:3]}")
    lost = set(acknowledgements) - set(rows)
    if lost:
        faults.append(f"{len(lost)} acknowledged instances are lost: {sorted(lost)[:3]}")
    broken, stale, wrong = [], [], []
    for uid, path in rows.items():
        if path not in files:
            continue
        data = data_set_of(f"{archive}/{path}")
        version = next((i for i, (sent, _) in enumerate(data_sets[uid]) if sent == data), None)
        if version is None:
            broken.append(uid)
        elif not acknowledgements[uid] - 1 <= version <= acknowledgements[uid]:
            stale.append(f"{uid}: version {version + 1}, acknowledged {acknowledgements[uid]}")
        elif keys[uid][1] != data_sets[uid][version][1]:
            wrong.append(f"{uid}: {keys[uid][1]} for {data_sets[uid][version][1]}")
    if broken:
        faults.append(f"{len(broken)} instances are not what was sent: {broken[:3]}")
    if stale:
        faults.append(f"{len(stale)} instances are not what was acknowledged last: {stale[:3]}")
    if wrong:
        faults.append(f"{len(wrong)} instances have keys in the index that their files have not: {wrong[:3]}")
    extra = set(rows) - set(acknowledgements)
    if len(extra) > most_unacknowledged:
        faults.append(f"{len(extra)} instances are there that nobody was told of")
    return faults, set(rows)


def kill(arguments):
    work = tempfile.mkdtemp(prefix="tn-kill-", dir=arguments.folder)
    dice, total, extras, failed = random.Random(arguments.seed), 0, 0, 0
    try:
        replaces = arguments.duplicates == "replace"
        data_sets = make_instances(f"{work}/data", arguments.instances, VERSIONS if replaces else 1)
        for turn in range(1, arguments.rounds + 1):
            archive, log = f"{work}/archive", f"{work}/log"
            shutil.rmtree(archive, ignore_errors=True)
            node = Node(arguments.tn, archive, ["--fsync", arguments.fsync, "--duplicates", arguments.duplicates], log)
            senders = send(arguments.tn, node.port, f"{work}/data", work)
            time.sleep(dice.uniform(0.02, arguments.longest))
            node.end(signal.SIGKILL)
            for sender in senders:
                sender.wait(60)
            if turn % 5 == 0:  # the repair is interrupted, too
                again = subprocess.Popen([arguments.tn, "serve", "--port", "0", "--bind", "127.0.0.1", "--store", archive],
                                         stderr=subprocess.DEVNULL)
                time.sleep(dice.uniform(0.0, 0.1))
                again.kill()
                again.wait()
            acknowledgements, _ = acknowledged(work)
            Node(arguments.tn, archive, [], log).end(signal.SIGTERM)
            faults, there = faults_of(archive, data_sets, acknowledgements, SENDERS)
            total, extras = total + acknowledgements.total(), extras + len(there - set(acknowledgements))
            for fault in faults:
                print(f"round {turn}: {fault}")
            failed += bool(faults)
        print(f"kill -9 of tn serve --fsync {arguments.fsync} --duplicates {arguments.duplicates}, {SENDERS} senders, "
              f"{arguments.rounds} rounds: {total} instances were acknowledged, every one checked to be there, equal to what "
              f"was sent and indexed with its keys; {extras} more were stored whole before their senders could be told; "
              f"{failed} rounds with faults")
        return failed
    finally:
        shutil.rmtree(work, ignore_errors=True)


def disk_full(arguments):
    if os.geteuid() != 0:
        print("disk-full: skipped, it needs root to mount a small file system")
        return 0
    work = tempfile.mkdtemp(prefix="tn-full-", dir=arguments.folder)
    disk, failed = f"{work}/disk", 0
    os.mkdir(disk)
    if subprocess.run(["mount", "-t", "tmpfs", "-o", "size=16m", "tmpfs", disk], stderr=subprocess.DEVNULL).returncode:
        print("disk-full: skipped, a file system cannot be mounted here")
        shutil.rmtree(work)
        return 0
    try:
        data_sets = make_instances(f"{work}/data", arguments.instances)
        for name, size in (("ballast", 4 << 20), ("reserve", 1 << 20)):
            with open(f"{disk}/{name}", "wb") as file:
                file.write(bytes(size))
        node = Node(arguments.tn, f"{disk}/archive", ["--fsync", arguments.fsync], f"{work}/log")
        for sender in send(arguments.tn, node.port, f"{work}/data", work):
            sender.wait(120)
        first, refused = acknowledged(work)
        others = [text for text in refused if "A700H" not in text]
        leftovers = leftovers_in(f"{disk}/archive", SENDERS)
        print(f"disk full: {len(first)} instances acknowledged, {len(refused)} refused, of these "
              f"{len(refused) - len(others)} with A700H; {len(leftovers)} temporary files")
        if not refused or others or leftovers or not first:
            print(f"disk full: expected refusals with A700H only, and no temporary files; others: {others[:3]}")
            failed = 1
        os.remove(f"{disk}/ballast")
        for sender in send(arguments.tn, node.port, f"{work}/data", work):
            sender.wait(120)
        second, _ = acknowledged(work)
        print(f"disk full: with 4 MiB of space again {len(second - first)} more were acknowledged by the same node")
        if not second - first:
            print("disk full: nothing is stored when there is space again")
            failed = 1
        node.end(signal.SIGTERM)
        os.remove(f"{disk}/reserve")  # an index that is to be repaired needs a little
        Node(arguments.tn, f"{disk}/archive", [], f"{work}/log").end(signal.SIGTERM)
        faults, there = faults_of(f"{disk}/archive", data_sets, first | second, 0)
        for fault in faults:
            print(f"disk full: {fault}")
        print(f"disk full: {len(there)} instances in the archive, every acknowledged one checked to be there, equal to what "
              f"was sent and indexed, and none besides; {len(faults) + failed} faults")
        return failed + len(faults)
    finally:
        subprocess.run(["umount", "-l", disk])
        shutil.rmtree(work, ignore_errors=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("fault", choices=["kill", "disk-full"])
    parser.add_argument("tn")
    parser.add_argument("--rounds", type=int, default=100)
    parser.add_argument("--instances", type=int, default=300, help="of each sender")
    parser.add_argument("--longest", type=float, default=0.5, help="seconds until the node is killed")
    parser.add_argument("--fsync", default="group")
    parser.add_argument("--duplicates", choices=["refuse", "replace"], default="refuse")
    parser.add_argument("--seed", type=int, default=None)
    parser.add_argument("--folder", default=None, help="where to work; the usual place for temporary files")
    arguments = parser.parse_args()
    sys.exit(1 if (kill if arguments.fault == "kill" else disk_full)(arguments) else 0)


if __name__ == "__main__":
    main()
