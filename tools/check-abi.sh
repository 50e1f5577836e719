#!/bin/bash
# check-abi.sh [COMMIT]: does a host that was built against the library of COMMIT run with the library of this tree? Builds
# both in build/abi and compares them; what was only added is told. COMMIT is the last tag, or without one the commit
# before this. Run from the root of the source tree. Exit codes: 0 it does, 1 it does not, 2 that cannot be told.
set -euo pipefail

ROOT=$(pwd)
WORK=$ROOT/build/abi
BASE=${1:-$(git describe --tags --abbrev=0 2> /dev/null || echo HEAD~1)}
COMMIT=$(git rev-parse --verify --quiet "$BASE^{commit}") || { echo "there is no commit $BASE" >&2; exit 2; }
mkdir -p "$WORK"
trap 'git worktree remove --force "$WORK/source" 2> /dev/null || true' EXIT

# library SOURCE BUILD-DIR: no optimisation changes the interface, and names relative to SOURCE let ccache serve both trees.
library() {
   local log=$2.log
   (cmake -S "$1" -B "$2" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g" \
       -DTALVENOR_BUILD_TN=OFF -DTALVENOR_BUILD_TESTS=OFF &&
    CCACHE_BASEDIR=$1 CCACHE_NOHASHDIR=1 cmake --build "$2" --target talvenor -j "${JOBS:-2}") > "$log" 2>&1 ||
      { tail -n 20 "$log" >&2; echo "no library of $1; see $log" >&2; exit 2; }
}

git worktree remove --force "$WORK/source" 2> /dev/null || true
git worktree prune
git worktree add --quiet --detach "$WORK/source" "$COMMIT" || exit 2
echo "Building the library of $BASE ($(git log -1 --format='%h, %s' "$COMMIT"))"
library "$WORK/source" "$WORK/then"
echo "Building the library of this tree"
library "$ROOT" "$WORK/now"

# compare [OPTION...]: types that no public header declares are nobody's business. abidiff ends with bits: 1 and 2 are its
# own failures, 4 a change, 8 one that is incompatible by its kind.
compare() {
   abidiff --leaf-changes-only --drop-private-types \
      --headers-dir1 "$WORK/source/talvenor" --headers-dir2 "$ROOT/talvenor" \
      --suppressions "$ROOT/tools/abi.suppressions" "$@" \
      "$WORK/then/talvenor/libtalvenor.so" "$WORK/now/talvenor/libtalvenor.so"
}
echo "Comparing them, which takes some minutes"
compare > "$WORK/report" || true
RESULT=0
compare --no-added-syms > "$WORK/breaks" 2>&1 || RESULT=$?
if [ $((RESULT & 3)) -ne 0 ]; then cat "$WORK/breaks" >&2; exit 2; fi
cat "$WORK/report"
if [ "$RESULT" -ne 0 ]; then
   echo "The binary interface of $BASE is not kept: $WORK/breaks"
   exit 1
fi
echo "Hosts built against $BASE run with this library."
