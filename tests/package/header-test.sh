#!/bin/sh
# Compiles one translation unit that includes every installed public header,
# with only the installed tree and Qt on the include path: a public header that
# includes a private one, or that warns, fails.
set -eu
prefix=$1 work=$2
rm -rf "$work" && mkdir -p "$work"
tu="$work/all-headers.cpp"
n=0
for h in "$prefix"/include/kxjournal/*.h; do
  echo "#include <kxjournal/$(basename "$h")>" >> "$tu"
  n=$((n + 1))
done
[ "$n" -gt 0 ] || { echo "FAIL: no headers under $prefix/include/kxjournal"; exit 1; }
echo "int main() { return 0; }" >> "$tu"
# Qt's headers come in as system headers: only the library's own warnings count.
qt=$(pkg-config --cflags-only-I Qt6Widgets Qt6Sql | sed 's/-I/-isystem /g')
c++ -std=c++17 -fPIC -DQT_NO_KEYWORDS -Wall -Wextra -Werror -fsyntax-only \
  -I "$prefix/include" $qt "$tu"
echo "$n headers compile alone"
