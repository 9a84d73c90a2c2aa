#!/usr/bin/env bash
# orvo's generated manual page and bash completion: the page renders without a troff warning and
# explains every class of the registry; the completion offers verbs, classes and members.
set -u
orvo=$1
generated=$2
fails=0
fail() {
  echo "FAIL: $*"
  fails=$((fails + 1))
}

page=$generated/share/man/man1/orvo.1
warnings=$(MANWIDTH=100 man --warnings -l "$page" 2>&1 >/dev/null)
[[ -z "$warnings" ]] || fail "the manual page has troff warnings: $warnings"
text=$(MANWIDTH=100 man -l "$page" 2>/dev/null)
for class in $("$orvo" members | grep -v '^ ' | cut -d' ' -f1); do
  grep -q "^   $class" <<<"$text" || fail "the manual page lacks the class $class"
done
grep -q 'orvo help Class\[.Member\]' <<<"$text" || fail "the manual page lacks orvo help"

# shellcheck disable=SC1090
source "$generated/share/bash-completion/completions/orvo"
complete_words() {  # the completions of the last word
  COMP_WORDS=("$@")
  COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
  COMPREPLY=()
  _orvo
  printf '%s\n' "${COMPREPLY[@]}" | sort | tr '\n' ' '
}
[[ $(complete_words orvo mem) == "members " ]] || fail "verbs: $(complete_words orvo mem)"
[[ $(complete_words orvo call MathsUtilities.Round) == "MathsUtilities.RoundToNumSigFigs MathsUtilities.RoundUp " ]] ||
  fail "members: $(complete_words orvo call MathsUtilities.Round)"
[[ $(complete_words orvo members Fact) == "FactoryMethods " ]] || fail "classes"
[[ $(complete_words orvo ini s) == "set " ]] || fail "ini actions"

if ((fails > 0)); then
  echo "$fails documentation check(s) failed"
  exit 1
fi
echo "documentation checks passed"
