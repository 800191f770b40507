#!/bin/sh
# Builds the consumer with nothing but pkg-config and the compiler, against the
# installed shared tree PREFIX, runs it, and checks that it needs no database
# or spreadsheet library itself: the shared library carries those.
# A fourth argument, ON, says the tree was built with the sanitizers.
set -eu
prefix=$1 src=$2 work=$3 sanitize=${4:-OFF}
san=
[ "$sanitize" = ON ] && san=-fsanitize=address,undefined
rm -rf "$work" && mkdir -p "$work"
export PKG_CONFIG_PATH="$prefix/lib/pkgconfig"
# Qt is built with reduced relocations: hosts compile position-independent code.
c++ -std=c++17 -fPIC -DQT_NO_KEYWORDS $san -o "$work/consumer" "$src" \
  $(pkg-config --cflags --libs kxjournal) -Wl,-rpath,"$prefix/lib"
needed=$(readelf -d "$work/consumer" | grep NEEDED)
echo "$needed"
echo "$needed" | grep -q 'libkxjournal\.so\.0\.1\]' || { echo "FAIL: not linked to libkxjournal.so.0.1"; exit 1; }
if echo "$needed" | grep -E 'libpq|xlsxwriter|libsqlite3|PrintSupport|Charts'; then
  echo "FAIL: the host needs a private dependency of the library"; exit 1
fi
soname=$(readelf -d "$prefix/lib/libkxjournal.so" | grep SONAME)
echo "$soname" | grep -q 'libkxjournal\.so\.0\.1\]' || { echo "FAIL: soname is $soname"; exit 1; }
"$work/consumer"
