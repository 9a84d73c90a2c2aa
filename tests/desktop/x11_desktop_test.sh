#!/usr/bin/env bash
# Other programs' windows on a real X display: Xvfb with openbox as the window manager, xmessage
# windows as the other programs, xdotool and xprop as the judges. orvo asks through the
# library's own X desktop.
set -u
orvo=$1
fails=0
fail() {
  printf 'FAIL: %s\n' "$*"
  fails=$((fails + 1))
}
for tool in Xvfb openbox xmessage xdotool xprop xclip; do
  command -v "$tool" >/dev/null || { echo "FAIL: $tool is missing (scripts/setup.sh installs it)"; exit 1; }
done

# shellcheck source=x_session.sh
source "$(dirname "$0")/x_session.sh"
xmessage -title "Alpha Report" "alpha" >/dev/null 2>&1 &
pids+=($!)
xmessage -title "Beta Tool" "beta" >/dev/null 2>&1 &
pids+=($!)
alpha=$(window_of "Alpha Report") || fail "no Alpha Report window"
beta=$(window_of "Beta Tool") || fail "no Beta Tool window"
# The list the library reads is the window manager's, filled once it has managed both.
until_true 10 bash -c "xprop -root _NET_CLIENT_LIST | grep -q \"$(printf '0x%x' "$beta")\""

call() { "$orvo" call "$@" 2>/dev/null; }

# Found by each method, without regard to case; a window that is not shown is skipped.
while IFS='|' read -r title method want; do
  got=$(call VisualUtilities.FindWindow "$title" "$method")
  [[ "$got" == "{\"result\":$want}" ]] || fail "FindWindow '$title' $method: $got, want $want"
done <<TABLE
alpha|0|$alpha
ALPHA|0|$alpha
report|1|$alpha
beta tool|2|$beta
beta|2|0
nothing like it|1|0
TABLE
got=$(call VisualUtilities.FindWindow "alpha" 0 'FullTitle:=""')
[[ "$got" == "{\"result\":$alpha,\"byref\":{\"FullTitle\":\"Alpha Report\"}}" ]] ||
  fail "FindWindow's full title: $got"
[[ $(call VisualUtilities.WindowVisible "$alpha") == '{"result":true}' ]] || fail "alpha not visible"

# Activated over another active window, as the window manager reports it.
xdotool windowactivate --sync "$beta"
call VisualUtilities.WindowActivateAndRestore "$alpha" >/dev/null
until_true 3 bash -c "[[ \$(xdotool getactivewindow) == $alpha ]]" ||
  fail "alpha not active after WindowActivateAndRestore (active: $(xdotool getactivewindow))"

# SafeAppActivate: the exact title, else the first that begins with it, not case-sensitive; a
# title that no window has changes nothing and raises nothing.
for title in "Beta Tool" "beta t"; do
  xdotool windowactivate --sync "$alpha"
  call SystemUtilities.SafeAppActivate "$title" >/dev/null || fail "SafeAppActivate '$title' raised"
  until_true 5 bash -c "[[ \$(xdotool getactivewindow) == $beta ]]" ||
    fail "beta not active after SafeAppActivate '$title' (active: $(xdotool getactivewindow getwindowname 2>&1), visible: $(xdotool search --onlyvisible --name 'Tool|Report' 2>&1 | tr '\n' ' '))"
done
call SystemUtilities.SafeAppActivate "No Such Window" >/dev/null || fail "a missing title raised"
[[ $(xdotool getactivewindow) == "$beta" ]] || fail "a missing title moved the focus"
xdotool windowactivate --sync "$beta"

# Restored from minimised.
xdotool windowminimize --sync "$alpha"
until_true 3 bash -c "xprop -id $alpha WM_STATE | grep -q Iconic" || fail "alpha did not minimise"
[[ $(call VisualUtilities.WindowVisible "$alpha") == '{"result":false}' ]] ||
  fail "a minimised window is visible"
call VisualUtilities.RestoreWindow "$alpha" >/dev/null
until_true 3 bash -c "xprop -id $alpha WM_STATE | grep -q Normal" || fail "alpha not restored"
[[ $(call VisualUtilities.FindWindow "alpha" 0) == "{\"result\":$alpha}" ]] ||
  fail "the restored window is not found again"

# The work area of a 1920 x 1080 screen without panels, at 15 twips a pixel.
area='{"result":null,"byref":{"WorkAreaTwips":{"Left":0,"Top":0,"Right":28800,"Bottom":16200}}}'
got=$(call VisualUtilities.GetWorkAreaTwips '{"Left":0,"Top":0,"Right":0,"Bottom":0}')
[[ "$got" == "$area" ]] || fail "GetWorkAreaTwips: $got"
got=$(call VisualUtilities.GetWorkArea '{"Left":0,"Top":0,"Right":0,"Bottom":0}' "$beta")
[[ "$got" == "$area" ]] || fail "GetWorkArea of a window: $got"

# The keyboard and the pointer as they are at this moment.
key_is() {  # key_is CODE true|false
  local got
  got=$(call SystemUtilities.IsKeyDown "$1")
  [[ "$got" == "{\"result\":$2}" ]] || fail "IsKeyDown $1: $got, want $2"
}
key_is 16 false
xdotool keydown shift
key_is 16 true
key_is 160 true
key_is 17 false
xdotool keyup shift
key_is 16 false
xdotool keydown a
key_is 65 true
xdotool keyup a
key_is 65 false
xdotool mousedown 1
key_is 1 true
xdotool mouseup 1
key_is 1 false

# The clipboard: written by the library and pasted by xclip while the writer lives (a batch
# waiting for its next line), then written by xclip and read by the library.
coproc BATCH { "$orvo" batch 2>/dev/null; }
printf '%s\n' '{"call":"StringUtilities.ClipboardSetText","args":["Grüße, 日本 \\ done"]}' >&"${BATCH[1]}"
read -r -t 5 answer <&"${BATCH[0]}"
pasted=$(timeout 5 xclip -o -selection clipboard)
[[ "$answer" == '{"result":null}' && "$pasted" == 'Grüße, 日本 \ done' ]] ||
  fail "ClipboardSetText: answered $answer, xclip pasted '$pasted'"
printf '%s\n' '{"call":"StringUtilities.ClipboardGetText"}' >&"${BATCH[1]}"
read -r -t 5 answer <&"${BATCH[0]}"
[[ "$answer" == '{"result":"Grüße, 日本 \\ done"}' ]] || fail "the writer's own clipboard: $answer"
exec {BATCH[1]}>&-
wait "$BATCH_PID" 2>/dev/null
# xclip serves from a child it forks after returning, and the previous holder serves until that
# child takes over: the clipboard is read once xclip itself reads back what it was given.
clip() {  # clip FILE: put the file on the clipboard with xclip, and wait until it is served
  xclip -selection clipboard -i "$1" 2>/dev/null
  until_true 20 bash -c "xclip -o -selection clipboard 2>/dev/null | cmp -s - '$1'" ||
    fail "xclip does not serve $1"
}
printf 'from xclip\r\nline two' >"$work/small.txt"
clip "$work/small.txt"
got=$(call StringUtilities.ClipboardGetText)
[[ "$got" == '{"result":"from xclip\r\nline two"}' ]] || fail "ClipboardGetText: $got"
# Text too large for one request (16 MiB with big requests) arrives in pieces: 18 MB of lines of
# random lengths, byte for byte, three times over.
python3 -c 'import random; r = random.Random(7); print("\n".join("line %d %s" % (i, "x" * r.randrange(80)) for i in range(420000)))' >"$work/big.txt"
clip "$work/big.txt"
for round in 1 2 3; do
  call StringUtilities.ClipboardGetText >"$work/big.json"
  python3 -c 'import json, sys; got = json.load(open(sys.argv[1]))["result"]; want = open(sys.argv[2]).read(); sys.exit(0 if got == want and len(want) > 17000000 else 1)' \
    "$work/big.json" "$work/big.txt" ||
    fail "a large clipboard text was not read whole, round $round ($(wc -c <"$work/big.json") bytes of JSON)"
done
touch "$work/report one.txt"
printf 'not a path\n"%s"\n%s\n' "$work/report one.txt" "$work" >"$work/paths.txt"
clip "$work/paths.txt"
while IFS='|' read -r search want; do
  got=$(call StringUtilities.GetPathFromClipboard "$search")
  [[ "$got" == "{\"result\":\"$want\"}" ]] || fail "GetPathFromClipboard $search: $got, want $want"
done <<TABLE
1|$work/report one.txt
2|$work/
3|$work/report one.txt
4|$work/
5|
TABLE

# A window that is unmapped is no candidate.
xdotool windowunmap --sync "$beta"
[[ $(call VisualUtilities.FindWindow "beta" 0) == '{"result":0}' ]] || fail "an unmapped window was found"

if ((fails > 0)); then
  echo "$fails X desktop check(s) failed"
  exit 1
fi
echo "X desktop checks passed"
