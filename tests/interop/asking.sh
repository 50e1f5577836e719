# The part of interop.sh about questions: tn find and tn move ask archives and a worklist of other makers. Sourced.
asked=$(free_port) asked_orthanc=$(free_port) worklist=$(free_port) destination=$(free_port) receiver=$(free_port)
mkdir -p "$work/asked" "$work/asked-orthanc" "$work/worklist/WL" "$work/moved"
cat > "$work/asked.cfg" << END
NetworkTCPPort = $asked
MaxPDUSize = 16384
MaxAssociations = 16
HostTable BEGIN
destination = (DESTINATION, 127.0.0.1, $destination)
dead = (DEAD, 127.0.0.1, $nobody)
receiver = (RECEIVER, 127.0.0.1, $receiver)
HostTable END
VendorTable BEGIN
VendorTable END
AETable BEGIN
ASKED $work/asked RW (10, 1024mb) ANY
AETable END
END
cat > "$work/asked-orthanc.json" << END
{ "Name": "A", "StorageDirectory": "$work/asked-orthanc", "IndexDirectory": "$work/asked-orthanc",
  "HttpServerEnabled": false, "DicomAet": "ORTHANC", "DicomPort": $asked_orthanc, "DicomCheckCalledAet": false,
  "DicomAlwaysAllowStore": true, "DicomAlwaysAllowFind": true, "DicomAlwaysAllowMove": true,
  "DicomModalities": { "destination": ["DESTINATION", "127.0.0.1", $destination] } }
END
# In Latin 1, as the set says.
printf '%b' '(0008,0005) CS [ISO_IR 100]\n(0008,0050) SH [A0001]\n(0010,0010) PN [M\xfcller^J\xf6rg]\n(0010,0020) LO [P-77]\n' \
   '(0010,0030) DA [19700101]\n(0010,0040) CS [M]\n(0020,000d) UI [1.2.3.77]\n(0032,1060) LO [CT Thorax]\n' \
   '(0040,1001) SH [RP1]\n(0040,0100) SQ\n(fffe,e000) -\n(0008,0060) CS [CT]\n(0040,0001) AE [CT1]\n' \
   '(0040,0002) DA [20260101]\n(0040,0003) TM [101500]\n(0040,0006) PN [Doc^A]\n(0040,0007) LO [Thorax]\n' \
   '(0040,0009) SH [SPS1]\n(fffe,e00d) -\n(fffe,e0dd) -\n' > "$work/ct.dump"
sed 's/\[CT\]/[MR]/; s/SPS1/SPS2/; s/A0001/A0002/' "$work/ct.dump" > "$work/mr.dump"
for step in ct mr; do dump2dcm -g +te "$work/$step.dump" "$work/worklist/WL/$step.wl"; done
touch "$work/worklist/WL/lockfile"

start asked dcmqrscp -c "$work/asked.cfg"
start asked-orthanc Orthanc "$work/asked-orthanc.json"
start worklist wlmscpfs -csk -dfp "$work/worklist" "$worklist"
start destination storescp -od "$work/moved" "$destination"
for port in "$asked" "$asked_orthanc" "$worklist" "$destination"; do listening "$port"; done
archive="ASKED@127.0.0.1:$asked" their_orthanc="ORTHANC@127.0.0.1:$asked_orthanc"
for file in data/samples/ct-explicit.dcm data/samples/*implicit*.dcm; do
   storescu -aec ASKED 127.0.0.1 "$asked" "$file" > /dev/null 2>&1
   storescu -aec ORTHANC 127.0.0.1 "$asked_orthanc" "$file" > /dev/null 2>&1
done
uid_of() { dcmdump -q +P "$1" data/samples/ct-explicit.dcm | sed 's/.*\[\(.*\)\].*/\1/'; }
study=$(uid_of StudyInstanceUID) series=$(uid_of SeriesInstanceUID) instance=$(uid_of SOPInstanceUID)

for peer in "$archive" "$their_orthanc"; do
   row "tn find studies of ${peer%%@*}" 0 'Lehto\^Veikko' "$tn" find -k 'PatientName=Leh*' -k StudyInstanceUID="$study" "$peer"
   row "tn find a study of ${peer%%@*} by date" 0 "$study" "$tn" find --json -k StudyDate=19000101-20991231 "$peer"
   row "tn find series of ${peer%%@*}" 0 "$series" "$tn" find --level series -k StudyInstanceUID="$study" --csv "$peer"
   row "tn find images of ${peer%%@*}" 0 "$instance" "$tn" find --level image -k StudyInstanceUID="$study" \
      -k SeriesInstanceUID="$series" --json "$peer"
   row "tn find patients of ${peer%%@*}" 0 'Lehto' "$tn" find --model patient --level patient -k PatientName "$peer"
   row "tn find nothing at ${peer%%@*}" 0 '^$' "$tn" find --json -k PatientID=NoSuchPatient "$peer"
   row "tn find one at ${peer%%@*}" 0 '^1$' bash -c '"$0" find --json --limit 1 "$1" < /dev/null 2> /dev/null | wc -l' "$tn" "$peer"
   row "tn move a study of ${peer%%@*}" 0 '1 completed, 0 failed' "$tn" move --to DESTINATION --study "$study" "$peer"
   row "tn move what tn find says, of ${peer%%@*}" 0 '1 completed' bash -c \
      '"$0" find --json --level image -k StudyInstanceUID="$2" -k SeriesInstanceUID="$3" "$1" < /dev/null |
       "$0" move --to DESTINATION "$1"' "$tn" "$peer" "$study" "$series"
   row "what ${peer%%@*} moved is what was stored" 0 '^same$' bash -c \
      'elements() { "$2" dump --elements "$1" 2> /dev/null | grep -v "^/.0002,"; }
       cmp <(elements "$1" "$0") <(elements "$2" "$0") && echo same' \
      "$tn" data/samples/ct-explicit.dcm "$(ls "$work"/moved/*"$instance" | head -1)"
   row "tn move from ${peer%%@*} to a node that it does not know" 8 '' "$tn" move --to NOBODY --study "$study" "$peer"
done
row "tn move from dcmqrscp to a dead node" 8 "failed $instance" "$tn" move --to DEAD --study "$study" "$archive"
row "tn move receives itself" 0 '1 completed, 0 failed' "$tn" move --to RECEIVER --receive "$work/received-here" \
   --port "$receiver" --study "$study" "$archive"
row "what tn move received is there" 0 "$instance.dcm" find "$work/received-here" -name "$instance.dcm"
row "tn find the worklist" 0 'Müller\^Jörg.*SPS2' "$tn" find --worklist "WL@127.0.0.1:$worklist"
row "tn find what is to be done with a modality" 0 '"ScheduledProcedureStepID":"SPS1"' "$tn" find --worklist --json \
   -k ScheduledProcedureStepSequence.Modality=CT "WL@127.0.0.1:$worklist"
row "tn find without a worklist" 7 'Worklist' "$tn" find --worklist "$archive"
