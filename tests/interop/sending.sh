# Rows of interop.sh: tn send to nodes of other toolkits, and what arrived there beside what was sent, element by
# element. SAMPLES may name a folder of further files.

samples=(data/samples/*.dcm)
if [ -n "${SAMPLES:-}" ]; then samples+=("$SAMPLES"/*.dcm); fi

# elements OUT FILE...: the elements of each dataset, a file for each SOP instance; only what $kept lets pass.
kept=cat
pixels() { grep -a $'^/\t7fe0,0010\t' | cut -f 2,4,5; }
elements() {
   local out=$1 file name
   shift
   mkdir -p "$out"
   for file in "$@"; do
      "$tn" dump --elements "$file" 2> /dev/null | grep -av $'^/\t0002,' > "$work/elements"
      name=$(grep -am 1 $'^/\t0008,0018\t' "$work/elements" | tr -c '[:alnum:]\n' _)
      [ -z "$name" ] || "$kept" < "$work/elements" > "$out/$name"
   done
}

# arrived NAME REPORT FOLDER: everything that the report says was sent is in the folder as it was. Of samples that share
# a SOP instance UID nodes keep the first or the last: they are left out.
arrived() {
   local name=$1 report=$2 folder=$3 paths received
   mapfile -t paths < <(awk -F '\t' '$3 == "sent" || $3 == "warning" { path[$2] = $1; ++count[$2] }
                                     END { for (uid in path) if (count[uid] == 1) print path[uid] }' "$report")
   mapfile -t received < <(find "$folder" -type f)
   rm -rf "$work/sent" "$work/received"
   elements "$work/sent" "${paths[@]}"
   elements "$work/received" "${received[@]}"
   # What somebody else has stored there is of no interest.
   local other
   for other in "$work"/received/*; do [ -e "$work/sent/$(basename "$other")" ] || rm -f "$other"; done
   row "$name: ${#paths[@]} files, byte by byte" 0 '.*' \
      bash -c '[ -n "$(ls "$0")" ] && diff -r "$0" "$1"' "$work/sent" "$work/received"
}

receiver=$(free_port) aborter=$(free_port) breaker=$(free_port) implicit=$(free_port)
mkdir -p "$work/in" "$work/in-implicit"
start receiver storescp +xa --bit-preserving -od "$work/in" "$receiver"
start aborter storescp --abort-after -od "$work/in" "$aborter"
start breaker storescp --abort-during -od "$work/in" "$breaker"
start implicit storescp --implicit --bit-preserving -od "$work/in-implicit" "$implicit"
for port in "$receiver" "$aborter" "$breaker" "$implicit"; do listening "$port"; done

row "tn send to storescp" 0 '1 sent' \
   "$tn" send --report "$work/report" "STORESCP@127.0.0.1:$receiver" data/samples/ct-explicit.dcm
arrived "what storescp has" "$work/report" "$work/in"
# The other toolkit itself cannot store some of the stranger files, or does not know their SOP class.
row "tn send of all samples to storescp" any '[1-9][0-9]* sent' \
   "$tn" send --retry 1 --report "$work/report" "STORESCP@127.0.0.1:$receiver" "${samples[@]}"
arrived "what storescp has" "$work/report" "$work/in"
row "tn send on 4 associations" any '[1-9] sent' \
   "$tn" send --parallel 4 "STORESCP@127.0.0.1:$receiver" data/samples/*.dcm
row "tn send of what storescp does not take" 7 'JPEG Baseline.*transfer syntaxes not supported' \
   "$tn" send --no-decompress "STORESCP@127.0.0.1:$storescp" data/samples/us-jpeg.dcm
row "tn send encodes for a node that takes implicit VR only" 0 '2 sent' \
   "$tn" send "STORESCP@127.0.0.1:$implicit" data/samples/ct-explicit.dcm data/samples/cr-big-endian.dcm
"$tn" convert --to implicit data/samples/ct-explicit.dcm "$work/converted.dcm"
printf '%s\t\tsent\n' "$work/converted.dcm" > "$work/report"
arrived "what it has" "$work/report" "$work/in-implicit"
row "tn send to a node that refuses" 6 'rejected' \
   "$tn" send "STORESCP@127.0.0.1:$refuser" data/samples/ct-explicit.dcm
row "tn send to a node that aborts after an object" 8 'aborted' \
   "$tn" send "STORESCP@127.0.0.1:$aborter" data/samples/ct-explicit.dcm
row "tn send to a node that aborts in an object" 8 'aborted.*sending it again' \
   "$tn" send --retry 1 "STORESCP@127.0.0.1:$breaker" data/samples/ct-explicit.dcm
row "tn send to dcmqrscp" 0 '3 sent' "$tn" send --report "$work/report" "QRSCP@127.0.0.1:$qrscp" \
   data/samples/ct-explicit.dcm data/samples/sr-implicit.dcm data/samples/cr-big-endian.dcm
row "tn send to Orthanc" any '[1-9][0-9]* sent' \
   "$tn" send --retry 1 --report "$work/report" "ORTHANC@127.0.0.1:$orthanc" "${samples[@]}"
# It takes datasets apart and puts them together in its own way, without padding, for example: the pixels stay.
kept=pixels
arrived "the pixels that Orthanc has" "$work/report" "$work/orthanc"
kept=cat
