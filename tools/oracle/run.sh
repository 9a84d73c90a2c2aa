#!/usr/bin/env bash
# Regenerates every golden file in tests/golden/ from the Windows oracle:
# builds the probes in this directory with MinGW-w64 and runs them under Wine,
# once per locale. Needs: wine (wine64), x86_64-w64-mingw32-gcc.
#   apt-get install -y --no-install-recommends wine64 wine mingw-w64
# The Wine prefix lives outside the repository (ORACLE_WINEPREFIX, default
# $HOME/.cache/oracle-prefix) and is created on first use.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
golden=$root/tests/golden

for tool in wine wineserver x86_64-w64-mingw32-gcc; do
    command -v "$tool" >/dev/null || {
        echo "run.sh: $tool not found (apt-get install wine64 wine mingw-w64)" >&2
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
mkdir -p "$bin" "$work/out"

build() { # name libs...
    local name=$1; shift
    x86_64-w64-mingw32-gcc -O1 -static -Wall -Werror -D__USE_MINGW_ANSI_STDIO=1 \
        -o "$bin/$name.exe" "$here/$name.c" "$@"
}

# The builds are independent; running them side by side halves the time.
build number_to_text -loleaut32 &
build format -loleaut32 &
build path_compact -lshlwapi &
build locale_numbers &
build locale_info &
for job in $(jobs -p); do wait "$job"; done

# wine <locale> <exe> [args]: one probe run with the given user locale.
# Wine prints its own start-up chatter on stderr; keep it out of the data
# but show it if the probe fails.
probe() {
    local loc=$1 exe=$2; shift 2
    if ! env LC_ALL="$loc" wine "$bin/$exe.exe" "$@" 2>"$work/stderr"; then
        echo "run.sh: $exe under $loc failed" >&2
        cat "$work/stderr" >&2
        exit 1
    fi
}

# Wine rewrites "HKCU\Control Panel\International" only when the process
# locale differs from the previous run's.  Running once under another locale
# first guarantees that no user override left in the prefix leaks into the
# data.
reset_locale_for() {
    local other=fr_FR.UTF-8
    probe "$other" locale_numbers >/dev/null
}

locales=(en_US.UTF-8 de_DE.UTF-8)

: >"$work/out/number_to_text.tsv"
: >"$work/out/format.tsv"
first=-h
for loc in "${locales[@]}"; do
    reset_locale_for "$loc"
    probe "$loc" number_to_text $first >>"$work/out/number_to_text.tsv"
    probe "$loc" format $first >>"$work/out/format.tsv"
    first=
done

reset_locale_for en_US.UTF-8
probe en_US.UTF-8 path_compact -h >"$work/out/path_compact.tsv"
probe en_US.UTF-8 locale_numbers -h >"$work/out/locale_numbers.tsv"
probe en_US.UTF-8 locale_info -h >"$work/out/locale_info.tsv"

# The process-wide defaults (user/system LCID, ACP, OEMCP) under each of
# these user locales.  Last, because every one of them rewrites the
# per-user regional settings.
process_locales=(en_US.UTF-8 de_DE.UTF-8 ja_JP.UTF-8 zh_CN.UTF-8 ru_RU.UTF-8
    pl_PL.UTF-8 th_TH.UTF-8 ko_KR.UTF-8 zh_TW.UTF-8 el_GR.UTF-8 tr_TR.UTF-8
    he_IL.UTF-8 ar_SA.UTF-8 lt_LT.UTF-8 vi_VN.UTF-8)
for loc in "${process_locales[@]}"; do
    probe "$loc" locale_info -p "$loc" >>"$work/out/locale_info.tsv"
done

mkdir -p "$golden"
for f in number_to_text format path_compact locale_numbers locale_info; do
    mv "$work/out/$f.tsv" "$golden/$f.tsv"
done

wineserver -k || true
wc -l "$golden"/number_to_text.tsv "$golden"/format.tsv \
      "$golden"/path_compact.tsv "$golden"/locale_numbers.tsv \
      "$golden"/locale_info.tsv
