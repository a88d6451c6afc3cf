#!/usr/bin/env bash
# Usage: readme_test.sh README EXAMPLE. The program shown is the example.
set -euo pipefail
diff <(sed -n '/^```cpp$/,/^```$/{//!p}' "$1") "$2"
