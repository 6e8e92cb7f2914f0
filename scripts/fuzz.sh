#!/usr/bin/env bash
# Builds the libFuzzer targets (preset "fuzz") and runs each for a bounded
# time on a copy of its corpus in bench/fuzz/corpus. A crash, leak or hang
# fails the run and leaves the input in build/fuzz/findings; make it a
# regression case in the unit tests.
#   scripts/fuzz.sh [SECONDS_PER_TARGET]   (default 20)
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
cd "$here"
seconds=${1:-20}
# clang and its libFuzzer runtime, installed like the rest of the set-up.
missing=()
for p in clang libclang-rt-14-dev; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  sudo=""; [ "$(id -u)" -ne 0 ] && sudo="sudo"
  $sudo env DEBIAN_FRONTEND=noninteractive apt-get update -qq
  $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${missing[@]}" >/dev/null
fi
targets=(container topojson boundary jet_sql fmquery)
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j"$(nproc 2>/dev/null || echo 2)"
findings=build/fuzz/findings
mkdir -p "$findings"
passed=0 failed=0
for t in "${targets[@]}"; do
  work=$(mktemp -d)
  cp -r "bench/fuzz/corpus/$t/." "$work/"
  extra=()
  [ -f "bench/fuzz/$t.dict" ] && extra+=(-dict="bench/fuzz/$t.dict")
  if "build/fuzz/bench/fuzz/fuzz_$t" "$work" "${extra[@]}" -max_total_time="$seconds" -timeout=10 \
       -rss_limit_mb=2048 -artifact_prefix="$findings/$t-" -print_final_stats=0 >"$findings/$t.log" 2>&1; then
    echo "fuzz_$t: no finding in ${seconds}s ($(grep -o "Done [0-9]* runs" "$findings/$t.log" || echo "no run count"))"
    passed=$((passed + 1))
  else
    echo "fuzz_$t: FINDING, see $findings/$t.log"; tail -20 "$findings/$t.log"
    failed=$((failed + 1))
  fi
  rm -rf "$work"
done
echo "fuzz targets without findings: $passed of $((passed + failed))"
[ "$failed" -eq 0 ]
