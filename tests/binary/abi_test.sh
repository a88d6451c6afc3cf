#!/usr/bin/env bash
# Usage: abi_test.sh LIBRARY [--renew]. Records and functions that programs are compiled against are
# as abi.xml describes them. --renew writes abi.xml anew; docs/abi.md says when that is right.
set -euo pipefail
library=$(realpath "$1")
cd "$(dirname "$0")"

if [ "${2:-}" = --renew ]; then
  abidw --suppressions abi_ignored.ini --headers-dir ../../include --drop-private-types \
    --drop-undefined-syms --no-corpus-path --no-comp-dir-path --no-show-locs --no-elf-needed \
    --no-parameter-names --type-id-style hash "$library" | sed "s,path='[./]*src/,path='src/," >abi.xml
  exit
fi
# With the folder of the headers, abidiff would take every type of abi.xml for a private one.
abidiff --suppressions abi_ignored.ini abi.xml "$library" || { echo "docs/abi.md says which changes are allowed" >&2; exit 1; }
