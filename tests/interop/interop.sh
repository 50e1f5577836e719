#!/bin/bash
# Dialogues between tn and independent toolkits on the loopback interface, one row each. Usage: interop.sh TN
# Needs dcmtk, libgdcm-tools, odil and orthanc; with tshark, what went over the wire is checked by its DICOM dissector.
set -uo pipefail
tn=$(realpath "$1")
cd "$(dirname "$0")/../.."
work=$(mktemp -d)
failures=0
pids=()

finish() {
   for pid in "${pids[@]}"; do kill "$pid" 2> /dev/null; done
   wait 2> /dev/null
   rm -rf "$work"
}
trap finish EXIT

# A port that nobody listens on.
free_port() {
   local port
   while port=$((20000 + RANDOM % 20000)); do
      (exec 3<> "/dev/tcp/127.0.0.1/$port") 2> /dev/null || { echo "$port"; return; }
   done
}

# start NAME COMMAND...: a node in the background; its output is kept.
start() {
   local name=$1
   shift
   "$@" > "$work/$name.log" 2>&1 < /dev/null &
   pids+=($!)
}

# listening PORT: waits until somebody answers there.
listening() {
   local tries=100
   while ((tries-- > 0)); do
      (exec 3<> "/dev/tcp/127.0.0.1/$1") 2> /dev/null && return
      sleep 0.1
   done
   echo "nobody listens on port $1"
}

# row NAME EXPECTED-CODE TEXT COMMAND...: the exit code and a text (a regular expression) in the output.
row() {
   local name=$1 expected=$2 text=$3 output code
   shift 3
   output=$(timeout 60 "$@" 2>&1 < /dev/null | tr -d '\0') # the code is that of the command: pipefail
   code=$?
   if { [ "$expected" = any ] || [ "$code" = "$expected" ]; } && grep -Eq -- "$text" <<< "$output"; then
      printf 'ok      %s\n' "$name"
   else
      printf 'FAILED  %s: exit %s\n' "$name" "$code"
      sed 's/^/           /' <<< "$output" | head -20
      failures=$((failures + 1))
   fi
}

# Their nodes.
storescp=$(free_port) refuser=$(free_port) qrscp=$(free_port) orthanc=$(free_port) nobody=$(free_port) ours=$(free_port)
mkdir "$work/store" "$work/qr" "$work/orthanc"
cat > "$work/qr.cfg" << END
NetworkTCPPort = $qrscp
MaxPDUSize = 16384
MaxAssociations = 16
HostTable BEGIN
HostTable END
VendorTable BEGIN
VendorTable END
AETable BEGIN
QRSCP $work/qr RW (10, 1024mb) ANY
AETable END
END
cat > "$work/orthanc.json" << END
{ "Name": "O", "StorageDirectory": "$work/orthanc", "IndexDirectory": "$work/orthanc", "HttpServerEnabled": false,
  "DicomAet": "ORTHANC", "DicomPort": $orthanc, "DicomCheckCalledAet": false, "DicomAlwaysAllowEcho": true,
  "DicomAlwaysAllowStore": true, "OverwriteInstances": true }
END
if command -v tshark > /dev/null; then
   start tshark tshark -q -i lo -w "$work/capture.pcap" -f "tcp port $storescp or tcp port $ours or tcp port $qrscp"
   for _ in $(seq 50); do [ -s "$work/capture.pcap" ] && break; sleep 0.1; done
fi
start storescp storescp -od "$work/store" "$storescp"
start refuser storescp --refuse -od "$work/store" "$refuser"
start qrscp dcmqrscp -c "$work/qr.cfg"
start orthanc Orthanc "$work/orthanc.json"
start serve "$tn" serve --port "$ours" --aet OURS
for port in "$storescp" "$refuser" "$qrscp" "$orthanc" "$ours"; do listening "$port"; done

row "tn echo to storescp" 0 'ms' "$tn" echo "STORESCP@127.0.0.1:$storescp"
row "tn echo 20 times" 0 '20' "$tn" echo --repeat 20 "STORESCP@127.0.0.1:$storescp"
row "tn echo in JSON" 0 '\{' "$tn" echo --json "STORESCP@127.0.0.1:$storescp"
row "tn echo with PDUs of 4096 bytes" 0 'ms' "$tn" echo --max-pdu 4096 "STORESCP@127.0.0.1:$storescp"
row "tn echo to dcmqrscp" 0 'ms' "$tn" echo "QRSCP@127.0.0.1:$qrscp"
row "tn echo to a title that dcmqrscp does not know" 6 'alled' "$tn" echo "NOBODY@127.0.0.1:$qrscp"
row "tn echo to Orthanc" 0 'ms' "$tn" echo "ORTHANC@127.0.0.1:$orthanc"
row "tn echo to a node that refuses" 6 '.' "$tn" echo "STORESCP@127.0.0.1:$refuser"
row "tn echo to nobody" 5 'refused' "$tn" echo "ANY@127.0.0.1:$nobody"
row "tn echo to tn serve" 0 'ms' "$tn" echo "OURS@127.0.0.1:$ours"

row "echoscu" 0 'Success' echoscu -v -aec OURS 127.0.0.1 "$ours"
row "echoscu with 38 transfer syntaxes" 0 'Success' echoscu -v --propose-ts 38 127.0.0.1 "$ours"
row "echoscu with 128 contexts" 0 'Success' echoscu -v --propose-pc 128 127.0.0.1 "$ours"
row "echoscu with the longest request" 0 'Success' echoscu -v --propose-pc 128 --propose-ts 38 127.0.0.1 "$ours"
row "echoscu with the smallest PDUs" 0 'Success' echoscu -v --max-pdu 4096 127.0.0.1 "$ours"
row "echoscu with the largest PDUs" 0 'Success' echoscu -v --max-pdu 131072 127.0.0.1 "$ours"
row "echoscu 100 times" 0 'Success' echoscu -v --repeat 100 127.0.0.1 "$ours"
row "echoscu that aborts" 0 'Aborting' echoscu -v --abort 127.0.0.1 "$ours"
# gdcmscu fails at its own end, with every peer: what counts is what our node has seen.
row "gdcmscu" 0 '1 echo, released' \
   bash -c 'gdcmscu --echo --aetitle GDCM --call OURS 127.0.0.1 "$0" > /dev/null 2>&1; grep GDCM "$1"' "$ours" "$work/serve.log"
row "odil" 0 '.*' odil echo 127.0.0.1 "$ours" ODIL OURS
row "storescu finds no storage" any 'No Acceptable' storescu -v 127.0.0.1 "$ours" data/samples/ct-explicit.dcm
row "tn serve still answers" 0 'ms' "$tn" echo "OURS@127.0.0.1:$ours"

. tests/interop/sending.sh
. tests/interop/asking.sh
. tests/interop/archive.sh
. tests/interop/decompressing.sh
. tests/interop/printing.sh

if [ -s "$work/capture.pcap" ]; then
   sleep 1
   kill -INT "${pids[0]}"
   wait "${pids[0]}" 2> /dev/null
   decode=(-d "tcp.port==$storescp,dicom" -d "tcp.port==$ours,dicom" -d "tcp.port==$qrscp,dicom")
   row "tshark sees DICOM" 0 'A-ASSOCIATE' tshark -r "$work/capture.pcap" "${decode[@]}" -Y dicom
   row "tshark sees nothing malformed" 0 '^0$' \
      bash -c 'tshark -r "$@" -Y _ws.malformed 2> /dev/null | wc -l' tshark "$work/capture.pcap" "${decode[@]}"
else
   echo "-       no capture: tshark is not there, or may not capture"
fi
[ "$failures" = 0 ] || { echo "$failures dialogues failed"; exit 1; }
