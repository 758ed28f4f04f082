# shellcheck shell=bash
# Sourced by the bench scripts, which set $bin (the built programs) and $work (a scratch folder).

# start_service COMPOSITES YEARS DELAY_MS: generates a data set in $work/service and serves it on a
# free port of 127.0.0.1, each request answered DELAY_MS late; sets service_pid and port.
start_service() {
  rm -rf "$work/service" "$work/port"
  "$bin/corvanet-demo-service" generate --root "$work/service" --composites "$1" --years "$2" \
    --seed 3 >/dev/null
  "$bin/corvanet-demo-service" serve --root "$work/service" --port 0 --port-file "$work/port" \
    --user bench --password bench --fault "* delay $3" >/dev/null 2>&1 &
  service_pid=$!
  for _ in $(seq 1 100); do [ -s "$work/port" ] && break; sleep 0.05; done
  port=$(cat "$work/port")
}

# install DIR: an installation in DIR that uses the service, with All Periods listed.
install() {
  local cli=("$bin/corvanet-cli" --base-dir "$1/")
  "${cli[@]}" settings UserName=bench Password=bench "IPAddress=127.0.0.1:$port" \
    DownloadCompleteMessageNo=True SystemMessagesNo=True >/dev/null
  "${cli[@]}" list 7 vendor eSignal periods D,W,M,Q >/dev/null
}
