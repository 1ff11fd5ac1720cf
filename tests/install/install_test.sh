#!/usr/bin/env bash
# Installs the build into a fresh prefix, as `cmake --install` does for a
# user, and checks what a desktop and a terminal find there: a valid
# desktop entry that opens audio files with the installed TrackConverter,
# its icon, qvt on the bin folder converting with the installed plug-ins,
# its manual page, and its bash completion of commands and of encoder and
# effect names (which hold blanks and parentheses).
# Usage: install_test.sh BUILD_DIR
set -euo pipefail
build=$1
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null

entry="$prefix/share/applications/quillotone-trackconverter.desktop"
desktop-file-validate "$entry"
grep -qx "Exec=$prefix/lib/quillotone/TrackConverter %F" "$entry" || { echo "Exec is wrong:"; grep Exec "$entry"; exit 1; }
grep -q "audio/flac;" "$entry" && grep -q "audio/mpeg;" "$entry" || { echo "audio types missing"; exit 1; }
[ -f "$prefix/share/icons/hicolor/scalable/apps/quillotone-trackconverter.svg" ] || { echo "no icon"; exit 1; }
[ -x "$prefix/lib/quillotone/TrackConverter" ] && [ -x "$prefix/lib/quillotone/ConvertWorker" ] || { echo "programs missing"; exit 1; }

[ -f "$prefix/lib/quillotone/decoder/Wave/id3.so" ] || { echo "the Wave decoder's ID3 reader is missing"; exit 1; }

# The installed program loads its windows from the forms module beside it
# (a window stage: no files given, so it would ask for them).
work="$prefix/work"
mkdir -p "$work"
LD_DEBUG=files LD_DEBUG_OUTPUT="$work/loader" QT_QPA_PLATFORM=offscreen QUILLOTONE_CONFIG_DIR="$work/config" \
  QUILLOTONE_NONINTERACTIVE=1 "$prefix/lib/quillotone/TrackConverter" </dev/null >/dev/null 2>&1 || true
cat "$work"/loader.* | grep -q "calling init: $prefix/lib/quillotone/libqv_forms.so" ||
  { echo "the installed program can't load its windows"; exit 1; }
rm -f "$work"/loader.*

# qvt through its link converts with the installed program folder.
export QUILLOTONE_CONFIG_DIR="$work/config" QUILLOTONE_NONINTERACTIVE=1
# In the sanitizer build, the resampling library's OpenMP runtime leaves a
# few bytes behind when it is unloaded; leaks are the suites' business,
# this test is about the installation.
export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0"
python3 - "$work/tone.wav" <<'PY'
import math, struct, sys, wave
with wave.open(sys.argv[1], "wb") as w:
    w.setnchannels(1); w.setsampwidth(2); w.setframerate(44100)
    w.writeframes(b"".join(struct.pack("<h", int(8000 * math.sin(i / 20))) for i in range(44100)))
PY
plugins=$("$prefix/bin/qvt" plugins)
grep -q "^  Wave" <<<"$plugins" || { echo "the installed plug-ins aren't found"; exit 1; }
"$prefix/bin/qvt" convert --to Wave --options '-bits="24"' --folder "$work/out" "$work/tone.wav" >/dev/null 2>&1 || true
[ -s "$work/out/tone.wav" ] || { echo "the installed qvt converted nothing"; exit 1; }
man="$prefix/share/man/man1/qvt.1"
grep -q '^\.TH QVT 1' "$man" && grep -q 'qvt convert' "$man" || { echo "no manual page"; exit 1; }
completion="$prefix/share/bash-completion/completions/qvt"
complete_words() {
  bash -c 'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _qvt; printf "%s\n" "${COMPREPLY[@]}"' \
    _ "$completion" "$prefix/bin/qvt" "$@"
}
check() {
  local expected=$1; shift
  local got
  got=$(complete_words "$@")
  [ "$got" = "$expected" ] || { echo "completing '$*' gave '$got', not '$expected'"; exit 1; }
}
check "convert" con
check 'MP3\ \(Lame\)' convert --to 'MP3\ ('
check 'Bit\ Depth=' convert --effect Bit
check "skip" convert --overwrite s
check "--recursive" convert --rec
check "convert" help conv
echo "installed, converted, manual and completion in place"
