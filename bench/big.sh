#!/usr/bin/env bash
# Inputs of any size (not part of CI: `make bench-big`):
# - a 5 GiB CDR file lists whole: its record count and the offset of its
#   last record are checked against what the generator says it wrote;
# - a 4 GiB one lists in every layout, with time and peak memory;
# - -records jumps to record 4,000,000 of a 2 GiB one.
#   BIG_DATA=/some/disk bench/big.sh
set -euo pipefail
cd "$(dirname "$0")/.."
DATA=${BIG_DATA:-${BENCH_DATA:-bench/data}}
QORTLV=build/qortlv
mkdir -p "$DATA"
g++ -O2 -std=c++20 bench/gen_cdr.cpp -o "$DATA/gen_cdr"

# A definite-length CDR file of $1 GiB, with the generator's summary beside it.
file_of() {
  local file="$DATA/cdr-definite-${1}gib.ber"
  if [ ! -s "$file" ] || [ ! -s "$file.summary" ]; then
    "$DATA/gen_cdr" --variant definite --mb $(($1 * 1024)) --out "$file" > "$file.summary"
  fi
  echo "$file"
}
records_of() { awk '{ print $2 }' "$1.summary"; }
last_offset_of() { awk '{ print $4 }' "$1.summary"; }
fail() { echo "FAILED: $*"; exit 1; }

five=$(file_of 5)
records=$(records_of "$five")
offset=$(last_offset_of "$five")
echo "5 GiB file: $(stat -c %s "$five") octets, $records records, the last at $offset"
listed=$("$QORTLV" -hexadecimal "$five" | grep -c '^Concatenated record #' || true)
[ "$listed" -eq $((records - 1)) ] || fail "-hexadecimal announced $listed further records, not $((records - 1))"
"$QORTLV" -decomposed -records "$records" "$five" |
  grep -q "^Concatenated PDU #$records detected at offset $offset, printing" ||
  fail "-decomposed -records $records doesn't place the last record at $offset"
status=0
"$QORTLV" -records $((records + 1)) "$five" > /dev/null 2>&1 || status=$?
[ "$status" -eq 85 ] || fail "-records $((records + 1)) exits $status, not 85"
echo "5 GiB file: every record listed, the last at its offset"

four=$(file_of 4)
printf '%-28s %9s %10s\n' "4 GiB file" "seconds" "peak MiB"
for layout in -hexadecimal -syntax -decomposed -json; do
  /usr/bin/time -f '%e %M' -o "$DATA/.time" "$QORTLV" $layout "$four" > /dev/null
  read -r secs kib < "$DATA/.time"
  printf '%-28s %9s %10s\n' "qortlv $layout" "$secs" "$((kib / 1024))"
done

two=$(file_of 2)
/usr/bin/time -f '%e %M' -o "$DATA/.time" "$QORTLV" -syntax -records 4000000 "$two" > /dev/null
read -r secs kib < "$DATA/.time"
echo "2 GiB file: -syntax -records 4000000 in $secs s, peak $((kib / 1024)) MiB"
