#!/bin/bash
# packages.sh FOLDER-OF-PACKAGES: installs the Debian packages in a Debian that has nothing but a compiler, as an
# administrator and a developer would: tn shows a file, the storage example is compiled with pkg-config,
# is sent a study by storescu, and keeps it; then the packages are removed and leave nothing. As root. PORT is the
# one to listen on.
set -euo pipefail

PACKAGES=$(cd "$1" && pwd)
ROOT=$(cd "$(dirname "$0")/../.." && pwd)
PORT=${PORT:-11194}
WORK=$(mktemp -d "${TMPDIR:-/tmp}/talvenor-debian.XXXXXX")
DEBIAN=$WORK/debian
NODE=
cleanup() {
   if [ -n "$NODE" ]; then kill "$NODE" 2> /dev/null || true; wait "$NODE" 2> /dev/null || true; fi
   umount "$DEBIAN/proc" 2> /dev/null || true
   rm -rf --one-file-system "$WORK"
}
trap cleanup EXIT

ok() { printf '  ok    %s\n' "$*"; }
fail() { printf '  FAIL  %s\n' "$*" >&2; exit 1; }
inside() { chroot "$DEBIAN" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"; }
# quietly WHAT COMMAND...
quietly() {
   local what=$1
   shift
   "$@" > "$WORK/log" 2>&1 || { tail -n 20 "$WORK/log" >&2; fail "$what"; }
   ok "$what"
}

RELEASE=$(. /etc/os-release && echo "$VERSION_CODENAME")
quietly "a Debian of its own ($RELEASE)" mmdebstrap --variant=minbase --include=g++,pkg-config "$RELEASE" "$DEBIAN"
mount -t proc proc "$DEBIAN/proc" 2> /dev/null || true   # not everybody may; nothing here needs it
mkdir "$DEBIAN/packages" "$DEBIAN/store" "$DEBIAN/trial"
cp "$PACKAGES"/*.deb "$DEBIAN/packages"
cp "$ROOT/examples/storage-scp.cpp" "$ROOT"/data/samples/*.dcm "$DEBIAN/trial"
inside bash -c 'find / -xdev -not -path "/trial/*" -not -path "/var/*" | sort' > "$WORK/before"

quietly "apt installs the packages" inside bash -c 'apt-get update && apt-get install -y --no-install-recommends /packages/*.deb'
quietly "tn shows a file" inside bash -c 'tn dump /trial/ct-explicit.dcm | grep "Patient.s Name"'
quietly "tn has a manual and completions" \
   inside test -s /usr/share/man/man1/tn-dump.1.gz -a -s /usr/share/bash-completion/completions/tn
quietly "pkg-config tells what the storage example needs" \
   inside bash -c 'g++ -std=c++20 /trial/storage-scp.cpp $(pkg-config --cflags --libs talvenor) -pthread -o /trial/storage-scp'

inside /trial/storage-scp "$PORT" /store > "$WORK/node.log" 2>&1 & NODE=$!
for _ in {1..100}; do
   if (exec 3<> "/dev/tcp/127.0.0.1/$PORT") 2> /dev/null; then break; fi
   sleep 0.05
done
quietly "storescu sends it a study" \
   storescu -aec ARCHIVE 127.0.0.1 "$PORT" "$DEBIAN/trial/ct-explicit.dcm" "$DEBIAN/trial/sr-implicit.dcm"
COUNT=$(find "$DEBIAN/store" -name '*.dcm' | wc -l)
[ "$COUNT" -eq 2 ] || fail "$COUNT files are kept, not 2"
for FILE in "$DEBIAN"/store/*.dcm; do
   quietly "kept: $(basename "$FILE")" inside tn dump "/store/$(basename "$FILE")"
done

quietly "the bills of materials are true" "$ROOT/tools/check-sbom.py" "$DEBIAN/usr"
quietly "apt removes the packages" inside apt-get purge -y --autoremove tn talvenor-dictionaries libtalvenor-dev libtalvenor1
inside bash -c 'find / -xdev -not -path "/trial/*" -not -path "/var/*" | sort' > "$WORK/after"
LEFT=$(comm -13 "$WORK/before" "$WORK/after" | grep -i -e talvenor -e '/tn\b' || true)
[ -z "$LEFT" ] || fail "left behind: $LEFT"
ok "nothing is left"
echo "The packages work on a fresh Debian."
