#!/usr/bin/env bash
# Times qortlv in its layouts (and -json) beside `openssl asn1parse` (and dumpasn1
# when installed) on synthetic CDR files; prints a table.
#   BENCH_MB=200 bench/run.sh
set -euo pipefail
cd "$(dirname "$0")/.."
MB=${BENCH_MB:-200}
RUNS=${BENCH_RUNS:-3}
DATA=${BENCH_DATA:-bench/data}
QORTLV=build/qortlv
mkdir -p "$DATA"

g++ -O2 -std=c++20 bench/gen_cdr.cpp -o "$DATA/gen_cdr"
for variant in definite headers indefinite; do
  file="$DATA/cdr-$variant-${MB}mb.ber"
  [ -s "$file" ] || "$DATA/gen_cdr" --variant "$variant" --mb "$MB" --out "$file" > /dev/null
done

# One measurement, output to /dev/null: wall seconds, peak resident KiB.
measure() {
  local out="$DATA/.time"
  /usr/bin/time -f '%e %M' -o "$out" "$@" > /dev/null 2>&1 || true
  cat "$out" | tail -n 1
}

# Median of $RUNS measurements (by wall time), then the output's size from
# one more run that isn't timed.
median() {
  local i results=() bytes
  for ((i = 0; i < RUNS; i++)); do results+=("$(measure "$@")"); done
  bytes=$("$@" 2>/dev/null | wc -c)
  echo "$(printf '%s\n' "${results[@]}" | sort -n | sed -n "$(( (RUNS + 1) / 2 ))p") $bytes"
}

size_mib() { awk -v b="$(stat -c %s "$1")" 'BEGIN { printf "%.2f", b / 1048576 }'; }
calc() { awk "BEGIN { printf \"%.1f\", $1 }"; }

printf '%-34s %9s %9s %10s %13s %9s\n' "run" "seconds" "MiB/s" "peak MiB" "output bytes" "x openssl"
row() {
  local name=$1 file=$2 reference=$3; shift 3
  read -r secs kib bytes < <(median "$@")
  local mib rate peak ratio
  mib=$(size_mib "$file")
  rate=$(calc "$mib / ($secs + 0.005)")
  peak=$(calc "$kib / 1024")
  ratio="-"
  [ -n "$reference" ] && ratio=$(calc "$reference / ($secs + 0.005)")
  printf '%-34s %9s %9s %10s %13s %9s\n' "$name" "$secs" "$rate" "$peak" "$bytes" "$ratio"
  LAST_SECS=$secs
}

definite="$DATA/cdr-definite-${MB}mb.ber"
LAST_SECS=""
if command -v openssl >/dev/null; then
  row "openssl asn1parse (definite)" "$definite" "" openssl asn1parse -inform DER -in "$definite"
  OPENSSL=$LAST_SECS
else
  OPENSSL=""
fi
if command -v dumpasn1 >/dev/null; then
  row "dumpasn1 -z -e (definite)" "$definite" "$OPENSSL" dumpasn1 -z -e "$definite"
fi
declare -A DEFAULT
for variant in definite headers indefinite; do
  file="$DATA/cdr-$variant-${MB}mb.ber"
  row "qortlv -hex ($variant)" "$file" "$OPENSSL" "$QORTLV" -hexadecimal "$file"
  DEFAULT[$variant-hex]=$LAST_SECS
  row "qortlv -dec ($variant)" "$file" "$OPENSSL" "$QORTLV" -decomposed "$file"
  DEFAULT[$variant-dec]=$LAST_SECS
  row "qortlv -syn ($variant)" "$file" "$OPENSSL" "$QORTLV" -syntax "$file"
  DEFAULT[$variant-syn]=$LAST_SECS
  row "qortlv -json ($variant)" "$file" "$OPENSSL" "$QORTLV" -json "$file"
  DEFAULT[$variant-json]=$LAST_SECS
done

# The syntax layout with the bundled tag map, beside the same layout without.
row "qortlv -syn -tags 3gpp-ps (definite)" "$definite" "$OPENSSL" "$QORTLV" -syntax -tags 3gpp-ps "$definite"
echo "  -tags 3gpp-ps keeps $(awk "BEGIN { printf \"%.0f\", 100 * ${DEFAULT[definite-syn]} / ($LAST_SECS + 0.005) }")% of -syn's speed"

# The same listings on one thread: the rows above use one a CPU.
echo
printf '%-34s %9s %12s\n' "one thread (definite)" "seconds" "speed-up"
for layout in hex dec syn json; do
  case $layout in
    hex) option=-hexadecimal ;; dec) option=-decomposed ;; syn) option=-syntax ;; json) option=-json ;;
  esac
  read -r secs kib bytes < <(median "$QORTLV" -threads 1 $option "$definite")
  printf '%-34s %9s %12s\n' "qortlv -$layout -threads 1" "$secs" \
    "$(awk "BEGIN { printf \"%.2f\", $secs / (${DEFAULT[definite-$layout]} + 0.005) }")x on $(nproc)"
done
