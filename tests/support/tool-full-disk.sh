#!/bin/sh
# A full disk fails export and print, says so in plain words, and leaves the
# file that was there; a full temporary folder does not stop a PDF and
# fails a spreadsheet the same way. Each
# runs on a tiny file system mounted in a namespace of its own (skipped,
# exit 77, where the system allows none).
#   tool-full-disk.sh KXJOURNAL SAMPLE_DB WORK_DIR
set -u
tool=$1
db=$2
work=$3
if [ "${KX_IN_NAMESPACE:-}" != 1 ]; then
  rm -rf "$work" && mkdir -p "$work/disk" "$work/tmp" "$work/vouchers" || exit 1
  unshare -rm true 2>/dev/null || { echo "no mount namespace here: skipped"; exit 77; }
  KX_IN_NAMESPACE=1 exec unshare -rm "$0" "$@"
fi
mount -t tmpfs -o size=64k none "$work/disk" && mount -t tmpfs -o size=64k none "$work/tmp" || exit 77
fails=0
cd "$work/disk" || exit 1
for f in keep.pdf keep.xlsx keep.csv; do echo old >"$f"; done
dd if=/dev/zero of=fill bs=4k >/dev/null 2>&1
for f in keep.pdf keep.xlsx keep.csv; do
  case $f in *.pdf) command=print ;; *) command=export ;; esac
  msg=$(QT_QPA_PLATFORM=offscreen "$tool" $command --db "sqlite:$db" --book 020101 --out "$f" 2>&1)
  rc=$?
  line=$(printf '%s\n' "$msg" | grep '^kxjournal: ')
  case "$rc:$line" in
  1:*不能写入文件*磁盘空间不足*) echo "refused $f: $line" ;;
  *) echo "FAIL: $command --out $f on a full disk gave rc=$rc: $msg"; fails=$((fails + 1)) ;;
  esac
  [ "$(cat "$f")" = old ] || { echo "FAIL: $f was replaced"; fails=$((fails + 1)); }
done
ls -a | grep -v -e '^\.\.*$' -e '^keep\.' -e '^fill$' && { echo "FAIL: scratch files left behind"; fails=$((fails + 1)); }
# The temporary folder full: the PDF is made without it.
dd if=/dev/zero of="$work/tmp/fill" bs=4k >/dev/null 2>&1
if TMPDIR="$work/tmp" QT_QPA_PLATFORM=offscreen "$tool" print --db "sqlite:$db" --book 020101 --out "$work/book.pdf" >/dev/null &&
  pdftotext "$work/book.pdf" - | grep -q 本月合计; then
  echo "printed with a full temporary folder"
else
  echo "FAIL: no PDF with a full temporary folder"; fails=$((fails + 1))
fi
# A spreadsheet is made in the temporary folder: a full one fails it, saying so.
echo old >"$work/keep.xlsx"
msg=$(TMPDIR="$work/tmp" QT_QPA_PLATFORM=offscreen "$tool" export --db "sqlite:$db" --book 020101 --out "$work/keep.xlsx" 2>&1)
rc=$?
case "$rc:$msg" in
1:*"kxjournal: 不能写入文件"*磁盘空间不足*) echo "refused a spreadsheet with a full temporary folder" ;;
*) echo "FAIL: a spreadsheet with a full temporary folder gave rc=$rc: $msg"; fails=$((fails + 1)) ;;
esac
[ "$(cat "$work/keep.xlsx")" = old ] || { echo "FAIL: keep.xlsx was replaced"; fails=$((fails + 1)); }
# Vouchers one per record on a disk with room for a few of them: none is left.
mount -t tmpfs -o size=64k none "$work/vouchers" || exit 77
dd if=/dev/zero of="$work/vouchers/fill" bs=4k count=12 >/dev/null 2>&1
msg=$(QT_QPA_PLATFORM=offscreen "$tool" make --db "sqlite:$db" --book 020101 --from 2000-01-01 --to 2099-12-31 --per record --out "$work/vouchers" 2>&1)
rc=$?
case "$rc:$msg" in
1:*"kxjournal: 不能写凭证文件"*) echo "refused vouchers that did not all fit" ;;
*) echo "FAIL: vouchers per record on a nearly full disk gave rc=$rc: $msg"; fails=$((fails + 1)) ;;
esac
ls "$work/vouchers" | grep '\.kxe$' && { echo "FAIL: voucher files left behind"; fails=$((fails + 1)); }
[ "$fails" -eq 0 ] && echo "nothing lost"
