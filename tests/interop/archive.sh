# The part of interop.sh about our archive: other toolkits store there, ask it and have it send; a node of our own sends to
# it. Sourced; what arrives is compared by arrived of sending.sh.
archive=$(free_port) station=$(free_port) native=$(free_port) their=$(free_port) rest=$(free_port)
mkdir -p "$work/archive" "$work/station" "$work/native" "$work/their"
printf 'STATION@127.0.0.1:%s\nNATIVE@127.0.0.1:%s\nORTHANC@127.0.0.1:%s\nDEAD@127.0.0.1:%s\n' \
   "$station" "$native" "$their" "$nobody" > "$work/peers"
cat > "$work/their.json" << END
{ "Name": "T", "StorageDirectory": "$work/their", "IndexDirectory": "$work/their", "HttpPort": $rest,
  "AuthenticationEnabled": false, "DicomAet": "ORTHANC", "DicomPort": $their, "DicomCheckCalledAet": false,
  "DicomAlwaysAllowStore": true, "DicomModalities": { "ours": ["ARCHIVE", "127.0.0.1", $archive] } }
END
start archive "$tn" serve --aet ARCHIVE --port "$archive" --store "$work/archive" --peers "$work/peers" \
   --worklist "$work/worklist/WL"
start station storescp +xa --bit-preserving -od "$work/station" "$station"
start native storescp --bit-preserving -od "$work/native" "$native"
start their Orthanc "$work/their.json"
for port in "$archive" "$station" "$native" "$their" "$rest"; do listening "$port"; done
ours_here="ARCHIVE@127.0.0.1:$archive"

# stored NAME FILE: the archive has the data set of the file, byte by byte.
stored() { printf '%s\t\tsent\n' "$2" > "$work/report"; arrived "$1" "$work/report" "$work/archive"; }

row "storescu" 0 'Success' storescu -v -aec ARCHIVE 127.0.0.1 "$archive" data/samples/ct-explicit.dcm
stored "what storescu sent" data/samples/ct-explicit.dcm
row "dcmsend" 0 'with status SUCCESS *: 1' \
   dcmsend -v -aec ARCHIVE 127.0.0.1 "$archive" data/samples/us-jpeg.dcm
stored "what dcmsend sent, compressed" data/samples/us-jpeg.dcm
row "gdcmscu --store" any '.*' gdcmscu --store --call ARCHIVE 127.0.0.1 "$archive" data/samples/sr-implicit.dcm
row "odil store" any '.*' odil store 127.0.0.1 "$archive" ODIL ARCHIVE data/samples/sr-implicit.dcm
row "one of them has stored it" 0 '1' bash -c 'find "$0" -name "*.dcm" -exec "$1" dump --meta {} + | grep -c "Basic Text SR\|88.11"' \
   "$work/archive" "$tn"
row "tn send to tn serve" 0 '[14] sent' "$tn" send "$ours_here" data/samples/cr-big-endian.dcm
stored "what tn sent" data/samples/cr-big-endian.dcm
row "storescu again" 0 'Success' storescu -v -aec ARCHIVE 127.0.0.1 "$archive" data/samples/ct-explicit.dcm

for model in -P -S; do
   row "findscu $model asks for studies" 0 'StudyInstanceUID' findscu -v "$model" -aec ARCHIVE -k QueryRetrieveLevel=STUDY \
      -k PatientID=TN-0001 -k StudyInstanceUID -k StudyDate=19000101- 127.0.0.1 "$archive"
   row "findscu $model asks for images" 0 "$instance" findscu -v "$model" -aec ARCHIVE -k QueryRetrieveLevel=IMAGE \
      -k PatientID=TN-0001 -k StudyInstanceUID="$study" -k SeriesInstanceUID="$series" -k SOPInstanceUID 127.0.0.1 "$archive"
   row "movescu $model" 0 'Success' movescu -v "$model" -aec ARCHIVE -aem STATION -k QueryRetrieveLevel=STUDY \
      -k PatientID=TN-0001 -k StudyInstanceUID="$study" 127.0.0.1 "$archive"
done
row "findscu asks for patients" 0 'TN-0004' findscu -v -O -aec ARCHIVE -k QueryRetrieveLevel=PATIENT -k PatientName='niemi*' \
   -k PatientID 127.0.0.1 "$archive"
row "findscu cancels" 0 'Releasing' findscu -v -S --cancel 1 -aec ARCHIVE -k QueryRetrieveLevel=STUDY -k StudyInstanceUID \
   127.0.0.1 "$archive"
row "findscu without the keys that it needs" 0 'DataSetDoesNotMatchSOPClass' findscu -v -S -aec ARCHIVE \
   -k QueryRetrieveLevel=SERIES -k SeriesInstanceUID 127.0.0.1 "$archive"
row "findscu asks for the worklist" 0 'SPS1' findscu -v -W -aec ARCHIVE -k PatientName \
   -k 'ScheduledProcedureStepSequence[0].Modality=CT' \
   -k 'ScheduledProcedureStepSequence[0].ScheduledProcedureStepID' 127.0.0.1 "$archive"
row "odil asks for studies" 0 'TN-0001|Lehto' odil find 127.0.0.1 "$archive" ODIL ARCHIVE study QueryRetrieveLevel=STUDY \
   PatientID=TN-0001 PatientName StudyInstanceUID
# gdcmscu fails at its own end behind every answer: what counts is what our node has seen.
row "gdcmscu asks for studies" 0 '1 query with 1 match' bash -c '
   timeout 5 gdcmscu --find --studyroot --study --aetitle GDCM --call ARCHIVE --key "10,10=Leh*" --key 20,d= 127.0.0.1 "$0" \
      > /dev/null 2>&1
   sleep 0.5
   grep "^GDCM.*query" "$1"' "$archive" "$work/archive.log"

rm -f "$work"/station/*
row "movescu to a node that is not there" any 'Received Final Move Response' movescu -v -S -aec ARCHIVE -aem DEAD \
   -k QueryRetrieveLevel=STUDY -k StudyInstanceUID="$study" 127.0.0.1 "$archive"
row "movescu to a node that nobody knows" any 'Received Final Move Response' movescu -v -S -aec ARCHIVE -aem NOBODY \
   -k QueryRetrieveLevel=STUDY -k StudyInstanceUID="$study" 127.0.0.1 "$archive"
row "tn move of everything" 0 'completed, 0 failed' \
   bash -c '"$0" find --json "$1" < /dev/null | "$0" move --to STATION "$1"' "$tn" "$ours_here"
for file in ct-explicit us-jpeg cr-big-endian; do
   printf '%s\t\tsent\n' "data/samples/$file.dcm" > "$work/report"
   arrived "what was moved" "$work/report" "$work/station"
done
jpeg=$(dcmdump -q +P StudyInstanceUID data/samples/us-jpeg.dcm | sed 's/.*\[\(.*\)\].*/\1/')
row "tn move of JPEG to a node that takes native pixels only" 0 '1 completed' "$tn" move --to NATIVE --study "$jpeg" "$ours_here"
row "it is native there" 0 'Explicit VR|1\.2\.840\.10008\.1\.2\.1' bash -c '"$1" dump --meta "$0"/*' "$work/native" "$tn"

# Orthanc is told what to do by its web interface.
web() { python3 -c 'import sys, urllib.request as u
print(u.urlopen(u.Request(sys.argv[1], sys.argv[2].encode() if len(sys.argv) > 2 else None)).read().decode())' "$@"; }
export -f web
url="http://127.0.0.1:$rest"
row "tn move to Orthanc" 0 '1 completed' "$tn" move --to ORTHANC --study "$study" "$ours_here"
row "Orthanc asks us and has us send" 0 '"RemoteAet" : "ARCHIVE"' bash -c '
   query=$(web "$0/modalities/ours/query" "{\"Level\": \"Study\", \"Query\": {\"PatientID\": \"TN-0003\"}}" |
      sed -n "s/.*\"ID\" : \"\(.*\)\".*/\1/p")
   web "$0/queries/$query/answers/0/retrieve" "ORTHANC"' "$url"
row "Orthanc has what it asked for" 0 'TN-0003' bash -c 'web "$0/patients?expand"' "$url"
row "Orthanc stores" 0 '"FailedInstancesCount" : 0' bash -c '
   web "$0/modalities/ours/store" "$(web "$0/instances" | tr -d "\n")"' "$url"
row "the archive still answers" 0 'ms' "$tn" echo "$ours_here"
