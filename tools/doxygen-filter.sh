#!/bin/sh
# doxygen-filter.sh HEADER: the header with its comments as doxygen wants them. The first comment is about the file, and
# every other one on lines of its own about what follows; a comment behind a declaration is about that. What is indented
# in the first comment is shown as it is.
exec awk '
   function quote(text) { gsub(/[@\\<>#%&]/, "\\\\&", text); return text }
   function show(text) {
      if (text ~ /^   / && !raw) { print "/// @verbatim"; raw = 1 }
      if (text !~ /^   / && raw) { print "/// @endverbatim"; raw = 0 }
      print "/// " (raw ? text : quote(text))
   }
   FNR == 1 && /^\/\// { print "/// @file"; heading = 1 }
   heading && /^\/\// { sub(/^\/\/ ?/, ""); show($0); next }
   heading { if (raw) print "/// @endverbatim"; heading = raw = 0 }
   /^[ \t]*\/\/ / { match($0, /\/\/ /); print substr($0, 1, RSTART - 1) "/// " quote(substr($0, RSTART + 3)); next }
   /[;,{})][ \t]*\/\/ / { match($0, /[ \t]*\/\/ /); print substr($0, 1, RSTART - 1) " ///< " quote(substr($0, RSTART + RLENGTH)); next }
   { print }' "$1"
