#!/bin/sh
# install_test.sh BUILD - the two components leave exactly these files, hardened; the virtual switch's tools find their
# library where they are installed, and a library that lacks a call is found before the daemon runs.
set -eu
build=$1
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT

installed() { # COMPONENT
    cmake --install "$build" --component "$1" --prefix "$root/$1" >/dev/null
    (cd "$root/$1" && find . -type f ! -path '*/schemas/*' ! -name '*.json' | sed 's,^\./usr/,./,' | sort)
}

expect() { # COMPONENT, the list on standard input
    sort >"$root/$1.expected"
    installed "$1" >"$root/$1.there"
    diff "$root/$1.expected" "$root/$1.there" || { echo "component $1: expected <, installed >"; exit 1; }
}

expect devmgr <<END
./bin/devmgr
./bin/devmgrctl
./etc/default/devmgr
./lib/systemd/system/devmgr.service
./share/bash-completion/completions/devmgrctl
./share/doc/devmgr/CHANGELOG.md
./share/doc/devmgr/README.md
./share/doc/devmgr/architecture.md
./share/doc/devmgr/consuming.md
./share/doc/devmgr/documents.md
./share/doc/devmgr/porting.md
./share/doc/devmgr/status.md
./share/doc/devmgr/troubleshooting.md
./share/man/man1/devmgrctl.1.gz
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
./share/man/man1/vswitch.1.gz
./share/man/man5/devmgr-scenario.5.gz
END
usr= # a build whose prefix is "/" installs most of it below /usr
[ -d "$root/devmgr/usr" ] && usr=usr/
libraries=$root/virtual/${usr}libexec/devmgr
[ -n "$(ls "$root/devmgr/${usr}share/doc/devmgr/schemas")" ]
for scenario in "$root/virtual/${usr}"share/devmgr/scenarios/*.json; do
    "$libraries/vswitch" --check "$scenario"
done
[ -f "$scenario" ]

failed=0
fault() { # MESSAGE
    echo "$1"
    failed=1
}

# Checked copies are left out of a build with sanitizers, which watch over the same.
checked=_chk@
grep -q '^DEVMGR_SANITIZE:[A-Z]*=.' "$build/CMakeCache.txt" && checked=
for file in "$root/devmgr/${usr}bin/devmgr" "$libraries"/*; do
    [ "$(head -c 4 "$file" | tail -c 3)" = ELF ] || continue
    readelf -dlW --dyn-syms "$file" >"$root/elf"
    while read -r what pattern; do
        case $what:$file in address:*.so | canary:*.so | copies:*.so) continue ;; esac
        grep -qE -- "$pattern" "$root/elf" || fault "$file: $what: no $pattern"
    done <<END
binding   \(FLAGS\).*BIND_NOW
tables    GNU_RELRO
stack     GNU_STACK .* RW +0x
address   \(FLAGS_1\).*PIE
canary    __stack_chk_fail
copies    $checked
END
    case $(sed -n 's/.*R\(UN\)\{0,1\}PATH).*: *//p' "$root/elf"),${file#"$libraries/"} in
    ,* | '[$ORIGIN],vswitch' | '[$ORIGIN],writeback' | '[$ORIGIN],docnames') ;;
    *) fault "$file: looks for libraries in $(grep PATH "$root/elf")" ;;
    esac
done

# What systemd says, where it is: no line is unknown to it, and at most 4.0 of 10 points of exposure.
for unit in "$root"/*/lib/systemd/system/*.service; do
    command -v systemd-analyze >/dev/null || break
    systemd-analyze verify --man=no "$unit" 2>&1 | grep -F "$unit:" && failed=1
    systemd-analyze security --no-pager --offline=true --threshold=40 "$unit" >"$root/exposure" ||
        fault "$unit: $(tail -n 1 "$root/exposure")"
done

mkdir "$root/lacking"
LC_ALL=C sed 's/openapiClientRegister/openapiClientRegisteX/' "$libraries/libopenclt.so" >"$root/lacking/libopenclt.so"
for row in "$libraries 0" "$root/lacking:$libraries 127"; do
    status=0
    LD_LIBRARY_PATH=${row% *} "$root/devmgr/${usr}bin/devmgr" --version >"$root/said" 2>&1 || status=$?
    [ "$status" = "${row#* }" ] || fault "--version with ${row% *}: status $status; $(cat "$root/said")"
done
exit "$failed"
