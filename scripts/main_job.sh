#!/usr/bin/env bash
# The main job: a short demonstration of Qarvel on a built tree.
set -euo pipefail
build=${1:-build/default}
cli="$build/src/cli/qarvel-cli"

echo "== Distance and bearing, 40N 75W to 41N 76W"
"$cli" distance 40N 75W 41N 76W
echo
echo "== The point 100 km due east of 40N 75W"
"$cli" position 40N 75W 100 90
echo
echo "== Required separation, class B target against a class C1 station, second adjacent"
"$cli" minsep --target-class B --other-class C1 --relation 2nd
echo
echo "== 77.5042 degrees as DMS text"
"$cli" dms 77.5042
echo
if [ -f demo/DemoMaster.fmd ]; then
  echo "== The demo data set in demo/ (synthetic stations at real city positions, not for filing)"
  ls -l demo/DemoMaster.fmd demo/stmapH.dat demo/comapH.dat demo/LocalData.fmd
  echo
  echo "== The demo master database passes the master-database check"
  "$cli" db check demo/DemoMaster.fmd
fi
