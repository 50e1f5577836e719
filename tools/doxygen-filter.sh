#!/bin/sh
# doxygen-filter.sh HEADER: the header with its comments as doxygen wants them. The first comment is about the file, and
# every other one on lines of its own about what follows; a comment behind a declaration is about that.
exec awk '
   function quote(text) { gsub(/[@\\<>#%&]/, "\\\\&", text); return text }
   FNR == 1 && /^\/\// { print "/// @file"; heading = 1 }
   heading && /^\/\// { sub(/^\/\/ ?/, ""); print "/// " ($0 ~ /^   / ? "\n///" : "") quote($0); next }
   { heading = 0 }
   /^[ \t]*\/\/ / { match($0, /\/\/ /); print substr($0, 1, RSTART - 1) "/// " quote(substr($0, RSTART + 3)); next }
   /[;,{})][ \t]*\/\/ / { match($0, /[ \t]*\/\/ /); print substr($0, 1, RSTART - 1) " ///< " quote(substr($0, RSTART + RLENGTH)); next }
   { print }' "$1"
