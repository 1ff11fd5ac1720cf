#!/usr/bin/env python3
"""The Windows build under Wine against the Linux build, in one run.

    bench/wine_bench.py NATIVE_BUILD WIN64_BUILD [--corpus DIR] [--rounds N] [--encoder NAME]

Both convert the 48 tracks of the reference corpus (bench/make-corpus.sh,
made in DIR when it isn't there yet) to FLAC with their own qvt, in
alternating rounds; printed: the lowest wall time of each side and their
ratio (target <= 1.5: Wine's process start, paid once per worker, is the
expected cost). Wine runs in the Windows build's own prefix (or
$QV_WINEPREFIX); its server is started before timing and kept running, so
that its boot is not counted.
"""
import argparse
import os
import shutil
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
CORPUS_TOOL = os.path.join(HERE, "make-corpus.sh")
WINE_RUN = os.path.join(HERE, "..", "scripts", "wine-run")
TARGET = 1.5


def windows_path(path):
    return "Z:" + path.replace("/", "\\")


def timed(argv, env):
    start = time.perf_counter()
    run = subprocess.run(argv, env=env, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, errors="replace")
    took = time.perf_counter() - start
    if run.returncode != 0:
        raise RuntimeError(f"{argv[0]} ... ended with {run.returncode}: {run.stderr[-2000:]}")
    return took


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("native")
    parser.add_argument("windows")
    parser.add_argument("--corpus", default="/tmp/qv-corpus")
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--encoder", default="FLAC")
    args = parser.parse_args()
    if not os.path.exists(os.path.join(args.corpus, "SUMMARY.txt")):
        print(f"making the reference corpus in {args.corpus} ...", flush=True)
        subprocess.run(["bash", CORPUS_TOOL, args.corpus], check=True, stdout=subprocess.DEVNULL)
    big = os.path.join(args.corpus, "big")
    native = os.path.join(os.path.abspath(args.native), "bin", "qvt")
    windows = os.path.join(os.path.abspath(args.windows), "bin", "qvt.exe")
    work = tempfile.mkdtemp(prefix="qv-wine-bench-")
    env = dict(os.environ, QUILLOTONE_NONINTERACTIVE="1", QUILLOTONE_CONFIG_DIR=os.path.join(work, "config"))
    env.setdefault("QV_WINEPREFIX", os.path.join(os.path.abspath(args.windows), "..", "wineprefix"))
    try:
        # Wine's server and prefix up before the clock runs, and kept up
        # between the rounds (it would otherwise end 3 s after the last
        # Windows process and boot again in the next Wine round).
        subprocess.run([WINE_RUN, windows, "--version"], env=env, check=True, stdout=subprocess.DEVNULL)
        wine_env = dict(env, WINEPREFIX=env["QV_WINEPREFIX"])
        subprocess.run(["wineserver", "-k"], env=wine_env)
        subprocess.run(["wineserver", "-p"], env=wine_env)
        subprocess.run([WINE_RUN, windows, "--version"], env=env, check=True, stdout=subprocess.DEVNULL)
        best = {"linux": float("inf"), "wine": float("inf")}
        for _ in range(args.rounds):
            for side in ("linux", "wine"):
                out = os.path.join(work, "out")
                shutil.rmtree(out, ignore_errors=True)
                if side == "linux":
                    argv = [native, "convert", "-q", "--to", args.encoder, "--folder", out, big]
                else:
                    argv = [WINE_RUN, windows, "convert", "-q", "--to", args.encoder, "--folder",
                            windows_path(out), windows_path(big)]
                best[side] = min(best[side], timed(argv, env))
                made = len(os.listdir(out))
                if made != 48:
                    print(f"{side}: {made} outputs instead of 48", file=sys.stderr)
                    return 1
        ratio = best["wine"] / best["linux"]
        print(f"{args.encoder} on 48 tracks, best of {args.rounds}: Linux {best['linux']:.2f} s, "
              f"Windows under Wine {best['wine']:.2f} s, ratio {ratio:.3f} (target <= {TARGET})"
              f"{'' if ratio <= TARGET else '  MISSED'}")
        return 0 if ratio <= TARGET else 1
    finally:
        subprocess.run(["wineserver", "-k"], env=dict(env, WINEPREFIX=env["QV_WINEPREFIX"]))
        shutil.rmtree(work, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
