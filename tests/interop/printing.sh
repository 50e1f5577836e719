# Printing. Sourced by interop.sh.
prints=$work/prints jobs=$work/jobs luts=$work/luts printer=$(free_port)
mkdir -p "$prints" "$jobs" "$luts"
start printer "$tn" serve --aet PRINTER --port "$printer" --print "$prints"
listening "$printer"

# The printer as dcmtk's print tools see it; the rest of its configuration is the one that is installed.
awk -v jobs="$jobs" -v luts="$luts" -v port="$printer" '
   /^\[\[/ { isNetwork = ($0 == "[[COMMUNICATION]]") }
   isNetwork && !isWritten {
      print "[[LUT]]\n[STEEP]\nFilename = steep.dcm\nDescription = black or white"
      print "[[COMMUNICATION]]\n[PRINTER]\nAetitle = PRINTER\nDescription = tn\nHostname = 127.0.0.1\nPort = " port
      print "Type = PRINTER\nDisableNewVRs = true\nDisplayFormat = 1,1\\1,2\\2,2\\2,3\nFilmSizeID = 14INX17IN"
      print "ImplicitOnly = false\nMaxPDU = 16384\nMediumType = PAPER\nSupports12Bit = true\nSupportsPresentationLUT = true"
      print "PresentationLUTPreferSCPRendering = true"
      isWritten = 1
   }
   isNetwork { next }
   /^\[/ { isLUT = ($0 == "[LUT]") }
   /^Directory *=/ { print "Directory = " (isLUT ? luts : jobs); next }
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

# Presentation LUTs: a shape, the other shape, and a table.
{
   printf '(2050,0010) SQ (Sequence with explicit length #=1)\n(fffe,e000) na (Item)\n(0028,3002) US 4096\\0\\12\n(0028,3006) US 0'
   for i in $(seq 4095); do printf '\\%s' $((i < 2048 ? 0 : 4095)); done
   printf '\n(fffe,e00d) na (ItemDelimitationItem)\n(fffe,e0dd) na (SequenceDelimitationItem)\n'
} > "$work/steep.txt"
dump2dcm -q +l 65536 +te "$work/steep.txt" "$luts/steep.dcm"
rm -rf "${prints:?}"/*
for lut in --identity --lin-od "--plut STEEP"; do
   rm -rf "${jobs:?}"/*
   # shellcheck disable=SC2086
   dcmpsprt -q -c "$work/print.cfg" -p PRINTER --layout 1 1 --filmsize 14INX17IN $lut "${images[0]}" > /dev/null 2>&1
   job=$(find "$jobs" -name 'SP_*.dcm' | head -1)
   row "dcmprscu prints with $lut" 0 '^$' dcmprscu -q -c "$work/print.cfg" -p PRINTER "$job"
done
row "the three are there with their LUTs" 0 '^4096.*\[IDENTITY\]\[LIN OD\]$' bash -c \
   'dcmdump +P 0028,3002 +P 2050,0020 "$0"/*/presentation-lut-1.dcm | grep -o "4096\|\[[A-Z ]*\]" | sort | tr -d "\n"' "$prints"
row "each has a picture of its own" 0 '^3$' bash -c 'md5sum "$0"/*/sheet.png | cut -c 1-32 | sort -u | wc -l' "$prints"
mv "$prints" "$prints.away"
row "dcmprscu sees that the printer fails" any 'unable to print' dcmprscu -c "$work/print.cfg" -p PRINTER "$job"
mv "$prints.away" "$prints"
row "dcmprscu prints when the printer is well again" 0 '^$' dcmprscu -q -c "$work/print.cfg" -p PRINTER "$job"

# tn print, on our printer and on dcmtk's in its two profiles; the restricted one takes nothing without a presentation LUT.
rm -rf "${prints:?}"/*
row "tn print asks how the printer is" 0 'is NORMAL' "$tn" print --status "PRINTER@127.0.0.1:$printer"
row "tn print prints a film of 2 by 2" 0 'film 1: 3 images printed' \
   "$tn" print --film 2x2 --bits 12 "PRINTER@127.0.0.1:$printer" "${images[@]}"
row "tn print prints colours" 0 '1 film printed' \
   "$tn" print --film 1x2 --colour --session "PRINTER@127.0.0.1:$printer" data/samples/{us-jpeg,ct-explicit}.dcm
row "two films are there, each with a picture" 0 '^2$' bash -c 'ls "$0"/*/sheet.png | wc -l' "$prints"
full=$(free_port) restricted=$(free_port)
mkdir -p "$work/dcmprscp"
awk -v full="$full" -v restricted="$restricted" -v spool="$work/dcmprscp" '
   /^Port = 10005/ { $0 = "Port = " full }
   /^Port = 10006/ { $0 = "Port = " restricted }
   /^Directory *=/ { $0 = "Directory = " spool }
   { print }' /etc/dcmtk/dcmpstat.cfg > "$work/dcmprscp.cfg"
start dcmprscp-full dcmprscp -d --dump -c "$work/dcmprscp.cfg" -p IHEFULL
start dcmprscp-restricted dcmprscp -d --dump -c "$work/dcmprscp.cfg" -p IHERESTRICTED
listening "$full"
listening "$restricted"
for way in "" --session; do
   # shellcheck disable=SC2086
   row "tn print $way prints on dcmprscp's full profile" 0 'film 1: 2 images' "$tn" print $way --film 1x2 --copies 2 \
      --size 14INX17IN --orientation portrait --priority high --medium PAPER "IHEFULL@127.0.0.1:$full" "${images[@]:0:2}"
   # shellcheck disable=SC2086
   row "tn print $way prints on dcmprscp's restricted profile" 0 'film 3: 1 image' "$tn" print $way --bits 12 \
      "IHERESTRICTED@127.0.0.1:$restricted" "${images[@]}"
done
for profile in full restricted; do
   row "every status of dcmprscp's $profile profile is 0" 0 '^0x0000$' bash -c \
      'sed -n "s/.*DIMSE Status *: \(0x[0-9a-f]*\).*/\1/p" "$0" | sort -u | tr -d "\n"' "$work/dcmprscp-$profile.log"
done
row "dcmprscp refuses a film that it has no layout for" 8 'setting up: .*0106H' \
   "$tn" print --film 2x2 "IHERESTRICTED@127.0.0.1:$restricted" "${images[@]}"
