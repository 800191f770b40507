#!/bin/sh
# Export and print never write over the database they read (however its
# path is spelled), another SQLite database, a pipe or a device; each
# refusal says why, fails the command, and leaves the file as it was.
#   tool-output-guard.sh KXJOURNAL SAMPLE_DB WORK_DIR
set -u
tool=$1
work=$3
rm -rf "$work" && mkdir -p "$work" && cp "$2" "$work/books.db" && cp "$2" "$work/other.db" || exit 1
cd "$work" || exit 1
ln -s books.db link.db && mkfifo pipe.csv || exit 1
# A device node of its own (never the system's), where this user may make one.
device=
mknod full.csv c 1 7 2>/dev/null && device=full.csv
before=$(cksum <books.db)
fails=0
expect() {  # expect REASON COMMAND OUT
  msg=$(QT_QPA_PLATFORM=offscreen "$tool" "$2" --db sqlite:books.db --book 020101 --out "$3" 2>&1)
  rc=$?
  line=$(printf '%s\n' "$msg" | grep '^kxjournal: ')
  case "$rc:$line" in
  1:*不能写入文件*"$1"*) echo "refused $2 --out $3: $line" ;;
  *) echo "FAIL: $2 --out $3 gave rc=$rc: $msg"; fails=$((fails + 1)) ;;
  esac
}
for out in books.db ./books.db link.db "$work/../$(basename "$work")/books.db" books.db-wal; do
  expect 正在使用的数据库 export "$out"
  expect 正在使用的数据库 print "$out"
done
expect "SQLite 数据库" export other.db
expect 不是普通文件 export pipe.csv
expect 不是普通文件 print pipe.csv
[ -n "$device" ] && expect 不是普通文件 export "$device"
[ "$(cksum <books.db)" = "$before" ] || { echo "FAIL: the database changed"; fails=$((fails + 1)); }
[ "$(head -c 15 other.db)" = "SQLite format 3" ] || { echo "FAIL: the other database changed"; fails=$((fails + 1)); }
[ -p pipe.csv ] || { echo "FAIL: the pipe is gone"; fails=$((fails + 1)); }
[ -L link.db ] || { echo "FAIL: the link is gone"; fails=$((fails + 1)); }
[ -z "$device" ] || [ -c "$device" ] || { echo "FAIL: the device is gone"; fails=$((fails + 1)); }
# An ordinary file beside it is written as before.
QT_QPA_PLATFORM=offscreen "$tool" export --db sqlite:books.db --book 020101 --out book.csv >/dev/null || fails=$((fails + 1))
[ "$fails" -eq 0 ] && echo "nothing replaced"
