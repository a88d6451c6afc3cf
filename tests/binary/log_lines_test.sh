#!/usr/bin/env bash
# Usage: log_lines_test.sh SOURCE-FOLDER PAGE. The page explains just the lines that the source logs.
set -euo pipefail
diff <(grep -hoP '^\| `\K[^`]*(?=` \| (ERR|WARNING|DEBUG) \|)' "$2" | LC_ALL=C sort -u) \
     <(find "$1" -name '*.cpp' -exec cat {} + | tr '\n' ' ' |
         grep -oP 'SYSLOG\(\s*LOG_\w+,\s*"\K(\\.|[^"\\])*' | LC_ALL=C sort -u)
