#!/usr/bin/env python3
"""Whole batches through qvt against the reference tools run by xargs on
two processes, in one run, alternating, with the figures as ratios.

    bench/batch_bench.py BUILD_DIR [--corpus DIR] [--rounds N] [--sources N] [--quick] [--window]

The corpus is the reference one (bench/make-corpus.sh, made in
DIR when it isn't there yet): 48 tracks of 16-bit 44.1 kHz stereo, 30 s to
4 min, about 90 minutes in all, and 400 tracks of 2 s.

Printed per encoder on the 48 tracks (the lowest wall time of the rounds):
  - wall time of qvt and of the reference, and their ratio (target <= 1.10);
  - the two-core limit, the workers' CPU time over 2, and the ratio of the
    wall time to it (target <= 1.15);
  - TrackConverter's own CPU time as a share of the workers' (<= 2 %; with
    --window, the conversion shown in its window on Qt's offscreen
    platform, <= 3 %).
On the 400 short tracks: the fixed cost per file, the time a core spends
on a file beyond encoding it (start, plug-in load, the wait for the
scheduler; target <= 10 ms). Then the scheduler seen from outside, on one
more FLAC run of the 48 tracks recorded with the kernel's process events
(perf, tracepoints only): the idle gap between one worker's end and the
start of the next job on its core (a new worker's exec, or the release of
one started ahead), and the time from the last worker's end to qvt's exit
(target <= 50 ms). Then the worker's own start: from exec to the open of
its output, once source and encoder are ready, ConvertWorker against flac
on the same 2 s file (perf trace; target within 3 ms), and beside it the
whole run, exec to exit. Last,
TrackConverter's peak resident size for a batch of N sources (10,000
short generated files; target <= 150 MB).

CPU times come from the kernel: qvt's wait gives its whole tree (qvt,
TrackConverter and the workers it reaped); TrackConverter's and qvt's own
shares are read from /proc while they run and taken off.
"""
import argparse
import os
import re
import statistics
import shutil
import struct
import subprocess
import sys
import tempfile
import threading
import time

HERE = os.path.dirname(os.path.abspath(__file__))
CORPUS_TOOL = os.path.join(HERE, "make-corpus.sh")
TICK = os.sysconf("SC_CLK_TCK")


def proc_stat(pid):
    """(own CPU seconds, peak resident KiB) of a live process, or None."""
    try:
        with open(f"/proc/{pid}/stat") as f:
            fields = f.read().rsplit(")", 1)[1].split()
        with open(f"/proc/{pid}/status") as f:
            peak = next((int(line.split()[1]) for line in f if line.startswith("VmHWM:")), 0)
    except (OSError, StopIteration, IndexError, ValueError):
        return None
    return (int(fields[11]) + int(fields[12])) / TICK, peak


def children_of(pid):
    try:
        with open(f"/proc/{pid}/task/{pid}/children") as f:
            return [int(p) for p in f.read().split()]
    except OSError:
        return []


class Watch:
    """Samples a qvt run and its TrackConverter until qvt ends."""

    def __init__(self, pid):
        self.pid = pid
        self.qvt_cpu = 0.0
        self.tc_cpu = 0.0
        self.tc_peak_kib = 0
        self.tc_pid = None
        self.done = False
        self.thread = threading.Thread(target=self.run)
        self.thread.start()

    def run(self):
        while not self.done:
            sample = proc_stat(self.pid)
            if sample:
                self.qvt_cpu = sample[0]
            if self.tc_pid is None:
                for child in children_of(self.pid):
                    try:
                        with open(f"/proc/{child}/comm") as f:
                            if f.read().strip() == "TrackConverter":
                                self.tc_pid = child
                    except OSError:
                        pass
            if self.tc_pid is not None:
                sample = proc_stat(self.tc_pid)
                if sample:
                    self.tc_cpu, self.tc_peak_kib = sample[0], max(self.tc_peak_kib, sample[1])
            time.sleep(0.02)

    def stop(self):
        self.done = True
        self.thread.join()


class Result:
    def __init__(self, wall, cpu, tc_cpu=0.0, tc_peak_kib=0, qvt_cpu=0.0):
        self.wall, self.cpu, self.tc_cpu, self.tc_peak_kib = wall, cpu, tc_cpu, tc_peak_kib
        self.whole_cpu = cpu + tc_cpu + qvt_cpu  # the whole tree


def run_tree(argv, env=None, watch=False, log=None):
    """Runs argv to its end; wall seconds and the CPU seconds of its tree."""
    start = time.perf_counter()
    with open(log or os.devnull, "wb") as out:
        process = subprocess.Popen(argv, stdout=out, stderr=subprocess.STDOUT, env=env)
        watcher = Watch(process.pid) if watch else None
        _, status, usage = os.wait4(process.pid, 0)
    wall = time.perf_counter() - start
    if watcher:
        watcher.stop()
    code = os.waitstatus_to_exitcode(status)
    if code != 0:
        tail = open(log, errors="replace").read()[-3000:] if log else ""
        sys.exit(f"failed ({code}): {' '.join(argv[:6])} ...\n{tail}")
    cpu = usage.ru_utime + usage.ru_stime
    if not watcher:
        return Result(wall, cpu)
    # The workers: the tree less qvt and TrackConverter themselves.
    return Result(wall, cpu - watcher.qvt_cpu - watcher.tc_cpu, watcher.tc_cpu, watcher.tc_peak_kib, watcher.qvt_cpu)


class Bench:
    def __init__(self, build, work, window=False):
        self.qvt = os.path.join(build, "bin", "qvt")
        self.window = ["--window"] if window else []
        self.work = work
        self.env = dict(os.environ)
        # Settings of the benchmark's own, never the user's.
        self.env["QUILLOTONE_CONFIG_DIR"] = os.path.join(work, "config")
        self.env["XDG_DATA_HOME"] = os.path.join(work, "data")
        self.env["QUILLOTONE_NONINTERACTIVE"] = "1"
        if window:
            self.env["QT_QPA_PLATFORM"] = "offscreen"
            # The window closes by itself at the end.
            subprocess.run([self.qvt, "settings", "set", "", "qvtSkipedFinish", "1", "--number"],
                           env=self.env, check=True)
        self.runs = 0

    def fresh(self, name):
        path = os.path.join(self.work, name)
        shutil.rmtree(path, ignore_errors=True)
        os.makedirs(path)
        return path

    def ours(self, encoder, folder):
        out = self.fresh("out")
        self.runs += 1
        log = os.path.join(self.work, f"qvt-{self.runs}.log")
        return run_tree([self.qvt, "convert", *self.window, "--to", encoder, "--folder", out, folder],
                        env=self.env, watch=True, log=log)

    def reference(self, command, folder):
        out = self.fresh("out")
        script = (f"find '{folder}' -name '*.wav' -print0 | sort -z | "
                  f"xargs -0 -P2 -n1 sh -c '{command}' sh")
        return run_tree(["sh", "-c", script], env=dict(self.env, OUT=out))


def schedule_figures(bench, folder):
    """(median gap ms, 90th percentile gap ms, end of run ms) of one qvt
    run, from the kernel's events; None without perf.

    A gap runs from a worker's end to the start of the job that takes its
    core: the exec of a worker started then, or the one-byte write with
    which TrackConverter releases a worker that was started ahead and
    waits (its standby). The last two ends start nothing."""
    if shutil.which("perf") is None:
        return None
    data = os.path.join(bench.work, "sched.data")
    out = bench.fresh("out")
    recorded = subprocess.run(["perf", "record", "-q", "-e", "sched:sched_process_exec", "-e",
                               "sched:sched_process_exit", "-e", "syscalls:sys_enter_write", "--filter", "count == 1",
                               "-o", data, "--", bench.qvt, "convert", "--to", "FLAC", "--folder", out, folder],
                              env=bench.env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    if recorded.returncode != 0:
        return None
    script = subprocess.run(["perf", "script", "-i", data], capture_output=True, text=True).stdout
    starts, ends, qvt_end = [], [], []
    for line in script.splitlines():
        m = re.match(r"\s*(.+?)\s+\d+\s+\[\d+\]\s+([\d.]+):\s+(\S+):\s+(.*)", line)
        if not m:
            continue
        comm, t, event, rest = m.group(1).strip(), float(m.group(2)), m.group(3), m.group(4)
        if event == "sched:sched_process_exec" and "ConvertWorker" in rest:
            starts.append(t)
        elif event == "syscalls:sys_enter_write" and comm == "TrackConverter":
            starts.append(t)
        elif event == "sched:sched_process_exit" and "group_dead=true" in rest:
            if "comm=ConvertWorker" in rest:
                ends.append(t)
            elif "comm=qvt" in rest:
                qvt_end.append(t)
    starts.sort()
    ends.sort()
    gaps = []
    for end in ends[:-2]:
        following = [t for t in starts if t >= end]
        if following:
            gaps.append((following[0] - end) * 1000)
    if len(gaps) < 2 or not qvt_end:
        return None
    gaps.sort()
    return statistics.median(gaps), gaps[int(len(gaps) * 0.9)], (qvt_end[-1] - ends[-1]) * 1000


def encoder_open(line):
    """True for a traced openat that creates a file without EXCL or NOFOLLOW."""
    match = re.search(r"flags: (\S+)", line)
    flags = match.group(1).rstrip(",").split("|") if match else []
    return "CREAT" in flags and "EXCL" not in flags and "NOFOLLOW" not in flags


def trace_ms(argv, output, env, rounds=15):
    """Medians of ms from exec to the output's open (the first openat with
    CREAT, but neither EXCL, with which the worker reserves the temporary
    output's name, nor NOFOLLOW, with which the settings store opens its
    files: the file the encoder writes, opened once the source is read and
    the encoder set up, the moment its first block can be encoded) and from
    exec to the end of the process (its last task's exit), from the
    kernel's events (perf trace: no stops, unlike a ptrace tool). The open,
    not the first write: an encoder that gathers its output writes nothing
    until much later."""
    trace = output + ".trace"
    opens, ends = [], []
    for _ in range(rounds):
        if os.path.exists(output):
            os.remove(output)
        subprocess.run(["perf", "trace", "-T", "-e", "openat", "-e", "sched:sched_process_exec", "-e",
                        "sched:sched_process_exit", "-o", trace, *argv],
                       env=env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        start = opened = end = None
        for line in open(trace, errors="replace"):
            fields = line.split()
            if not fields:
                continue
            if start is None and "sched:sched_process_exec" in line:
                start = float(fields[0])
            elif start is not None and "sched:sched_process_exit" in line:
                end = float(fields[0])
            elif start is not None and opened is None and "openat(" in line and encoder_open(line):
                opened = float(fields[0])
        if start is not None and opened is not None and end is not None:
            opens.append(opened - start)
            ends.append(end - start)
    return (statistics.median(opens), statistics.median(ends)) if opens else None


def worker_start(bench, build, source):
    """((ConvertWorker open ms, whole run ms), (flac open ms, whole run ms))
    on the same short file."""
    if shutil.which("perf") is None:
        return None
    folder = bench.fresh("start")
    output = os.path.join(folder, "out.flac")
    command = os.path.join(folder, "command")
    with open(command, "wb") as f:
        f.write(f' -infile="{source}" -outfile="{output}" -convert_to="FLAC" -batchid="0" '.encode("utf-16-le"))
    worker = os.path.join(build, "bin", "ConvertWorker")
    ours = trace_ms([worker, f"-qvcmd={command}"], output, bench.env)
    theirs = trace_ms(["flac", "-5", "-s", "-f", "-o", output, source], output, bench.env)
    return None if ours is None or theirs is None else (ours, theirs)


def write_wave(path, frames, seed):
    data = bytearray()
    for i in range(frames):
        v = ((i * (seed % 97 + 13)) % 2000) - 1000
        data += struct.pack("<hh", v, -v)
    header = b"RIFF" + struct.pack("<I", 36 + len(data)) + b"WAVEfmt " + struct.pack(
        "<IHHIIHH", 16, 1, 2, 44100, 44100 * 4, 4, 16) + b"data" + struct.pack("<I", len(data))
    with open(path, "wb") as f:
        f.write(header + data)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build")
    parser.add_argument("--corpus", default="/tmp/qv-corpus")
    parser.add_argument("--rounds", type=int, default=2)
    parser.add_argument("--sources", type=int, default=10000)
    parser.add_argument("--quick", action="store_true", help="FLAC and the short tracks only")
    parser.add_argument("--window", action="store_true", help="the conversion in its window (offscreen)")
    args = parser.parse_args()
    build = os.path.abspath(args.build)
    if not os.path.exists(os.path.join(args.corpus, "SUMMARY.txt")):
        print(f"making the reference corpus in {args.corpus} ...", flush=True)
        subprocess.run(["bash", CORPUS_TOOL, args.corpus], check=True, stdout=subprocess.DEVNULL)
    big = os.path.join(args.corpus, "big")
    small = os.path.join(args.corpus, "small")
    work = tempfile.mkdtemp(prefix="qv-batch-bench-")
    failed = False

    def verdict(value, target):
        nonlocal failed
        failed |= value > target
        return "" if value <= target else "  MISSED"

    try:
        bench = Bench(build, work, args.window)
        share_target = 3.0 if args.window else 2.0
        cases = [
            ("FLAC", 'exec flac -5 -s -f -o "$OUT/$(basename "$1" .wav).flac" "$1"'),
            ("MP3 (Lame)", 'exec lame --quiet -V2 "$1" "$OUT/$(basename "$1" .wav).mp3"'),
        ]
        audio_s = sum((os.path.getsize(os.path.join(big, n)) - 44) / (44100 * 4) for n in os.listdir(big))
        print(f"48 tracks ({audio_s / 60:.0f} min), best of {args.rounds} alternating rounds; seconds")
        print(f"{'encoder':<11} {'qvt':>7} {'ref':>7} {'ratio':>6} {'limit':>7} {'/limit':>7} {'TC cpu':>7}")
        for encoder, command in cases[:1] if args.quick else cases:
            ours, refs = [], []
            for _ in range(args.rounds):
                ours.append(bench.ours(encoder, big))
                refs.append(bench.reference(command, big))
            best = min(ours, key=lambda r: r.wall)
            ref = min(refs, key=lambda r: r.wall)
            # FLAC: no slower than the shell loop; Lame: faster than it.
            wall_target, limit_target = (1.00, 1.05) if encoder == "FLAC" else (0.98, 1.15)
            limit = best.cpu / 2
            ratio = best.wall / ref.wall
            to_limit = best.wall / limit
            share = best.tc_cpu / best.cpu * 100
            print(f"{encoder:<11} {best.wall:7.2f} {ref.wall:7.2f} {ratio:6.3f} {limit:7.2f} {to_limit:7.3f} "
                  f"{share:6.2f}%  (targets {wall_target:.2f}, {limit_target:.2f}, {share_target:.0f} %)"
                  f"{verdict(ratio, wall_target)}{verdict(to_limit, limit_target)}{verdict(share, share_target)}")
            # Where a wall-time difference comes from: work, or cores idle.
            print(f"{'':<11} CPU of the whole run: qvt {best.whole_cpu:.2f} s, reference {ref.whole_cpu:.2f} s "
                  f"({best.whole_cpu / ref.whole_cpu:.3f}); a core idle: qvt {2 * best.wall - best.whole_cpu:.2f} s, "
                  f"reference {2 * ref.wall - ref.whole_cpu:.2f} s")
            if encoder == "FLAC":
                flac_cpu_per_audio_s = best.cpu / audio_s

        # Short files: a core's time per file, less the encoding itself
        # (the long tracks' CPU per second of audio, times 2 s).
        ours = min((bench.ours("FLAC", small) for _ in range(args.rounds)), key=lambda r: r.wall)
        ref = min((bench.reference(cases[0][1], small) for _ in range(args.rounds)), key=lambda r: r.wall)
        per_file = 2 * ours.wall / 400 * 1000
        encode = flac_cpu_per_audio_s * 2 * 1000
        ref_per_file = 2 * ref.wall / 400 * 1000
        print(f"400 tracks of 2 s to FLAC: qvt {ours.wall:.2f} s, reference {ref.wall:.2f} s; per file and core "
              f"{per_file:.1f} ms (reference {ref_per_file:.1f} ms), of which encoding {encode:.1f} ms: "
              f"fixed cost {per_file - encode:.1f} ms per file (target 10 ms){verdict(per_file - encode, 10)}")

        figures = schedule_figures(bench, big)
        if figures is None:
            print("idle gap and end of run: not measured (needs perf and the kernel's tracepoints)")
        else:
            gap, gap90, end = figures
            print(f"scheduler, 48 tracks to FLAC: idle gap between jobs median {gap:.2f} ms (90 % within "
                  f"{gap90:.2f} ms); last worker's end to qvt's exit {end:.1f} ms (target 50 ms){verdict(end, 50)}")
        start = worker_start(bench, build, os.path.join(small, sorted(os.listdir(small))[0]))
        if start is None:
            print("worker start: not measured (needs perf)")
        else:
            (ours_ms, ours_run), (flac_ms, flac_run) = start
            print(f"worker start, exec to its output's open on a 2 s file: ConvertWorker {ours_ms:.2f} ms, "
                  f"flac {flac_ms:.2f} ms, difference {ours_ms - flac_ms:.2f} ms (target 3 ms)"
                  f"{verdict(ours_ms - flac_ms, 3.0)}; the whole run: {ours_run:.2f} ms and {flac_run:.2f} ms")

        if args.quick:
            return 1 if failed else 0
        # Memory: a batch of many tiny sources, converted to Wave.
        many = bench.fresh("many")
        for i in range(args.sources):
            write_wave(os.path.join(many, f"s{i:05d}.wav"), 441, i)
        result = bench.ours("Wave", many)
        peak = result.tc_peak_kib / 1024
        print(f"{args.sources} sources to Wave: {result.wall:.1f} s; TrackConverter peak resident "
              f"{peak:.1f} MB (target 150 MB){verdict(peak, 150)}")
        return 1 if failed else 0
    finally:
        shutil.rmtree(work, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
