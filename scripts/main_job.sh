#!/usr/bin/env bash
# The main job: a spacing study on the national FM station list (the default
# master the set-up builds), with the demo folder's state and county lines,
# as an engineer would run it from the command line.
# Usage: scripts/main_job.sh [BUILD_DIR]
set -euo pipefail
build=${1:-build/default}
cli="$build/src/cli/qarvel-cli"
demo=demo
job="$demo/philadelphia-250A.fmj"
master="$demo/NationalFM.fmd"
[ -f "$master" ] || master="$demo/DemoMaster.fmd"

if [ ! -f "$master" ]; then
  echo "no master database in $demo/: run scripts/bootstrap.sh run first" >&2
  exit 1
fi

echo "== The master database: $master"
"$cli" db check "$master"
echo
echo "== A new job: class A on channel 250 (97.9 MHz) at Philadelphia, 200 km scan"
"$cli" job new --db "$master" --local "$demo/LocalData.fmd" --maps "$demo" \
  --lat 39:57:09N --lon 75:09:51W --channel 250 --class A --range 200 \
  --comments "Demo study" --out "$job" --force
"$cli" job info "$job"
echo
echo "== Stations within 20 km of their required separation, closest first"
if "$cli" job show --help >/dev/null 2>&1; then
  "$cli" job show "$job" --clearance 20 --sort Clearance
  echo
  echo "== The map, drawn to $demo/philadelphia-250A.png"
  "$cli" job map "$job" --out "$demo/philadelphia-250A.png" --size 1000x800 || true
  echo
fi
echo "== AutoScan: the ten most open channels for a class A station at the same site"
scan=$("$cli" autoscan --db "$master" --lat 39:57:09N --lon 75:09:51W --class A)
printf '%s\n' "$scan" | sed -n '1,10p'
printf '%s\n' "$scan" | tail -n 1
echo
echo "== Calculators: distance and bearing, 40N 75W to 41N 76W"
"$cli" distance 40N 75W 41N 76W
echo
echo "== Required separation, class B target against a class C1 station, second adjacent"
"$cli" minsep --target-class B --other-class C1 --relation 2nd
