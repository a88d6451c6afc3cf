#!/usr/bin/env bash
# Usage: log_lines_test.sh PAGE SOURCE-FOLDER... The page explains just the lines that the sources log.
set -euo pipefail
diff <(grep -hoP '^\| `\K[^`]*(?=` \| (ERR|WARNING|DEBUG) \|)' "$1" | LC_ALL=C sort -u) \
     <(find "${@:2}" -name '*.cpp' -exec cat {} + | tr '\n' ' ' |
         grep -oiP 'syslog\(\s*LOG_\w+,\s*"\K(\\.|[^"\\])*' | LC_ALL=C sort -u)
