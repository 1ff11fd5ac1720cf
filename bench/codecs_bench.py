#!/usr/bin/env python3
"""ConvertWorker against the reference command-line tools, in one run.

Per codec, the same input files are encoded (or decoded) by the worker and
by the reference tool, alternating, several rounds; the CPU time (user +
system) of each process is summed per side and the ratio printed. Then the
fixed cost of a worker: wall time from its start to the end of a file of
20 ms, whose one block is its first encoded block.

    bench/codecs_bench.py BUILD_DIR [--rounds N] [--seconds S]

The input: three tracks of the reference corpus's signal (make-corpus.sh
--one), 16-bit 44.1 kHz stereo, S seconds each (default 60).
"""
import argparse
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
CORPUS_TOOL = os.path.join(HERE, "make-corpus.sh")


def cpu_of(argv, **kwargs):
    """Runs argv; its CPU seconds (user + system) and wall seconds."""
    start = time.perf_counter()
    process = subprocess.Popen(argv, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, **kwargs)
    _, status, usage = os.wait4(process.pid, 0)
    wall = time.perf_counter() - start
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"failed ({process.returncode}): {' '.join(argv)}\n{process.stderr.read().decode(errors='replace')}")
    return usage.ru_utime + usage.ru_stime, wall


class Worker:
    def __init__(self, build, work):
        self.binary = os.path.join(build, "bin", "ConvertWorker")
        self.command = os.path.join(work, "command.qvcmd")

    def argv(self, source, target, encoder, options):
        text = (f' -infile="{source}" -outfile="{target}" -convert_to="{encoder}"'
                f' -evtquit="" -evtwatchdog="" -batchid="0" {options}')
        with open(self.command, "wb") as f:
            f.write(text.encode("utf-16-le"))
        return [self.binary, f"-qvcmd={self.command}"]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build")
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--seconds", type=int, default=60)
    args = parser.parse_args()
    work = tempfile.mkdtemp(prefix="qv-codecs-bench-")
    try:
        tracks = []
        for index in range(3):
            path = os.path.join(work, f"m{index:02d}.wav")
            subprocess.run(["bash", CORPUS_TOOL, "--one", str(index), str(args.seconds), path], check=True)
            tracks.append(path)
        for track in tracks:
            subprocess.run(["flac", "-5", "-f", "-s", "-o", track[:-4] + ".flac", track], check=True)
            subprocess.run(["lame", "--quiet", "-V2", track, track[:-4] + ".mp3"], check=True)
        worker = Worker(args.build, work)
        out = os.path.join(work, "out")
        cases = [
            ("FLAC -5", "FLAC", "-level=5", ".flac", lambda s, o: ["flac", "-5", "-f", "-s", "-o", o, s], 1.05),
            ("MP3 -V2", "MP3 (Lame)", "-quality=2", ".mp3", lambda s, o: ["lame", "--quiet", "-V2", s, o], 1.05),
            ("Vorbis q5", "Ogg Vorbis", "-quality=5", ".ogg", lambda s, o: ["oggenc", "-Q", "-q5", "-o", o, s], 1.05),
            ("Opus 128", "Opus", "-bitrate=128", ".opus",
             lambda s, o: ["opusenc", "--quiet", "--bitrate", "128", s, o], 1.05),
            ("FLAC decode", "Wave", "", ".wav", lambda s, o: ["flac", "-d", "-f", "-s", "-o", o, s], 1.05),
            ("MP3 decode", "Wave", "", ".wav", lambda s, o: ["mpg123", "-q", "-w", o, s], 1.05),
        ]
        decoded = {"FLAC decode": ".flac", "MP3 decode": ".mp3"}
        print(f"{args.rounds} rounds of {len(tracks)} tracks x {args.seconds} s; CPU seconds per round")
        print(f"{'codec':<12} {'ours':>8} {'reference':>10} {'ratio':>7}  target")
        failed = False
        for name, encoder, options, extension, reference, target in cases:
            ours_total = reference_total = 0.0
            for _ in range(args.rounds):
                for track in tracks:
                    source = track[:-4] + decoded[name] if name in decoded else track
                    ours_total += cpu_of(worker.argv(source, out + extension, encoder, options))[0]
                    reference_total += cpu_of(reference(source, out + "-ref" + extension))[0]
            ratio = ours_total / reference_total
            failed |= ratio > target
            print(f"{name:<12} {ours_total / args.rounds:8.3f} {reference_total / args.rounds:10.3f} "
                  f"{ratio:7.3f}  <= {target:.2f}{'' if ratio <= target else '  MISSED'}")
        # The fixed cost: a file of 20 ms is one block, so the whole run is
        # the way from the start to the first encoded block and out.
        short = os.path.join(work, "short.wav")
        subprocess.run(["sox", "-R", tracks[0], short, "trim", "0", "0.02"], check=True)
        walls = [cpu_of(worker.argv(short, out + ".flac", "FLAC", ""))[1] * 1000 for _ in range(20)]
        print(f"worker start to first encoded block (FLAC, whole run of a 20 ms file): "
              f"median {statistics.median(walls):.1f} ms, min {min(walls):.1f} ms")
        return 1 if failed else 0
    finally:
        shutil.rmtree(work, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
