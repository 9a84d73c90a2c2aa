#!/usr/bin/env bash
# The main job: build the library and the orvo tool, then run orvo on the bundled sample
# batches and show what each call answered.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
"$root/scripts/setup.sh"
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build/release -j "$(nproc)" --target orvo
orvo=build/release/tools/orvo/orvo
for sample in samples/*.jsonl; do
  locale=$(sed -n 's/^# locale: //p' "${sample%.jsonl}.md" 2>/dev/null || true)
  echo "== $sample (${locale:-en_US.UTF-8})"
  grep -v '^#' "$sample" | env LC_ALL="${locale:-en_US.UTF-8}" "$orvo" batch | paste -d '\n' <(grep -v '^#' "$sample" | sed 's/^/> /') -
done
echo "== one call"
"$orvo" call StringUtilities.ExpandString '%1 of %0' '["a","b"]'
