# shellcheck shell=bash
# Sourced by the bench scripts, which set $bin (the built programs) and $work (a scratch folder).

# start_service COMPOSITES YEARS DELAY_MS [serve options]: generates a data set in $work/service
# and serves it on a free port of 127.0.0.1, each request answered DELAY_MS late; sets service_pid
# and port. With --tls-cert and --tls-key among the serve options, over HTTPS.
start_service() {
  rm -rf "$work/service" "$work/port"
  "$bin/corvanet-demo-service" generate --root "$work/service" --composites "$1" --years "$2" \
    --seed 3 >/dev/null
  serve_service "$3" "${@:4}"
}

# serve_service DELAY_MS [serve options]: serves $work/service again; sets service_pid and port.
serve_service() {
  rm -f "$work/port"
  "$bin/corvanet-demo-service" serve --root "$work/service" --port 0 --port-file "$work/port" \
    --user bench --password bench --fault "* delay $1" "${@:2}" >/dev/null 2>&1 &
  service_pid=$!
  for _ in $(seq 1 100); do [ -s "$work/port" ] && break; sleep 0.05; done
  port=$(cat "$work/port")
}

# make_certificate DIR: a throw-away authority (DIR/authority.pem) and a certificate for 127.0.0.1
# it signed (DIR/service.pem, DIR/service.key), valid two days.
make_certificate() {
  bash "$(dirname "${BASH_SOURCE[0]}")/../scripts/make-certificate.sh" "$1" 2
}

# install DIR [SCHEME] [CAFILE]: an installation in DIR that uses the service (over "https://" when
# SCHEME says so, trusting CAFILE), with All Periods listed.
install() {
  local cli=("$bin/corvanet-cli" --base-dir "$1/")
  "${cli[@]}" settings UserName=bench Password=bench "IPAddress=${2:-}127.0.0.1:$port" \
    "CAFile=${3:-}" DownloadCompleteMessageNo=True SystemMessagesNo=True >/dev/null
  "${cli[@]}" list 7 vendor eSignal periods D,W,M,Q >/dev/null
}
