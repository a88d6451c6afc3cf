#!/usr/bin/env bash
# Usage: binary_test.sh LIBRARY EXPORTS. The library exports just what EXPORTS lists, needs just the
# libraries it may need, and runs nothing when it is loaded.
set -uo pipefail
library=$1 exports=$2 status=0

fail() {
  echo "$1" >&2
  status=1
}

diff "$exports" <(nm -DC --defined-only "$library" | cut -d' ' -f3- | LC_ALL=C sort -u) ||
  fail "the exports are not those listed in $exports"

symbols=$(dirname "$0")/../../packaging/libmvq-qcmap0.symbols
diff "$exports" <(sed -nE 's/^ \(c\+\+\)"(.*)@Base" .*/\1/p' "$symbols") ||
  fail "the package's symbols file does not list the exports"

needed=$(readelf -dW "$library" | sed -nE 's/.*\(NEEDED\).*\[(.*)\]/\1/p' | LC_ALL=C sort | xargs)
allowed='^(libc\.so\.6 )?(libgcc_s\.so\.1 )?libmutil\.so\.0 libqcmap_client\.so\.1 libqmi_client\.so\.1 libstdc\+\+\.so\.6$'
[[ $needed =~ $allowed ]] || fail "needed libraries: $needed"
[[ $(readelf -dW "$library") == *'Library soname: [libmvq_qcmap.so.0]'* ]] || fail "wrong soname"
[[ $(readelf -dW "$library") == *BIND_NOW* ]] || fail "symbols are not bound at load time"

# The compiler's own frame_dummy is the only entry of a library without static initialisers.
entries=$(readelf -SW "$library" | sed -nE 's/.* \.init_array +INIT_ARRAY +[0-9a-f]+ [0-9a-f]+ ([0-9a-f]+) .*/\1/p')
word=$(readelf -hW "$library" | grep -q ELF64 && echo 8 || echo 4)
[ $((16#${entries:-0})) -le "$word" ] || fail "static initialisers: .init_array of 0x$entries bytes"
exit $status
