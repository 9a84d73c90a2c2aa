# Sourced by the desktop tests: a private X display of known size and resolution (Xvfb, 96 dots
# per inch, 15 twips a pixel) with openbox as its window manager, both ended at exit, and the
# helpers the tests share. Sets DISPLAY and work (a scratch directory removed at exit).
work=$(mktemp -d)
pids=()
cleanup() {
  for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null; done
  wait 2>/dev/null
  rm -rf "$work"
}
trap cleanup EXIT

exec 9>"$work/display"
Xvfb -displayfd 9 -screen 0 1920x1080x24 -dpi 96 -nolisten tcp >"$work/xvfb.log" 2>&1 &
pids+=($!)
for _ in $(seq 300); do [[ -s "$work/display" ]] && break; sleep 0.1; done
export DISPLAY=":$(head -n 1 "$work/display")"
[[ "$DISPLAY" != ":" ]] || { echo "FAIL: Xvfb did not start"; cat "$work/xvfb.log"; exit 1; }
openbox --sm-disable >"$work/openbox.log" 2>&1 &
pids+=($!)
until_true() {  # until_true SECONDS COMMAND...: whether the command succeeded within the time
  local tries=$(($1 * 10))
  shift
  for _ in $(seq "$tries"); do "$@" && return 0; sleep 0.1; done
  return 1
}
until_true 30 bash -c 'xprop -root _NET_SUPPORTING_WM_CHECK | grep -q "window id"' ||
  { echo "FAIL: openbox did not start"; cat "$work/openbox.log"; exit 1; }

window_of() {  # the X id (decimal) of the one window with that exact title, once it is mapped
  local id=""
  for _ in $(seq 100); do
    id=$(xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | head -n 1)
    [[ -n "$id" ]] && { echo "$id"; return 0; }
    sleep 0.1
  done
  return 1
}
