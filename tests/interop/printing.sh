# Printing. Sourced by interop.sh.
prints=$work/prints jobs=$work/jobs printer=$(free_port)
mkdir -p "$prints" "$jobs"
start printer "$tn" serve --aet PRINTER --port "$printer" --print "$prints"
listening "$printer"

# The printer as dcmtk's print tools see it; the rest of its configuration is the one that is installed.
awk -v jobs="$jobs" -v port="$printer" '
   /^\[\[/ { isNetwork = ($0 == "[[COMMUNICATION]]") }
   isNetwork && !isWritten {
      print "[[COMMUNICATION]]\n[PRINTER]\nAetitle = PRINTER\nDescription = tn\nHostname = 127.0.0.1\nPort = " port
      print "Type = PRINTER\nDisableNewVRs = true\nDisplayFormat = 1,1\\1,2\\2,2\\2,3\nFilmSizeID = 14INX17IN"
      print "ImplicitOnly = false\nMaxPDU = 16384\nMediumType = PAPER\nSupports12Bit = true\nSupportsPresentationLUT = true"
      isWritten = 1
   }
   isNetwork { next }
   /^Directory *=/ { print "Directory = " jobs; next }
   { print }' /etc/dcmtk/dcmpstat.cfg > "$work/print.cfg"

# The pixels of files, sorted: size and digest of each. Fails when there are none.
pixels() {
   local file folder
   for file in "$@"; do
      folder=$(mktemp -d -p "$work")
      dcmdump -q +W "$folder" "$file" > /dev/null 2>&1
      stat -c %s "$folder"/*.raw && md5sum < "$folder"/*.raw || return 1
   done | sort
}
same_pixels() {
   local theirs ours
   theirs=$(set -o pipefail; pixels "$1"/HG_*.dcm) && ours=$(set -o pipefail; pixels "$2"/image-*.dcm) || return 1
   diff <(echo "$theirs") <(echo "$ours") && echo same
}
export work
export -f pixels same_pixels

images=(data/samples/ct-explicit.dcm data/samples/cr-big-endian.dcm data/samples/ct-explicit.dcm)
for layout in "1 2" "2 2" "2 3"; do
   rm -rf "${jobs:?}"/* "${prints:?}"/*
   # shellcheck disable=SC2086
   dcmpsprt -q -c "$work/print.cfg" -p PRINTER --layout $layout --filmsize 14INX17IN --identity "${images[@]:0:${layout%% *}+1}" > /dev/null 2>&1
   job=$(find "$jobs" -name 'SP_*.dcm' | head -1)
   row "dcmprscu prints a film of $layout" 0 '^$' dcmprscu -q -c "$work/print.cfg" -p PRINTER "$job"
   row "its pixels are identical" 0 same bash -c 'same_pixels "$@"' same "$jobs" "$prints"/film-*-1
   row "dcmprscu prints the session" 0 '^$' dcmprscu -q -c "$work/print.cfg" -p PRINTER --session-print "$job"
   row "two films are there, each with a picture" 0 '^2$' bash -c 'ls "$0"/*/sheet.png | wc -l' "$prints"
done
row "the printer still answers" 0 'ms' "$tn" echo "PRINTER@127.0.0.1:$printer"
