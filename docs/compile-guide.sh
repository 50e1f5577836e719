#!/bin/bash
# Compiles every C++ fragment of a page against the installed library that pkg-config knows: compile-guide.sh PAGE FOLDER.
# A fragment is a function's body, or, when it has a class or an #include, a file of its own. The compiler names the lines
# of the page.
set -euo pipefail

PAGE=$1
FOLDER=$2
mkdir -p "$FOLDER"
awk -v page="$PAGE" -v folder="$FOLDER" '
   /^```cpp/ { open = 1; text = ""; whole = 0; first = NR + 1; next }
   /^```/ && open {
      file = sprintf("%s/fragment-%03d.cpp", folder, ++count)
      print "#include <iostream>\n#include <memory>\n#include <thread>" > file
      print "#include <talvenor/data/CompiledDictionaries.h>\n#include <talvenor/talvenor.h>" > file
      if (!whole) print "[[maybe_unused]] static int Fragment([[maybe_unused]] int theCount, [[maybe_unused]] char** theArguments)\n{" > file
      printf "#line %d \"%s\"\n%s", first, page, text > file
      if (!whole) print "   return 0;\n}" > file
      close(file)
      open = 0
   }
   open { text = text $0 "\n"; if ($0 ~ /^(#include|class [A-Z]|(int|void|bool) [A-Z][A-Za-z]*\()/) whole = 1 }
' "$PAGE"
FAILED=0
for FRAGMENT in "$FOLDER"/fragment-*.cpp; do
   # shellcheck disable=SC2046 # options, not a text
   g++ -std=c++20 -Wall -Wextra -Wno-unused-variable -Wno-unused-parameter -fsyntax-only "$FRAGMENT" \
      $(pkg-config --cflags talvenor) || FAILED=1
done
[ "$FAILED" -eq 0 ] && printf '  ok    %d fragments of %s\n' "$(find "$FOLDER" -name 'fragment-*.cpp' | wc -l)" "$(basename "$PAGE")"
exit "$FAILED"
