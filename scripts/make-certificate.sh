#!/usr/bin/env bash
# A throw-away certificate authority and a certificate it signed for 127.0.0.1 and localhost, for
# serving the demo service over HTTPS: DIR/authority.pem (what a client trusts, the setting
# CAFile), DIR/service.pem and DIR/service.key (the service's --tls-cert and --tls-key).
#
#   scripts/make-certificate.sh DIR [DAYS]
set -euo pipefail
dir=$1
days=${2:-30}
mkdir -p "$dir"
openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days "$days" \
  -subj "/CN=Corvanet demo authority" -keyout "$dir/authority.key" -out "$dir/authority.pem" \
  -addext "basicConstraints=critical,CA:TRUE" -addext "keyUsage=critical,keyCertSign" 2>/dev/null
openssl req -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -subj "/CN=127.0.0.1" \
  -keyout "$dir/service.key" -out "$dir/service.csr" 2>/dev/null
printf 'subjectAltName=IP:127.0.0.1,DNS:localhost\nextendedKeyUsage=serverAuth\n' >"$dir/service.ext"
openssl x509 -req -in "$dir/service.csr" -CA "$dir/authority.pem" -CAkey "$dir/authority.key" \
  -CAcreateserial -days "$days" -extfile "$dir/service.ext" -out "$dir/service.pem" 2>/dev/null
