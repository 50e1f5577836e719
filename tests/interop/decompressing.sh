# Compressed images for nodes that take uncompressed ones only, and what other toolkits make of the same. Sourced.
native=$(free_port) keeper=$(free_port)
mkdir -p "$work/native" "$work/keeper"
echo "NATIVE@127.0.0.1:$native" > "$work/native-peers"
start native storescp +xe --bit-preserving -od "$work/native" "$native"
start keeper "$tn" serve --aet KEEPER --port "$keeper" --store "$work/keeper" --peers "$work/native-peers"
listening "$native"
listening "$keeper"
compressed=(data/samples/us-jpeg.dcm)
# In each syntax that dcmtk and gdcm can make of a native sample.
gdcmconv --rle data/samples/ct-explicit.dcm "$work/ct-rle.dcm" && compressed+=("$work/ct-rle.dcm")
dcmcjpeg +el data/samples/ct-explicit.dcm "$work/ct-57.dcm" && compressed+=("$work/ct-57.dcm")
dcmcjpeg +e1 data/samples/ct-explicit.dcm "$work/ct-70.dcm" && compressed+=("$work/ct-70.dcm")
dcmcjpls data/samples/ct-explicit.dcm "$work/ct-80.dcm" && compressed+=("$work/ct-80.dcm")
gdcmconv --j2k data/samples/ct-explicit.dcm "$work/ct-90.dcm" && compressed+=("$work/ct-90.dcm")
dcmodify -nb -gst -gse -gin "${compressed[@]:1}" # each is an instance of its own

pixels_of() {
   local crc
   crc=$("$tn" dump --elements "$1" 2> /dev/null | grep -a $'^/\t7fe0,0010' | cut -f 5)
   echo "${crc:-none in $1}"
}
for file in "${compressed[@]}"; do
   name=$(basename "$file" .dcm)
   study=$(dcmdump -q +P StudyInstanceUID "$file" | sed 's/.*\[\(.*\)\].*/\1/') theirs=data/samples/ct-explicit.dcm
   if [ "$name" = us-jpeg ]; then
      theirs=$work/us-djpeg.dcm
      dcmdjpeg "$file" "$theirs"
   fi
   rm -rf "${work:?}"/native/*
   row "tn send decompresses $name" 0 '1 sent' "$tn" send "NATIVE@127.0.0.1:$native" "$file"
   sent=$(find "$work/native" -type f | head -1)
   row "what arrived of $name has the same pixels" 0 "^$(pixels_of "$theirs")\$" bash -c 'echo "$0"' "$(pixels_of "$sent")"
   row "a node keeps $name" 0 '1 sent' "$tn" send "KEEPER@127.0.0.1:$keeper" "$file"
   rm -rf "${work:?}"/native/*
   row "tn move decompresses $name" 0 '1 completed, 0 failed' "$tn" move --to NATIVE --study "$study" "KEEPER@127.0.0.1:$keeper"
   sent=$(find "$work/native" -type f | head -1)
   row "what was moved of $name has the same pixels" 0 "^$(pixels_of "$theirs")\$" bash -c 'echo "$0"' "$(pixels_of "$sent")"
done
