#!/usr/bin/env bash
# The command-line tool end to end: exact output lines and exit codes.
set -u
orvo=$1
fails=0


expect() {  # expect EXIT EXPECTED_OUTPUT -- ARGS...
  local want_exit=$1 want=$2
  shift 3
  local got code
  got=$(env LC_ALL=en_US.UTF-8 "$orvo" "$@" 2>/dev/null)
  code=$?
  if [[ "$got" != "$want" || $code -ne $want_exit ]]; then
    printf 'FAIL: orvo %s\n  want (%s): %s\n  got  (%s): %s\n' "$*" "$want_exit" "$want" "$code" "$got"
    fails=$((fails + 1))
  fi
}

expect 0 '{"result":"b of a"}' -- call StringUtilities.ExpandString '%1 of %0' '["a","b"]'
expect 0 '{"result":true,"byref":{"Index":1}}' -- call MathsUtilities.IsLongInArray 5 '[1,5,5]' Index:=0
expect 0 '{"result":false,"byref":{"Index":0}}' -- call MathsUtilities.IsLongInArray 5 '[1,5,5]' 'Forwards:=false' Index:=0
# An optional answer the caller did not ask for is neither worked out nor shown.
expect 0 '{"result":true}' -- call MathsUtilities.IsLongInArray 5 '[1,5,5]'
expect 1 '{"error":{"number":-2147220991,"description":"Maximum number of valid sig figs is 14\r\nError handled by dSigFigs","source":""}}' -- call MathsUtilities.RoundToNumSigFigs 1 15
expect 1 '{"error":{"number":13,"description":"Type mismatch","source":"","parameter":"value","expected":"Double"}}' -- call MathsUtilities.RoundUp abc
expect 1 '{"error":{"number":438,"description":"Object doesn'"'"'t support this property or method: MathsUtilities.NoSuchThing","source":"orvo"}}' -- call MathsUtilities.NoSuchThing
expect 1 '{"error":{"number":429,"description":"ActiveX component can'"'"'t create object: no class Nope","source":"orvo"}}' -- call Nope.Member
expect 1 '{"error":{"number":449,"description":"Argument not optional","source":""}}' -- call MathsUtilities.RoundUp
expect 1 '{"error":{"number":448,"description":"Named argument not found","source":""}}' -- call MathsUtilities.RoundUp Bogus:=1
expect 0 '{"result":"allowed:"}' -- call StringUtilities.BannedCharExtender_Allowed
expect 0 '{"result":"a\"b"}' -- call StringUtilities.EncodeQuotes 'a"b'
expect 0 '{"result":"it`s"}' -- call StringUtilities.EncodeQuotes "it's"
expect 0 '{"result":2}' -- call MathsUtilities.RoundUp 1.2
# An array the call changes is an answer and comes back; a value passed by reference too.
expect 0 '{"result":true,"byref":{"value":"a_b","Info":"-"}}' -- call StringUtilities.StringContainsBannedCharsEx a-b - true _ '"'"'x'"'"'
expect 0 '{"result":null,"byref":{"ToCorrect":"abc"}}' -- call StringUtilities.CorrectDLLStringForDBCS abc
expect 0 '{"result":true}' -- call StringUtilities.IsArrayInitialised '{"lbound":1,"items":[7]}'
# A RECT travels as its four fields, in and back; without a desktop the work area is empty.
expect 0 '{"result":null,"byref":{"WorkAreaTwips":{"Left":0,"Top":0,"Right":0,"Bottom":0}}}' -- call VisualUtilities.GetWorkAreaTwips '{"Left":1,"Top":2,"Right":3,"Bottom":4}'
expect 1 '{"error":{"number":5,"description":"Invalid procedure call or argument: a RECT'"'"'s Left, Top, Right and Bottom are 32-bit whole numbers, in {\"Left\":1.5,\"Top\":2,\"Right\":3,\"Bottom\":4...","source":"orvo"}}' -- call VisualUtilities.GetWorkAreaTwips '{"Left":1.5,"Top":2,"Right":3,"Bottom":4}'
expect 0 '{"result":0}' -- call VisualUtilities.FindWindow x 0
expect 0 '{"result":false}' -- call StringUtilities.IsArrayInitialised '{"lbound":0,"items":null}'

# A batch keeps one process: the cached decimal separator and objects carry over; a bad line
# gives an error line and the batch goes on.
batch_out=$(printf '%s\n' \
  '{"call":"StringUtilities.SplitOnSpaces","args":["  a   b "]}' \
  'not json' \
  '{"call":"StringUtilities.ValDbl","args":["2.5"]}' \
  '{"call":"INI.SuppressORVOGenericLogging"}' \
  '{"call":"StringUtilities.MakePath","args":["","C","temp","a","txt"]}' \
  | env LC_ALL=en_US.UTF-8 "$orvo" batch)
batch_want='{"result":["a","b"],"byref":{"NumWords":2}}
{"error":{"number":5,"description":"Invalid procedure call or argument: a batch line is one JSON object, it starts with: not json","source":"orvo"}}
{"result":2.5}
{"result":null}
{"result":null,"byref":{"FullPath":"C:\\temp\\a.txt"}}'
if [[ "$batch_out" != "$batch_want" ]]; then
  printf 'FAIL: batch\n  want: %s\n  got:  %s\n' "$batch_want" "$batch_out"
  fails=$((fails + 1))
fi

# Objects the factory hands out are handles for the lines after: a manager on the fixture
# satellites, its strings (a missing one is an error in an explicitly chosen locale) and
# properties; the class itself cannot be named.
fixtures=$(cd "$(dirname "$0")/../resources/fixtures" && pwd)
manager_out=$(printf '%s\n' \
  '{"call":"FactoryMethods.GetResourceManager","args":["Mgr","'"$fixtures"'",1041]}' \
  '{"object":1,"call":"LoadResString","args":[2]}' \
  '{"object":1,"call":"LoadResString","args":[3]}' \
  '{"object":1,"call":"LocaleID","let":2057}' \
  '{"object":1,"call":"ExpandTranslation","args":[4,["a","b"]]}' \
  '{"object":1,"call":"FarEasternLocale"}' \
  '{"call":"ResourceManager.LoadResString","args":[1]}' \
  | env LC_ALL=en_US.UTF-8 "$orvo" batch)
manager_want='{"result":{"object":1,"class":"ResourceManager"},"byref":{"FileStub":"Mgr","SearchDirectory":"'"$fixtures"'","LocaleID":1041}}
{"result":"一\r\n二"}
{"error":{"number":-2147159740,"description":"No string located for resource number 3  in Mgr411.dll","source":"orvoGeneric DLL"}}
{"result":null}
{"result":"Value a of b"}
{"result":false}
{"error":{"number":429,"description":"ActiveX component can'"'"'t create object: ResourceManager is handed out by FactoryMethods only","source":"orvo"}}'
if [[ "$manager_out" != "$manager_want" ]]; then
  printf 'FAIL: resource manager batch\n  want: %s\n  got:  %s\n' "$manager_want" "$manager_out"
  fails=$((fails + 1))
fi

# A timer's ticks are lines of their own, {"event":"Timer","object":H}, written while the batch
# waits for its next request: none while it is stopped, about ten in half a second at 50 ms,
# none once it is stopped again.
timer_out=$({
  printf '%s\n' '{"call":"FactoryMethods.GetTimer","args":[50]}'
  sleep 0.3
  printf '%s\n' '{"object":1,"call":"Enabled","let":true}'
  sleep 0.5
  printf '%s\n' '{"object":1,"call":"Enabled","let":false}'
  sleep 0.3
  printf '%s\n' '{"object":1,"call":"Interval"}'
} | "$orvo" batch)
timer_events() {  # the number of tick lines between answer $1 and answer $1 + 1
  awk -v n="$1" '/^\{"result"/ { seen++; next } seen == n && /^\{"event":"Timer","object":1\}$/ { count++ } END { print count + 0 }' <<<"$timer_out"
}
first=$(head -n 1 <<<"$timer_out")
last=$(tail -n 1 <<<"$timer_out")
stopped=$(timer_events 1)
running=$(timer_events 2)
after=$(timer_events 3)
if [[ "$first" != '{"result":{"object":1,"class":"TimerObject"}}' || "$last" != '{"result":50}' ||
  $stopped -ne 0 || $running -lt 7 || $running -gt 11 || $after -ne 0 ]]; then
  printf 'FAIL: timer events in a batch (%s stopped, %s running, %s after)\n%s\n' \
    "$stopped" "$running" "$after" "$timer_out"
  fails=$((fails + 1))
fi

# A script's error report: shown (on standard error without a desktop, the log's path in lower
# case as the dialog has always shown it), logged as a block, and the message is required.
error_log=$(mktemp -d)/Errors.LOG
error_shown=$(env -u DISPLAY "$orvo" error --procedure Init --log "$error_log" 'Disk full' 2>&1 >/dev/null)
error_status=$?
error_block=$(tr -d '\r' <"$error_log" | sed -n '2p;3p;5p;6p')
if [[ $error_status -ne 0 || "$error_shown" != "[Error] Disk full"*"Procedure: Init"*"Details logged to: ${error_log,,}" ||
  "$error_block" != "$(printf -- '%.0s-' {1..60})"$'\nAN ERROR HAS OCCURRED\nDisk full\nProcedure: Init' ]]; then
  printf 'FAIL: orvo error (%s)\n  shown: %s\n  logged: %s\n' "$error_status" "$error_shown" "$error_block"
  fails=$((fails + 1))
fi
"$orvo" error >/dev/null 2>&1
[[ $? -eq 2 ]] || { echo "FAIL: orvo error without a message is not a usage error"; fails=$((fails + 1)); }

# The text-file verbs: detection, counting and a round trip through UTF-16 and back.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
printf 'caf\xe9\r\nline2\rline3\nlast' > "$work/ansi.txt"
printf '\xef\xbb\xbfutf8\r\n' > "$work/bom.txt"
expect 0 "$work/ansi.txt	encANSI	0	1252	CP1252
$work/bom.txt	encUTF8_BOM	4	65001	UTF-8" -- encoding "$work/ansi.txt" "$work/bom.txt"
# An ANSI file is read in the system's ANSI code page, which is answered as the page it is.
ORVO_ANSI_CODEPAGE=932 expect 0 "$work/ansi.txt	encANSI	0	932	CP932" -- encoding "$work/ansi.txt"
expect 0 '{"file":"'"$work"'/bom.txt","encoding":"encUTF8_BOM","number":4,"bom":3,"codePage":65001,"charset":"UTF-8"}
{"file":"/bin/sh","encoding":"encBIN","number":-1,"bom":0,"codePage":0,"charset":null}' -- encoding --json "$work/bom.txt" /bin/sh
# The charset is one iconv takes: the file converts with it.
charset=$("$orvo" encoding "$work/ansi.txt" | cut -f5)
if ! iconv -f "$charset" -t UTF-8 "$work/ansi.txt" | grep -q 'café'; then
  echo "FAIL: iconv did not take the charset $charset"
  fails=$((fails + 1))
fi
expect 1 "" -- encoding "$work/missing.txt"
expect 0 "4	$work/ansi.txt" -- lines "$work/ansi.txt"
expect 1 "" -- lines "$work"
expect 0 "" -- convert --to 1201 "$work/ansi.txt" "$work/be.txt"
expect 0 "$work/be.txt	encUTF16_BE	6	1201	UTF-16BE" -- encoding "$work/be.txt"
expect 0 "" -- convert --to 1252 --no-bom "$work/be.txt" "$work/back.txt"
if ! cmp -s "$work/ansi.txt" "$work/back.txt"; then
  echo "FAIL: convert round trip changed the bytes"
  fails=$((fails + 1))
fi
expect 2 "" -- convert --to x "$work/ansi.txt" "$work/x.txt"

# convert never writes over its input, by whatever name it is reached; refuses a page it cannot
# read or write before touching a file; and leaves an existing output whole when it refuses.
ln -s ansi.txt "$work/link.txt"
ln "$work/ansi.txt" "$work/hard.txt"
for same in "$work/ansi.txt" "$work/link.txt" "$work/hard.txt" "$work/./ansi.txt"; do
  expect 1 "" -- convert --to 65001 "$work/ansi.txt" "$same"
done
printf 'keep' > "$work/kept.txt"
chmod 640 "$work/kept.txt"
expect 1 "" -- convert --to 12345 "$work/ansi.txt" "$work/kept.txt"
expect 1 "" -- convert --from 99 --to 65001 "$work/ansi.txt" "$work/kept.txt"
expect 1 "" -- convert --to 65001 /dev/zero "$work/kept.txt"
if [[ "$(cat "$work/kept.txt")" != keep ]] || ! cmp -s "$work/ansi.txt" "$work/hard.txt"; then
  echo "FAIL: a refused convert changed a file"
  fails=$((fails + 1))
fi
expect 0 "" -- convert --to 28591 --no-bom "$work/ansi.txt" "$work/kept.txt"
if ! cmp -s "$work/ansi.txt" "$work/kept.txt" || [[ "$(stat -c %a "$work/kept.txt")" != 640 ]]; then
  echo "FAIL: convert into ISO 8859-1 over an existing file"
  fails=$((fails + 1))
fi
if ls -A "$work" | grep -q '^\.~orvo'; then
  echo "FAIL: convert left a temporary file"
  fails=$((fails + 1))
fi
expect 1 "" -- convert --to 65001 "$work/missing.txt" "$work/x.txt"
# Settings files and the log.
expect 0 "" -- ini set "$work/s.ini" Sec key " padded "
expect 0 "" -- ini set "$work/s.ini" Sec other 2
expect 0 " padded " -- ini get "$work/s.ini" sec KEY
expect 0 "fallback" -- ini get "$work/s.ini" Sec missing fallback
expect 0 "Sec" -- ini list "$work/s.ini"
expect 0 "key= padded 
other=2" -- ini list "$work/s.ini" Sec
expect 0 "" -- ini delete "$work/s.ini" Sec key
if [[ "$(cat "$work/s.ini")" != $'[Sec]\r\nother=2\r' ]]; then
  echo "FAIL: ini set/delete wrote $(od -c "$work/s.ini")"
  fails=$((fails + 1))
fi
expect 1 "" -- ini list "$work/s.ini" Nope
# Scripts test outcomes by exit status: a missing file or key is 1, unless a default is given;
# an empty value is a value.
expect 0 "" -- ini set "$work/s.ini" Sec empty ""
expect 0 "" -- ini get "$work/s.ini" Sec empty
expect 1 "" -- ini get "$work/s.ini" Sec missing
expect 1 "" -- ini get "$work/s.ini" Nope key
expect 0 "given" -- ini get "$work/s.ini" Nope key given
expect 1 "" -- ini get "$work/absent.ini" Sec key
expect 1 "" -- ini get "$work/absent.ini" Sec key given
expect 1 "" -- ini list "$work/absent.ini"
expect 1 "" -- ini list "$work/absent.ini" Sec
expect 1 "" -- ini set "$work/no/such/dir.ini" S k v
expect 2 "" -- ini get "$work/s.ini" Sec
expect 1 "" -- log --app "$work" App "not yet"
: > "$work/App.log"
expect 0 "" -- log --app "$work" App "hello there"
if ! tail -n 1 "$work/App.log" | grep -Eq '^[0-9]{4}-[A-Z][a-z]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}: hello there'$'\r''$'; then
  echo "FAIL: orvo log line: $(tail -n 1 "$work/App.log")"
  fails=$((fails + 1))
fi
expect 1 "false" -- mutex "orvo cli test $$"
# Held while a batch that made it runs, free once the batch has ended.
{ printf '{"call":"SystemUtilities.CreateMutex","args":["orvo cli held %s",0]}\n' $$; sleep 3; } |
  "$orvo" batch > "$work/holder.out" 2>/dev/null &
holder=$!
for _ in $(seq 50); do [[ -s "$work/holder.out" ]] && break; sleep 0.1; done
expect 0 "true" -- mutex "orvo cli held $$"
wait "$holder"
expect 1 "false" -- mutex "orvo cli held $$"
expect 2 "" -- mutex

# Satellite string tables, read from the compiled fixtures.
fixtures=$(cd "$(dirname "$0")/../resources/fixtures" && pwd)
expect 0 "1036	101	Première ligne%nDeuxième ligne
1041	101	一行目%n二行目
2057	101	Line one%nLine two
2057	105	tab\there, quote \" and backslash \\\\ kept" -- strings "$fixtures/AppRes809.dll" 101 105
expect 0 '{"language":1041,"id":104,"text":"顔 😀"}
{"language":1041,"id":101,"text":"一行目%n二行目"}' -- strings --json --language 0x411 "$fixtures/AppRes809_i386.dll" 104 101
expect 1 "1036	103	après un trou
2057	103	after a gap: 102 is missing" -- strings "$fixtures/AppRes809.dll" 102 103
if [[ $("$orvo" strings "$fixtures/AppRes809.dll" | wc -l) -ne 16 ||
      $("$orvo" strings --json "$fixtures/AppRes809.dll" | wc -l) -ne 16 ]]; then
  echo "FAIL: orvo strings does not list all 16 strings"
  fails=$((fails + 1))
fi
expect 0 "" -- strings "$fixtures/NoStrings.dll"
expect 1 "" -- strings "$fixtures/NoResources.dll"
expect 1 "" -- strings "$fixtures/strings.rc"
expect 1 "" -- strings "$work/missing.dll"
expect 2 "" -- strings
expect 2 "" -- strings "$fixtures/AppRes809.dll" 65536
expect 2 "" -- strings --language
# Every verb's help is on standard output, exit 0, and lists its exit statuses; batch's does
# not wait for input.
for verb in call batch members help encoding lines convert ini log mutex strings; do
  help=$(timeout 5 "$orvo" "$verb" --help </dev/null 2>/dev/null)
  code=$?
  if ((code != 0)) || ! grep -q "^usage: orvo $verb" <<<"$help" ||
    ! grep -q "^Exit status" <<<"$help"; then
    echo "FAIL: orvo $verb --help (exit $code)"
    fails=$((fails + 1))
  fi
done
expect 2 "" -- batch extra
expect 2 "" -- members A B
# Options as the shell tools have them: an unknown one is a usage error, never a file name;
# "--" ends them; "-" (standard input or output) is refused rather than taken as a file name;
# values and arguments that start with "-" stay values.
for args in "encoding --bogus $work/s.ini" "lines --bogus $work/s.ini" \
  "convert --to 65001 --bogus $work/s.ini $work/out.txt" \
  "strings --bogus x.dll" "ini --bogus get f s k" \
  "log --bogus message" "mutex --bogus" "call --bogus" "members --bogus" "batch --bogus" \
  "convert --to" "strings --language"; do
  # shellcheck disable=SC2086
  expect 2 "" -- $args
done
# "-" is standard input for lines, encoding and convert's IN, standard output for its OUT.
printf 'one\ntwo\n' > "$work/two.txt"
got=$(printf 'a\r\nb\rc' | "$orvo" lines - "$work/two.txt" - 2>/dev/null)
[[ "$got" == $'3\t-\n2\t'"$work"$'/two.txt\n3\t-' ]] || { echo "FAIL: lines - gave $got"; fails=$((fails + 1)); }
got=$(printf 'caf\xe9\r\n' | LC_ALL=en_US.UTF-8 "$orvo" encoding - 2>/dev/null)
[[ "$got" == $'-\tencANSI\t0\t1252\tCP1252' ]] || { echo "FAIL: encoding - gave $got"; fails=$((fails + 1)); }
got=$(printf '\xef\xbb\xbfM\xc3\xbcller\r\n' | "$orvo" convert --to 1252 - - | od -An -c | tr -d ' \n')
[[ "$got" == 'M374ller\r\n' ]] || { echo "FAIL: convert - - gave $got"; fails=$((fails + 1)); }
if printf 'x\n' | "$orvo" convert --to 65001 - - > /dev/full 2>/dev/null; [[ $? -ne 3 ]]; then
  echo "FAIL: convert to a full standard output did not exit 3"
  fails=$((fails + 1))
fi
if [[ -e "$work/-" || -e ./- ]] || compgen -G "${TMPDIR:-/tmp}/orvo-??????" > /dev/null; then
  echo "FAIL: a file named - was made, or a scratch file was left behind"
  fails=$((fails + 1))
fi
printf 'one\ntwo\n' > "$work/-dash"
cd "$work" || exit 1
expect 0 "2	-dash" -- lines -- -dash
expect 0 "2	./-dash" -- lines ./-dash
cd - > /dev/null || exit 1
# A character the file's code page cannot hold is stored as the platform stores it, and said;
# with --strict nothing is written.
said=$(LC_ALL=en_US.UTF-8 "$orvo" ini set "$work/lossy.ini" S K 'Müller 日本' 2>&1 >/dev/null)
if [[ "$said" != *"2 characters that the file's code page (1252) cannot hold"* ||
      $(od -An -c "$work/lossy.ini" | tr -d ' \n') != '[S]\r\nK=M374ller??\r\n' ]]; then
  printf 'FAIL: a lossy ini set\n  said: %s\n  wrote: %s\n' "$said" "$(od -An -c "$work/lossy.ini")"
  fails=$((fails + 1))
fi
expect 1 "" -- ini set --strict "$work/strict.ini" S K 'Müller 日本'
expect 0 "" -- ini set --strict "$work/strict.ini" S K 'Müller'
expect 0 "Müller" -- ini get "$work/strict.ini" S K
expect 2 "" -- ini get --strict "$work/strict.ini" S K
printf '\xef\xbb\xbfM\xc3\xbcller \xe6\x97\xa5\xe6\x9c\xac\r\n' > "$work/japanese.txt"
said=$("$orvo" convert --to 1252 "$work/japanese.txt" "$work/western.txt" 2>&1 >/dev/null)
if [[ "$said" != *"2 characters that code page 1252 cannot hold"* ]]; then
  printf 'FAIL: a lossy convert said: %s\n' "$said"
  fails=$((fails + 1))
fi
expect 1 "" -- convert --strict --to 1252 "$work/japanese.txt" "$work/never.txt"
printf '\xef\xbb\xbf\xe6\x97\xa5\xe6\x9c\xac\r\n' > "$work/kanji.txt"
expect 0 "" -- convert --strict --to 932 "$work/kanji.txt" "$work/sjis.txt"
if [[ -e "$work/never.txt" ]]; then
  echo "FAIL: a refused strict conversion wrote its target"
  fails=$((fails + 1))
fi
expect 0 "" -- ini set "$work/s.ini" Sec negative -5
expect 0 "-5" -- ini get "$work/s.ini" Sec negative
expect 0 '{"result":-1}' -- call MathsUtilities.RoundUp -1.5
expect 0 '{"result":2}' -- call -- MathsUtilities.RoundUp 1.2
expect 1 "false" -- mutex -- "-orvo cli $$"
expect 1 "" -- members Nope
# Every member explains itself and each parameter, from the interface description.
expect 0 "Long MathsUtilities.RoundUp(Double value)
  $(grep -B2 '  Long RoundUp(' "$(dirname "$0")/../../api/orvogeneric.idl" | sed -n 1p | sed 's/^ *## //')
  value: Double - $(grep -B1 '  Long RoundUp(' "$(dirname "$0")/../../api/orvogeneric.idl" | sed -n 1p | sed 's/^ *## @value //')" -- help MathsUtilities.RoundUp
undocumented=$("$orvo" members | grep '^  ' | wc -l)
explained=$(for class in $("$orvo" members | grep -v '^ ' | cut -d' ' -f1); do
  "$orvo" help "$class" | grep -c '^      [^ ]'
done | awk '{ sum += $1 } END { print sum }')
if [[ "$undocumented" != "$explained" ]]; then
  echo "FAIL: $explained of $undocumented members are explained by orvo help"
  fails=$((fails + 1))
fi
expect 1 "" -- help MathsUtilities.Nope
expect 1 "" -- help Nope
expect 2 "" -- help
if "$orvo" call MathsUtilities.RoundUp 1.2 > /dev/full 2>/dev/null; then
  echo "FAIL: a failed write exited 0"
  fails=$((fails + 1))
fi

# The programs a call starts share neither the answers nor the requests: their output goes to
# standard error and their input is empty, so a batch answers every request, once each.
answers=$(printf '%s\n' '{"call":"SystemUtilities.SyncShell","args":["echo injected"]}' \
  '{"call":"SystemUtilities.SyncShell","args":["head -c 40"]}' \
  '{"call":"MathsUtilities.RoundUp","args":[1.2]}' | timeout 20 "$orvo" batch 2>/dev/null)
if [[ "$answers" != $'{"result":true}\n{"result":true}\n{"result":2}' ]]; then
  printf 'FAIL: children and the batch streams\n  got: %s\n' "$answers"
  fails=$((fails + 1))
fi
# Started with standard input closed, a lock file does not become descriptor 0; with standard
# output closed the answer is not written anywhere else and the exit status says so.
got=$("$orvo" call SystemUtilities.CreateMutex "orvo-cli-test-$$" 0 <&- 2>/dev/null)
if [[ "$got" != *'"Status":2'* || "$got" == '{"result":0,'* ]]; then
  printf 'FAIL: a mutex made with standard input closed\n  got: %s\n' "$got"
  fails=$((fails + 1))
fi
"$orvo" call MathsUtilities.RoundUp 1.2 >&- 2>/dev/null
code=$?
if ((code != 3)); then
  printf 'FAIL: an answer to a closed standard output exited %s, not 3\n' "$code"
  fails=$((fails + 1))
fi

# orvo log writes the line it is given and nothing else: not the information block of an
# application's start, not the encoding verdicts traced while the line is written; three calls
# are three lines. A log that cannot be written is exit status 1.
mkdir -p "$work/logapp/win"
printf '[Logging]\r\nOutputDebugString=0\r\n' > "$work/logapp/win/ORVO.INI"
: > "$work/logapp/app.log"
for message in one two three; do
  ORVO_WINDIR="$work/logapp/win" "$orvo" log --app "$work/logapp" app "$message" 2>/dev/null
done
if [[ $(wc -l < "$work/logapp/app.log") != 3 || $(grep -c ': one\|: two\|: three' "$work/logapp/app.log") != 3 ]]; then
  echo "FAIL: orvo log wrote more than its lines: $(cat "$work/logapp/app.log")"
  fails=$((fails + 1))
fi
chmod 444 "$work/logapp/app.log"
expect 1 "" -- log --app "$work/logapp" app again

if ((fails > 0)); then
  echo "$fails orvo CLI check(s) failed"
  exit 1
fi
echo "orvo CLI checks passed"
