#!/usr/bin/env bash
# The error dialog as a user meets it: `orvo error` on a real X display (Xvfb, openbox), judged by
# the window's geometry, the clipboard after Copy, and the page that Print writes to a PDF file.
# Screenshots are kept in the artefact folder given as the second argument.
set -u
orvo=$1
artefacts=$2
fails=0
fail() {
  printf 'FAIL: %s\n' "$*"
  fails=$((fails + 1))
}
for tool in Xvfb openbox xdotool xwininfo xclip import pdftotext; do
  command -v "$tool" >/dev/null || { echo "FAIL: $tool is missing (scripts/setup.sh installs it)"; exit 1; }
done
mkdir -p "$artefacts"

# shellcheck source=x_session.sh
source "$(dirname "$0")/x_session.sh"
# The print dialog offers $HOME/print.pdf when no printer is installed.
export HOME="$work/home" XDG_RUNTIME_DIR="$work/runtime"
mkdir -p "$HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"

client_geometry() {  # "left top width height" of a window's client area on the screen
  xwininfo -id "$1" | awk '/Absolute upper-left X/ {x=$NF} /Absolute upper-left Y/ {y=$NF}
    /^  Width/ {w=$NF} /^  Height/ {h=$NF} END {print x, y, w, h}'
}
press() {  # press WINDOW KEYS...: the keys, sent once the window has the focus
  xdotool windowactivate --sync "$1" >/dev/null 2>&1
  shift
  xdotool key --clearmodifiers "$@"
}
wait_gone() {  # wait_gone PID: whether the process ended within ten seconds
  until_true 10 bash -c "! kill -0 $1 2>/dev/null"
}

# One short report: design size, centred on the 1920x1080 screen (no active window of its own).
log="$work/Logs/App.LOG"
mkdir -p "$work/Logs"
"$orvo" error --procedure Init --log "$log" "Disk full" 2>"$work/error.err" &
shown=$!
pids+=("$shown")
dialog=$(window_of Error) || fail "no error dialog appeared: $(cat "$work/error.err")"
sleep 0.3
# 7200 x 2295 twips at 15 twips a pixel; left (1920 - 480) / 2, top (1080 - 153) / 2 rounded.
[[ "$(client_geometry "$dialog")" == "720 464 480 153" ]] ||
  fail "short report: geometry $(client_geometry "$dialog"), expected 720 464 480 153"
import -window root "$artefacts/error-dialog.png" || fail "no screenshot"

# Copy: the moment received, then the details with the log's path in lower case.
press "$dialog" alt+c
sleep 0.5
copied=$(xclip -o -selection clipboard | tr -d '\r')
when=$(head -n 1 <<<"$copied")
[[ "$when" =~ ^[0-9]{1,2}/[0-9]{1,2}/[0-9]{4}\ [0-9]{1,2}:[0-9]{2}:[0-9]{2}\ [AP]M$ ]] ||
  fail "Copy: first line is not the moment: '$when'"
[[ "$(tail -n +2 <<<"$copied")" == $'Disk full\nProcedure: Init\nDetails logged to: '"${log,,}" ]] ||
  fail "Copy: details differ: $copied"
grep -q "Date/time: $when" <(tr -d '\r' <"$log") || fail "the log's moment is not the copied one"

# Print, cancelled: nothing is written and nothing is said.
press "$dialog" alt+p
printer=$(window_of Print) || fail "Print showed no printer selection"
press "$printer" Escape
sleep 0.5
[[ ! -e "$HOME/print.pdf" ]] || fail "a cancelled print wrote a page"
[[ -z "$(xdotool search --onlyvisible --name '^orvo$' 2>/dev/null)" ]] || fail "cancel said something"

# Print to the PDF printer the selection offers, then read the words' positions back.
press "$dialog" alt+p
printer=$(window_of Print) || fail "Print showed no printer selection the second time"
import -window root "$artefacts/error-dialog-print.png"
press "$printer" Return
until_true 10 test -s "$HOME/print.pdf" || fail "no page printed"
sleep 0.5
pdftotext -bbox "$HOME/print.pdf" "$work/page.html" || fail "the page cannot be read"
# First word of each line: its text, left and top in points; 568.93 twips = 28.4465 points.
awk -F'"' '/<word/ {
    top = $4; if (top != last) { split($0, a, ">"); split(a[2], b, "<"); print b[1], $2, $4; last = top } }' \
  "$work/page.html" >"$work/lines"
python3 - "$work/lines" "$when" <<'PY' || fail "printed page: $(cat "$work/lines")"
import sys
lines = [l.split() for l in open(sys.argv[1])]
words = [l[0] for l in lines]
want = ["ORVO", "Date", "Error", "Details", "Disk", "Procedure:", "Details"]
assert words == want, words
left = [float(l[1]) for l in lines]
top = [float(l[2]) for l in lines]
margin = 10 * 56.893 / 20
assert all(abs(x - margin) < 0.05 for x in left), left
assert abs(top[0] - margin) < 0.05, top[0]
# Below the title and below the date line, a gap of the same 568.93 twips.
regular = top[5] - top[4]
assert 10 < regular < 20, regular
assert abs(top[2] - top[1] - regular) < 0.2, top
assert abs(top[3] - (top[2] + regular + margin)) < 0.2, top
assert abs(top[6] - top[5] - regular) < 0.2, top
PY
grep -q "at ${when%% *} ${when#* }" <(pdftotext "$HOME/print.pdf" -) ||
  fail "the page does not carry the moment $when"

# System Info: no information tool here, so the documented message, in a box of its own.
press "$dialog" alt+s
if box=$(window_of orvo); then
  press "$box" ctrl+c
  sleep 0.3
  xclip -o -selection clipboard | grep -q "^System Information Is Unavailable At This Time" ||
    fail "System Info: $(xclip -o -selection clipboard)"
  press "$box" Return
else
  fail "System Info showed nothing"
fi

# OK closes it, and orvo ends with 0.
press "$dialog" Return
wait_gone "$shown" || fail "orvo error did not end after OK"
wait "$shown"
status=$?
[[ $status -eq 0 ]] || fail "orvo error exited $status"

# Several hundred lines: exactly 8000 twips (533 pixels) taller, still centred.
long=$(for i in $(seq 400); do printf 'line %d of a long report\r\n' "$i"; done)
"$orvo" error --procedure Long "$long" 2>/dev/null &
shown=$!
pids+=("$shown")
dialog=$(window_of Error) || fail "no dialog for the long report"
sleep 0.3
[[ "$(client_geometry "$dialog")" == "720 197 480 686" ]] ||
  fail "long report: geometry $(client_geometry "$dialog"), expected 720 197 480 686"
import -window root "$artefacts/error-dialog-long.png"
press "$dialog" Return
wait_gone "$shown" || fail "the long report's dialog did not close"

if ((fails > 0)); then
  echo "$fails failure(s)"
  exit 1
fi
echo "error dialog: all checks passed"
