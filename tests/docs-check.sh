#!/bin/sh
# Generates the reference documentation into WORK and fails on any doxygen
# warning (an undocumented public name is one). Skipped (77) without doxygen.
set -eu
src=$1 work=$2
command -v doxygen >/dev/null 2>&1 || { echo "doxygen is not installed"; exit 77; }
rm -rf "$work" && mkdir -p "$work"
cd "$src"
{ cat docs/Doxyfile; echo "OUTPUT_DIRECTORY = $work"; echo "WARN_LOGFILE = $work/warnings.log"; } | doxygen -
if [ -s "$work/warnings.log" ]; then
  cat "$work/warnings.log"
  echo "FAIL: $(wc -l < "$work/warnings.log") doxygen warning lines"
  exit 1
fi
echo "documentation without warnings"
