#!/usr/bin/env bash
# Pictures of the window as a new user meets it: a demo data service on a free loopback port, a
# fresh installation, and corvanet-screenshots driving the window under a virtual display. The
# PNG files land in BUILD/screenshots/.
set -euo pipefail
build=${1:-build}
bin="$(cd "$build/bin" && pwd)"
out="$(cd "$build" && pwd)/screenshots"
work="$(mktemp -d)"
user="demo"
password='p@ss:w/rd'

rm -rf "$out"
mkdir -p "$out" "$work/service" "$work/installation"
"$bin/corvanet-demo-service" generate --root "$work/service" --composites 12 --years 2 --seed 7 \
  >/dev/null
: >"$work/faults"
"$bin/corvanet-demo-service" serve --root "$work/service" --host 127.0.0.1 --port 0 \
  --port-file "$work/port" --user "$user" --password "$password" --faults "$work/faults" \
  2>"$work/service.log" &
service_pid=$!
trap 'kill $service_pid 2>/dev/null || true; wait $service_pid 2>/dev/null || true; rm -rf "$work"' EXIT
for _ in $(seq 1 100); do [ -s "$work/port" ] && break; sleep 0.05; done
[ -s "$work/port" ] || { echo "the demo service did not start"; cat "$work/service.log"; exit 1; }

# A desktop for the shortcut button and no stray settings from the user running this.
export HOME="$work/home" XDG_DESKTOP_DIR="$work/home/Desktop"
mkdir -p "$XDG_DESKTOP_DIR"
xvfb-run -a -s "-screen 0 1600x1200x24" "$bin/corvanet-screenshots" --out "$out" \
  --base-dir "$work/installation" --service "127.0.0.1:$(cat "$work/port")" --user "$user" \
  --password "$password" --faults "$work/faults" --service-pid "$service_pid"
echo "Pictures: $out"
