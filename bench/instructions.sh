#!/usr/bin/env bash
# Instructions per element of both sides of a contest, counted by callgrind:
#   bench/instructions.sh PROGRAM CONTEST [ELEMENTS]
# Each side runs with ELEMENTS (default 20000) and with twice as many; the difference leaves out what
# a start costs.
set -euo pipefail

[ $# -ge 2 ] || { sed -n 's/^# \{0,1\}//p' "$0" | tail -n +2 >&2; exit 2; }
command -v valgrind >/dev/null || { echo "callgrind is not installed (package valgrind)" >&2; exit 1; }
program=$1 contest=$2 elements=${3:-20000}

count() {
  valgrind --tool=callgrind --callgrind-out-file=/dev/null \
    "$program" --side="$contest/$1" --elements="$2" 2>&1 |
    sed -n 's/.*Collected : \([0-9]*\).*/\1/p'
}

for side in subject floor; do
  few=$(count "$side" "$elements")
  many=$(count "$side" $((2 * elements)))
  echo "$contest/$side: $(((many - few) / elements)) instructions per element"
done
