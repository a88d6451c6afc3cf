#!/usr/bin/env bash
# Usage: docs_test.sh SOURCE-FOLDER. What the pages say of files is true: links lead to files, code
# shown below "```cpp FILE" is in FILE, docs/reliability.md names tests that exist, and
# docs/architecture.md links each class outside the tests to the file that defines it.
set -uo pipefail
cd "$1" || exit
status=0

fail() {
  echo "$1" >&2
  status=1
}

pages=(*.md docs/*.md)
links=0
for page in "${pages[@]}"; do
  while read -r link; do
    links=$((links + 1))
    [ -e "$(dirname "$page")/$link" ] || fail "$page links a file that does not exist: $link"
  done < <(sed '/^```/,/^```/d' "$page" | grep -oP '\]\(\K(?!https?:)[^)#]+')

  while read -r file; do
    code=$(sed -n "\|^\`\`\`cpp $file\$|,/^\`\`\`\$/{//!p}" "$page")
    [[ -n $code && $(<"$file") == *"$code"* ]] || fail "$page shows code that is not in $file"
  done < <(grep -oP '^```cpp \K.+' "$page")
done

classes=0
while IFS=: read -r file class; do
  classes=$((classes + 1))
  grep -qF "[\`$class\`](../$file)" docs/architecture.md ||
    fail "docs/architecture.md does not link class $class: [\`$class\`](../$file)"
done < <(grep -roP --include='*.h' --include='*.cpp' \
  '^class ((__attribute__|MVQ_QCMAP_)\S+ )?\K\w+(?=[^;]*\{)' include src platform tools)

while IFS=. read -r suite name; do
  grep -rqE "^TEST\w*\($suite, $name\)" tests bench || fail "docs/reliability.md names a test that does not exist: $suite.$name"
done < <(grep -oP '`\K[A-Z]\w+\.[A-Z]\w+(?=`)' docs/reliability.md)

[ $((links * classes)) -gt 0 ] || fail "found $links links and $classes classes"
exit $status
