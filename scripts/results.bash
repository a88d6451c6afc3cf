# shellcheck shell=bash
# Sourced by the scripts that check: counts what passes and what fails. The script that sources it
# ends with the line "N passed, N failed", also when it is interrupted, and fails if anything did.

passed=0
failed=0
trap 'echo "$passed passed, $failed failed"; [ "$failed" -eq 0 ] && [ "$passed" -gt 0 ] || exit 1' EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# count PASSED FAILED
count() {
  passed=$((passed + $1))
  failed=$((failed + $2))
}

# check NAME COMMAND...: one command that counts as one check. It ends with a line that names it.
check() {
  local name=$1
  shift
  if "$@"; then
    echo "ok: $name"
    count 1 0
  else
    echo "FAILED: $name"
    count 0 1
  fi
}

# build PRESET [TARGET...]: like scripts/build, but shows only how a build that fails has ended.
build() {
  local log=build/$1.log
  mkdir -p build
  scripts/build "$@" >"$log" 2>&1 && return
  tail -n 60 "$log"
  return 1
}

# suite PRESET [CTEST-OPTION...]: runs tests, as many at a time as there are processors, counts each
# and shows those that do not pass.
suite() {
  local log=build/$1.tests.log
  "${launcher[@]}" ctest --preset "$1" -j "$(nproc)" "${@:2}" 2>&1 | tee "$log" |
    grep -vE '^ +Start +[0-9]+: | Passed +[0-9.]+ sec$'
  local bad='' all=''
  read -r bad all < <(sed -nE 's/.* ([0-9]+) tests failed out of ([0-9]+)$/\1 \2/p' "$log")
  if [ "${all:-0}" -gt 0 ]; then
    count $((all - bad)) "$bad"
  else
    echo "FAILED: no test of $1 ran"
    count 0 1
  fi
}
launcher=()
