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
# it signed (DIR/service.pem, DIR/service.key).
make_certificate() {
  mkdir -p "$1"
  openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 \
    -subj "/CN=bench authority" -keyout "$1/authority.key" -out "$1/authority.pem" \
    -addext "basicConstraints=critical,CA:TRUE" -addext "keyUsage=critical,keyCertSign" 2>/dev/null
  openssl req -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -subj "/CN=127.0.0.1" \
    -keyout "$1/service.key" -out "$1/service.csr" 2>/dev/null
  printf 'subjectAltName=IP:127.0.0.1\nextendedKeyUsage=serverAuth\n' >"$1/service.ext"
  openssl x509 -req -in "$1/service.csr" -CA "$1/authority.pem" -CAkey "$1/authority.key" \
    -CAcreateserial -days 2 -extfile "$1/service.ext" -out "$1/service.pem" 2>/dev/null
}

# install DIR [SCHEME] [CAFILE]: an installation in DIR that uses the service (over "https://" when
# SCHEME says so, trusting CAFILE), with All Periods listed.
install() {
  local cli=("$bin/corvanet-cli" --base-dir "$1/")
  "${cli[@]}" settings UserName=bench Password=bench "IPAddress=${2:-}127.0.0.1:$port" \
    "CAFile=${3:-}" DownloadCompleteMessageNo=True SystemMessagesNo=True >/dev/null
  "${cli[@]}" list 7 vendor eSignal periods D,W,M,Q >/dev/null
}
