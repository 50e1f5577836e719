#!/bin/bash
# Proves that an installed Talvenor is all that a host needs: check.sh BUILD-DIR installs from there into a new folder, moves
# it, builds the examples against it with CMake and with pkg-config, runs them with an empty environment, and compiles the
# fragments of the guide. PORT is the first of two ports to listen on.
set -euo pipefail

ROOT=$(cd "$(dirname "$0")/.." && pwd)
BUILD=$(cd "$1" && pwd)
PORT=${PORT:-11190}
WORK=$(mktemp -d "${TMPDIR:-/tmp}/talvenor-examples.XXXXXX")
RUNNING=()
cleanup() {
   for PID in "${RUNNING[@]}"; do kill "$PID" 2> /dev/null || true; done
   rm -rf "$WORK"
}
trap cleanup EXIT

ok() { printf '  ok    %s\n' "$*"; }
fail() { printf '  FAIL  %s\n' "$*" >&2; exit 1; }
# expect WHAT TEXT COMMAND...: the output of COMMAND has TEXT.
expect() {
   local what=$1 text=$2 output
   shift 2
   output=$("$@" 2>&1) || fail "$what: $output"
   grep -qF -- "$text" <<< "$output" || fail "$what: no \"$text\" in: $output"
   ok "$what"
}
# Programs run with nothing in their environment, in a folder that is not the source tree.
bare() { (cd "$WORK" && exec env -i "$@"); }
wait_for_port() {
   for _ in $(seq 100); do
      if (exec 3<> "/dev/tcp/127.0.0.1/$1") 2> /dev/null; then return; fi
      sleep 0.05
   done
   fail "nothing listens on port $1"
}

echo "Installing"
cmake --install "$BUILD" --prefix "$WORK/first" > "$WORK/install.log" || fail "cmake --install"
mv "$WORK/first" "$WORK/prefix"
PREFIX=$WORK/prefix
export PKG_CONFIG_PATH=$PREFIX/lib/pkgconfig
FOUND=$(grep -rlaF -e "$ROOT" -e "$BUILD" -e "$WORK/first" "$PREFIX" || true)
[ -z "$FOUND" ] || fail "these name the tree they were built in: $FOUND"
ok "nothing names the tree that it was built in"
expect "the bill of materials" "are true" "$ROOT/tools/check-sbom.py" "$PREFIX"
SAMPLE=$WORK/ct.dcm
cp "$ROOT/data/samples/ct-explicit.dcm" "$SAMPLE"
expect "tn finds its library and its dictionaries" "Patient's Name" bare "$PREFIX/bin/tn" dump "$SAMPLE"

echo "Building with CMake"
cmake -S "$ROOT/examples" -B "$WORK/cmake" -DCMAKE_PREFIX_PATH="$PREFIX" -DCMAKE_BUILD_TYPE=Debug > "$WORK/cmake.log" ||
   fail "find_package: $(cat "$WORK/cmake.log")"
cmake --build "$WORK/cmake" -j "${JOBS:-2}" > "$WORK/build.log" || fail "the build: $(tail -n 30 "$WORK/build.log")"
ok "all examples"

echo "Building with pkg-config"
mkdir "$WORK/bin"
for SOURCE in "$ROOT"/examples/*.cpp; do
   NAME=$(basename "$SOURCE" .cpp)
   # shellcheck disable=SC2046 # options, not a text
   g++ -std=c++20 -Wall -Wextra -Wpedantic -Werror "$SOURCE" $(pkg-config --cflags --libs talvenor-data) -pthread \
      "-Wl,-rpath,$PREFIX/lib" -o "$WORK/bin/$NAME" || fail "$NAME"
done
ok "all examples"

echo "Compiling the guide"
"$ROOT/docs/compile-guide.sh" "$ROOT/docs/guide.md" "$WORK/guide" || fail "the guide"

echo "Running"
for BIN in "$WORK/cmake" "$WORK/bin"; do
   expect "read-value" "Lehto^Veikko" bare "$BIN/read-value" "$SAMPLE"
   bare "$BIN/change-and-save" "$SAMPLE" "$WORK/changed.dcm" 0815 || fail "change-and-save"
   expect "change-and-save" "0815" bare "$PREFIX/bin/tn" dump "$WORK/changed.dcm"

   # A file whose pixels are four times what the program may have in all.
   python3 "$ROOT/examples/make-huge.py" "$SAMPLE" "$WORK/huge.dcm" 256
   (ulimit -v 65536; bare "$BIN/stream-huge" "$WORK/huge.dcm" "$WORK/copy.dcm" 'Nobody^Is') || fail "stream-huge"
   expect "stream-huge, 256 MiB of pixels in 64 MiB of memory" "Nobody^Is" \
      bare "$PREFIX/bin/tn" dump --until 7fe0,0010 "$WORK/copy.dcm"
   cmp <(tail -c 1000000 "$WORK/huge.dcm") <(tail -c 1000000 "$WORK/copy.dcm") || fail "stream-huge: other pixels"
   rm -f "$WORK/huge.dcm" "$WORK/copy.dcm"

   mkdir -p "$WORK/store"
   (cd "$WORK" && exec env -i "$BIN/storage-scp" "$PORT" "$WORK/store") & RUNNING+=($!)
   wait_for_port "$PORT"
   expect "send to storage-scp" "stored" bare "$BIN/send" localhost "$PORT" ARCHIVE "$WORK/changed.dcm"
   if command -v storescu > /dev/null; then
      storescu -aec ARCHIVE localhost "$PORT" "$SAMPLE" "$ROOT/data/samples/sr-implicit.dcm" || fail "storescu"
      [ "$(find "$WORK/store" -name '*.dcm' | wc -l)" -eq 3 ] || fail "storescu: not three files in $WORK/store"
      ok "storescu of dcmtk sends to storage-scp"
   fi
   for FILE in "$WORK"/store/*.dcm; do
      expect "stored: $(basename "$FILE")" "SOP Instance UID" bare "$PREFIX/bin/tn" dump "$FILE"
   done
   rm -rf "$WORK/store"
   kill "${RUNNING[-1]}"

   (cd "$WORK" && exec env -i "$BIN/query-scp" "$((PORT + 1))") & RUNNING+=($!)
   wait_for_port "$((PORT + 1))"
   expect "query-scp" "Virtanen^Aino" \
      bare "$PREFIX/bin/tn" find --csv -k PatientID=4712 "EXAMPLE@localhost:$((PORT + 1))"
   kill "${RUNNING[-1]}"
   wait 2> /dev/null || true
done
echo "All examples work."
