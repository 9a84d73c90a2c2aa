#!/usr/bin/env bash
# Regenerates data/codepages/ from the Windows oracle: builds
# codepage_tables.c with MinGW-w64, runs it under Wine once per code page,
# compacts the raw tables with cp_compact.py and checks the result against the
# raw output with cp_check.py before anything is replaced.
# Needs: wine (wine64), x86_64-w64-mingw32-gcc, python3.
#   apt-get install -y --no-install-recommends wine64 wine mingw-w64
# The Wine prefix lives outside the repository (ORACLE_WINEPREFIX, default
# $HOME/.cache/oracle-prefix, the same one run.sh uses) and is created on
# first use.  Set ORACLE_CP_RAW=<dir> to keep the raw probe output there.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
golden=$root/data/codepages

for tool in wine wineserver x86_64-w64-mingw32-gcc python3; do
    command -v "$tool" >/dev/null || {
        echo "run_codepages.sh: $tool not found (apt-get install wine64 wine mingw-w64)" >&2
        exit 1
    }
done

export WINEPREFIX=${ORACLE_WINEPREFIX:-$HOME/.cache/oracle-prefix}
export WINEARCH=win64 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
unset DISPLAY WAYLAND_DISPLAY
mkdir -p "$(dirname "$WINEPREFIX")"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
bin=$work/bin
raw=$work/raw
out=$work/out
mkdir -p "$bin" "$raw" "$out"

codepages=(874 932 936 949 950 1250 1251 1252 1253 1254 1255 1256 1257 1258)

x86_64-w64-mingw32-gcc -O1 -static -Wall -Werror -D__USE_MINGW_ANSI_STDIO=1 \
    -o "$bin/codepage_tables.exe" "$here/codepage_tables.c"

# The conversions take the code page as an argument, so the user locale does
# not enter the data; it is fixed anyway so that every run is the same.
probe() { # output-file args...
    local dest=$1; shift
    if ! env LC_ALL=en_US.UTF-8 wine "$bin/codepage_tables.exe" "$@" \
            >"$dest" 2>"$dest.stderr"; then
        echo "run_codepages.sh: codepage_tables $* failed" >&2
        cat "$dest.stderr" >&2
        exit 1
    fi
}

# The first run may have to create the prefix; run it alone so that two
# processes never race to do that.
probe "$out/utf8.tsv" utf8 -h

# Two code pages at a time (the probe and the compaction are single-threaded).
one() {
    probe "$raw/cp$1.raw" "$1" -h
    python3 "$here/cp_compact.py" "$raw/cp$1.raw" "$out/cp$1.txt"
}
pids=()
for cp in "${codepages[@]}"; do
    one "$cp" &
    pids+=($!)
    if (( ${#pids[@]} == 2 )); then
        wait "${pids[0]}"; wait "${pids[1]}"
        pids=()
    fi
done
for p in "${pids[@]}"; do wait "$p"; done

python3 "$here/cp_check.py" --raw "$raw" "$out"

mkdir -p "$golden"
for cp in "${codepages[@]}"; do
    mv "$out/cp$cp.txt" "$golden/cp$cp.txt"
done
mv "$out/utf8.tsv" "$golden/utf8.tsv"

if [[ -n ${ORACLE_CP_RAW:-} ]]; then
    mkdir -p "$ORACLE_CP_RAW"
    cp "$raw"/cp*.raw "$ORACLE_CP_RAW"/
fi

wineserver -k || true
du -cb "$golden"/* | tail -n 1
