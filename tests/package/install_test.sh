#!/bin/sh
# install_test.sh BUILD - the two components leave exactly these files, and the virtual switch's tools find their library
# where they are installed.
set -eu
build=$1
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT

installed() { # COMPONENT
    cmake --install "$build" --component "$1" --prefix "$root/$1" >/dev/null
    (cd "$root/$1" && find . -type f ! -path '*/schemas/*' ! -name '*.json' | sort)
}

expect() { # COMPONENT, the list on standard input
    sort >"$root/$1.expected"
    installed "$1" >"$root/$1.there"
    diff "$root/$1.expected" "$root/$1.there" || { echo "component $1: expected <, installed >"; exit 1; }
}

expect devmgr <<END
./bin/devmgr
./etc/default/devmgr
./lib/systemd/system/devmgr.service
./share/doc/devmgr/CHANGELOG.md
./share/doc/devmgr/README.md
./share/doc/devmgr/architecture.md
./share/doc/devmgr/consuming.md
./share/doc/devmgr/documents.md
./share/doc/devmgr/porting.md
./share/man/man8/devmgr.8.gz
END
expect virtual <<END
./etc/default/devmgr-virtual
./lib/systemd/system/devmgr-virtual.service
./libexec/devmgr/docnames
./libexec/devmgr/follow
./libexec/devmgr/libopenclt.so
./libexec/devmgr/libproc_libs.so
./libexec/devmgr/run-virtual
./libexec/devmgr/seed.py
./libexec/devmgr/vswitch
./libexec/devmgr/writeback
./share/doc/devmgr/scenarios.md
END
[ -n "$(ls "$root/devmgr/share/doc/devmgr/schemas")" ]
for scenario in "$root"/virtual/share/devmgr/scenarios/*.json; do
    "$root/virtual/libexec/devmgr/vswitch" --check "$scenario"
done
[ -f "$scenario" ]
