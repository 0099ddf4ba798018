#!/usr/bin/env bash
# Builds the seed corpora from the golden inputs and the bundled examples,
# then runs each fuzz target for FUZZ_SECONDS (default 20). Any crash,
# leak, sanitizer report or timeout fails.
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD=${FUZZ_BUILD:-build-fuzz}
SECONDS_EACH=${FUZZ_SECONDS:-20}
corpus=$BUILD/corpus
mkdir -p "$corpus/seeds"
for hex in $(find tests/golden -name input.hex); do
  name=$(echo "$hex" | tr '/' '_')
  digits=$(sed 's/#.*//' "$hex" | tr -cd '0-9A-Fa-f')
  printf "$(printf '%s' "$digits" | sed 's/\(..\)/\\x\1/g')" > "$corpus/seeds/$name"
done
cp examples/*.ber examples/*.der "$corpus/seeds/" 2>/dev/null || true
for text in $(find tests/golden -name input.txt -o -name stdin-pipe); do
  # a leading octet for fuzz_textforms: 1 reads the text as PEM, 0 as base64
  printf '\001' | cat - "$text" > "$corpus/seeds/$(echo "$text" | tr '/' '_')"
done
# The names reader also starts from the list of built-in names.
mkdir -p "$corpus/oid-seeds"
cp oids/oids.txt "$corpus/oid-seeds/"
for target in run decode text repair textforms oids threads; do
  mkdir -p "$corpus/$target"
  extra=()
  [ "$target" = oids ] && extra=("$corpus/oid-seeds")
  echo "fuzzing $target for ${SECONDS_EACH}s"
  "$BUILD/fuzz_$target" -max_total_time="$SECONDS_EACH" -timeout=10 -rss_limit_mb=2048 -max_len=65536 \
    -print_final_stats=1 "$corpus/$target" "$corpus/seeds" "${extra[@]}" 2>&1 | tail -n 12
done
