#!/usr/bin/env bash
# Debian ships cpp-httplib compiled for Linux, with a header that only declares; the Windows build
# compiles the library's whole header instead. This puts that header, from Debian's own source
# package (its patches applied), in the folder given ($1/httplib.h). Quick no-op when it is there.
set -euo pipefail
dest=$1
[ -f "$dest/httplib.h" ] && exit 0
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# A private source list, so the machine's own apt configuration is left as it was.
mkdir -p "$work/lists/partial" "$work/src"
echo "deb-src http://deb.debian.org/debian bookworm main" >"$work/sources.list"
apt_opts=(-q -o Dir::Etc::SourceList="$work/sources.list" -o Dir::Etc::SourceParts=/dev/null
  -o Dir::State::Lists="$work/lists")
apt-get "${apt_opts[@]}" update >/dev/null
version=$(dpkg-query -W -f='${Version}' libcpp-httplib-dev)
(cd "$work/src" && apt-get "${apt_opts[@]}" source "cpp-httplib=$version" >/dev/null 2>&1)
mkdir -p "$dest"
cp "$work"/src/cpp-httplib-*/httplib.h "$dest/httplib.h"
echo "cpp-httplib $version header in $dest"
