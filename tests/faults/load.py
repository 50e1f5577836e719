#!/usr/bin/env python3
"""A storing node with many peers, and for a long time.

  crowd   50 senders at once: in each second every association gets answers; then the same while one more sends an object
          of 1 GiB
  soak    senders, askers and peers that die come and go at a low rate, for --seconds: memory, descriptors and threads of the
          node stay as they are after the first quarter, and nothing is lost

Usage: load.py TN [crowd|soak ...]
"""
import argparse, os, random, shutil, signal, socket, subprocess, sys, tempfile, time

from faults import ROOT, Node, data_set_of, element, instance

GIB = 1 << 30


def make(folder, sender, count, size, data_sets=None):
    os.makedirs(folder, exist_ok=True)
    for number in range(count):
        uid, head, data = instance(sender, number + 1, size)
        if data_sets is not None:
            data_sets[uid] = data
        with open(f"{folder}/{number:05d}.dcm", "wb") as file:
            file.write(head + data)


def make_big(path):
    """An instance with 1 GiB of pixels, a file with a hole."""
    _, head, data = instance(999999, 1, 0)
    pixels = element(0x7FE00010, "OB", b"")
    with open(path, "wb") as file:
        file.write(head + data[:-len(pixels)] + pixels[:-4] + GIB.to_bytes(4, "little"))
        file.truncate(file.tell() + GIB)


class Tail:
    """When lines were added to a report, as far as somebody looks."""

    def __init__(self, path):
        self.path, self.file, self.lines, self.times = path, None, 0, []

    def look(self, now):
        if self.file is None and os.path.exists(self.path):
            self.file = open(self.path, "rb")
        new = self.file.read().count(b"\n") if self.file else 0
        self.lines += new
        self.times += [now] * new


def crowd(arguments):
    work = tempfile.mkdtemp(prefix="tn-crowd-", dir=arguments.folder)
    failed, node = 0, None
    try:
        for i in range(arguments.senders):
            make(f"{work}/data/{i}", i + 1, arguments.instances, arguments.size)
        make_big(f"{work}/big.dcm")
        for has_big in (False, True):
            shutil.rmtree(f"{work}/archive", ignore_errors=True)
            node = Node(arguments.tn, f"{work}/archive", ["--max-associations", "100", "--fsync", arguments.fsync],
                        f"{work}/log")
            tails = [Tail(f"{work}/report.{i}") for i in range(arguments.senders)]
            processes = [subprocess.Popen([arguments.tn, "send", "-r", "--report", tail.path, f"ANY@127.0.0.1:{node.port}",
                                           f"{work}/data/{i}"], stdout=subprocess.DEVNULL)
                         for i, tail in enumerate(tails)]
            big, begun, big_seconds, begin = None, None, None, time.monotonic()
            while any(process.poll() is None for process in processes) or (big and big_seconds is None):
                now = time.monotonic()
                for tail in tails:
                    tail.look(now)
                if has_big and begun is None and min(tail.lines for tail in tails) > arguments.instances // 5:
                    big = subprocess.Popen([arguments.tn, "send", f"ANY@127.0.0.1:{node.port}", f"{work}/big.dcm"],
                                           stdout=subprocess.DEVNULL)
                    begun = now
                if big and big_seconds is None and big.poll() is not None:
                    big_seconds = now - begun
                time.sleep(0.02)
            for tail in tails:
                tail.look(time.monotonic())
                tail.file.close()
                os.remove(tail.path)
            first = max(tail.times[0] for tail in tails)   # from when all have begun
            last = min(tail.times[-1] for tail in tails)   # until the first has ended
            counts = [[sum(first + second <= moment < first + second + 1 for moment in tail.times) for tail in tails]
                      for second in range(int(last - first))]
            gaps = [max(after - before for before, after in zip(tail.times, tail.times[1:])) for tail in tails]
            codes = [process.returncode for process in processes] + ([big.returncode] if big else [])
            faults = [f"a sender ended with {code}" for code in codes if code]
            faults += [f"second {i}: {row.count(0)} associations without an answer" for i, row in enumerate(counts)
                       if 0 in row]
            faults += [] if len(counts) >= 3 else ["too short to say anything; --instances N"]
            faults += [f"{tail.lines} answers" for tail in tails if tail.lines != arguments.instances]
            print(f"--fsync {arguments.fsync}, {arguments.senders} senders of {arguments.instances} instances of "
                  f"{arguments.size} bytes" + (f", and one of 1 GiB in {big_seconds:.1f} s" if has_big else "") +
                  f": all at once for {last - first:.1f} s; longest wait of any of them {max(gaps):.2f} s; {len(faults)} faults")
            for i, row in enumerate(counts):
                print(f"   second {i}: {sum(row)} answers, of each association {min(row)} to {max(row)}")
            for fault in faults[:5]:
                print(f"   {fault}", flush=True)
            failed += len(faults)
            node.end(signal.SIGTERM)
            node = None
        return failed
    finally:
        if node:
            node.end(signal.SIGKILL)
        shutil.rmtree(work, ignore_errors=True)


def resources(process):
    with open(f"/proc/{process}/status") as file:
        status = dict(line.split(":", 1) for line in file)
    return int(status["VmRSS"].split()[0]), int(status["Threads"]), len(os.listdir(f"/proc/{process}/fd"))


def soak(arguments):
    work = tempfile.mkdtemp(prefix="tn-soak-", dir=arguments.folder)
    node, dice, data_sets, samples, actions = None, random.Random(1), {}, [], {}
    try:
        node = Node(arguments.tn, f"{work}/archive", [], f"{work}/log")
        peer = f"ANY@127.0.0.1:{node.port}"
        make(f"{work}/big", 999998, 1, 30000000, {})
        make(f"{work}/many", 999997, 6000, 200, data_sets)  # enough to fill the caches of the index
        subprocess.run([arguments.tn, "send", "-r", peer, f"{work}/many"], check=True, stdout=subprocess.DEVNULL)
        begin, turn, known, running, faults = time.monotonic(), 0, [], [], []
        quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        while time.monotonic() - begin < arguments.seconds:
            action = dice.choice(["store", "store", "store", "again", "find", "echo", "die", "close", "rubbish"])
            actions[action] = actions.get(action, 0) + 1
            if action == "store":
                turn += 1
                make(f"{work}/data/{turn}", turn, 4, dice.choice([500, 20000, 500000]), data_sets)
                known.append(turn)
            if action in ("store", "again") and known:
                which = known[-1] if action == "store" else dice.choice(known[-50:])
                running.append((action, subprocess.Popen([arguments.tn, "send", "-r", peer, f"{work}/data/{which}"], **quiet)))
            elif action == "find":
                running.append((action, subprocess.Popen([arguments.tn, "find", peer, "-k", f"PatientID=F{max(turn, 1)}"],
                                                         **quiet)))
            elif action == "echo":
                running.append((action, subprocess.Popen([arguments.tn, "echo", peer], **quiet)))
            elif action == "die":  # in the middle of an object
                sender = subprocess.Popen([arguments.tn, "send", "-r", peer, f"{work}/big"], **quiet)
                time.sleep(dice.uniform(0.005, 0.03))
                sender.kill()
                sender.wait()
            else:
                with socket.create_connection(("127.0.0.1", int(node.port))) as connection:
                    connection.sendall(dice.randbytes(100) if action == "rubbish" else b"")
            for name, process in running:
                if process.poll() not in (None, 0):
                    faults.append(f"{name} ended with {process.returncode}")
            running = [(name, process) for name, process in running if process.poll() is None]
            if len(samples) <= (time.monotonic() - begin) / (arguments.seconds / 20):
                for _, process in running:
                    process.wait(60)
                time.sleep(0.3)
                samples.append(resources(node.process.pid))
            time.sleep(1 / arguments.rate)
        for _, process in running:
            process.wait(60)
        time.sleep(0.5)
        samples.append(resources(node.process.pid))
        early = [max(values) for values in zip(*samples[len(samples) // 4:len(samples) // 2])]
        late = [max(values) for values in zip(*samples[-len(samples) // 4:])]
        for name, before, after, slack in zip(("KiB of memory", "threads", "descriptors"), early, late,
                                              (max(1024, early[0] // 20), 0, 0)):
            if after > before + slack:
                faults.append(f"{name}: {before}, in the end {after}")
        code = node.end(signal.SIGTERM)
        node = None
        faults += [f"the node ended with {code}"] if code else []
        for uid, data in data_sets.items():
            sender = uid[len(ROOT) + 1:].split(".")[0]
            group = int(uid.rsplit(".", 1)[1]) // 50  # as instance() puts them into studies
            path = f"{work}/archive/{ROOT}.{sender}.0.{group}/{ROOT}.{sender}.0.{group}.1/{uid}.dcm"
            if not os.path.exists(path) or data_set_of(path) != data:
                faults.append(f"{uid} is lost or damaged")
        if os.listdir(f"{work}/archive/incoming"):
            faults.append("temporary files")
        print(f"soak of {arguments.seconds:.0f} s, {actions}, {len(data_sets)} instances stored: KiB of memory, threads, "
              f"descriptors {samples[0]} at first, {tuple(early)} in the second quarter, {tuple(late)} in the last; "
              f"{len(faults)} faults {faults[:3]}", flush=True)
        return len(faults)
    finally:
        if node:
            node.end(signal.SIGKILL)
        shutil.rmtree(work, ignore_errors=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("tn")
    parser.add_argument("what", nargs="*", default=["crowd", "soak"])
    parser.add_argument("--senders", type=int, default=50)
    parser.add_argument("--instances", type=int, default=1000, help="of each sender of the crowd")
    parser.add_argument("--size", type=int, default=10000, help="of each of these, in bytes")
    parser.add_argument("--fsync", default="group", help="of the node of the crowd")
    parser.add_argument("--seconds", type=float, default=30, help="of the soak")
    parser.add_argument("--rate", type=float, default=4, help="of the soak: events in a second")
    parser.add_argument("--folder", default=None, help="where to work; the usual place for temporary files")
    arguments = parser.parse_args()
    sys.exit(1 if sum({"crowd": crowd, "soak": soak}[name](arguments) for name in arguments.what) else 0)


if __name__ == "__main__":
    main()
