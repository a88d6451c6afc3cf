#!/usr/bin/env bash
# Usage: install_test.sh CHECK PREFIX BUILD. The check "places" installs the build into PREFIX; the
# other checks use what it has installed.
set -euo pipefail
check=$1 prefix=$2 build=$3
source=$(cd "$(dirname "$0")/../.." && pwd)
program=$source/examples/data_call.cpp
export CMAKE_GENERATOR=Ninja PKG_CONFIG_PATH=$prefix/lib/pkgconfig

fail() {
  echo "$*" >&2
  exit 1
}

work=$(mktemp -d "${TMPDIR:-/tmp}/qcmap-install-XXXXXX")
trap 'rm -rf "$work"' EXIT

# quietly COMMAND...: shows what the command printed only if it fails.
quietly() {
  "$@" >"$work/log" 2>&1 || { cat "$work/log"; fail "failed: $*"; }
}

# runs PROGRAM: it brings a call up and down against the installed server.
runs() {
  local output
  output=$("$prefix/bin/mvq-qcmap-sim" -- "$@" 2>"$work/log") ||
    { cat "$work/log"; fail "failed with the installed server: $*"; }
  [[ $output == *'state 2 and 2'* ]] || fail "no call came up: $*: $output"
}

# compile COMPILER STANDARD: with the flags that pkg-config gives. They are quoted for a shell.
compile() {
  eval "$1 -std=c++$2 -Wall -Wextra -Wpedantic -Werror \"$program\" -o \"$work/consumer\" \
    $(pkg-config --cflags --libs mvq_qcmap) -Wl,-rpath,\"$PKG_CONFIG_PATH/..\""
}

places() {
  rm -rf "$prefix"
  quietly cmake --install "$build" --prefix "$prefix"
  local program version
  version=$(pkg-config --modversion mvq_qcmap)
  diff - <(cd "$prefix" && find . -type f -o -type l | sed "s/$version/VERSION/" |
    LC_ALL=C sort) <<'END'
./bin/QCMAP_ConnectionManager
./bin/mvq-qcmap-sim
./bin/mvq-qcmap-trace
./bin/qcmapctl
./include/mox/result.h
./include/mox/util/event_dic.h
./include/mox/util/ip_family.h
./include/mox/vendor/qcom/qcmap/qcmap_wrapper.h
./include/mox/vendor/qcom/qcmap/subscription.h
./include/mox/vendor/qcom/qcmap/version.h
./include/mox/wwan/data_manager.h
./include/mox/wwan/mobileap_manager.h
./include/mox/wwan/tech.h
./lib/cmake/mvq_qcmap/mvq_qcmap-config-version.cmake
./lib/cmake/mvq_qcmap/mvq_qcmap-config.cmake
./lib/cmake/mvq_qcmap/mvq_qcmap-sim-targets-relwithdebinfo.cmake
./lib/cmake/mvq_qcmap/mvq_qcmap-sim-targets.cmake
./lib/cmake/mvq_qcmap/mvq_qcmap-sim.cmake
./lib/cmake/mvq_qcmap/mvq_qcmap-targets-relwithdebinfo.cmake
./lib/cmake/mvq_qcmap/mvq_qcmap-targets.cmake
./lib/libmutil.so
./lib/libmutil.so.0
./lib/libmvq_qcmap.so
./lib/libmvq_qcmap.so.0
./lib/libmvq_qcmap.so.VERSION
./lib/libqcmap_client.so
./lib/libqcmap_client.so.1
./lib/libqmi_client.so
./lib/libqmi_client.so.1
./lib/mvq-qcmap/libmvq_qcmap_trace.so
./lib/pkgconfig/mvq_qcmap.pc
./share/bash-completion/completions/qcmapctl
./share/doc/mvq_qcmap/CHANGELOG.md
./share/doc/mvq_qcmap/README.md
./share/doc/mvq_qcmap/log-lines.md
./share/doc/qcmapctl/reporting.md
./share/fish/vendor_completions.d/qcmapctl.fish
./share/man/man1/QCMAP_ConnectionManager.1
./share/man/man1/mvq-qcmap-sim.1
./share/man/man1/mvq-qcmap-trace.1
./share/man/man1/qcmapctl.1
./share/man/man3/libmvq_qcmap.3
./share/qcmapctl/qcmapctl.schema.json
./share/zsh/vendor-completions/_qcmapctl
END
  for program in qcmapctl mvq-qcmap-sim mvq-qcmap-trace QCMAP_ConnectionManager; do
    [ "$("$prefix/bin/$program" --version)" = "$program $version" ] ||
      fail "$program --version is not $version"
  done
  "$prefix/bin/mvq-qcmap-sim" -- "$prefix/bin/qcmapctl" >"$work/log" ||
    fail "the installed tool fails with the installed server"
  quietly "$prefix/bin/mvq-qcmap-sim" -- "$prefix/bin/mvq-qcmap-trace" --output "$work/trace" -- \
    "$prefix/bin/qcmapctl"
  grep -q EnableMobileAP "$work/trace" || fail "the installed tool is not traced"
}

pkg_config() {
  local compiler standard
  for compiler in g++ clang++; do
    for standard in 14 17 20; do
      compile $compiler $standard || fail "$compiler with C++$standard fails"
      runs "$work/consumer"
    done
  done
}

# consumer NAME OPTION...: a project of its own, configured, built and run.
consumer() {
  quietly cmake -S "$source/tests/install/consumer" -B "$work/$1" -DPROGRAM="$program" "${@:2}"
  quietly cmake --build "$work/$1"
  runs "$work/$1/consumer"
}

find_package() {
  local version
  version=$(pkg-config --modversion mvq_qcmap)
  consumer any -DCMAKE_PREFIX_PATH="$prefix"
  consumer same -DCMAKE_PREFIX_PATH="$prefix" -DWANTED="${version%.*}"
  ! cmake -S "$source/tests/install/consumer" -B "$work/other" -DCMAKE_PREFIX_PATH="$prefix" \
    -DPROGRAM="$program" -DWANTED=0.0.1 >"$work/log" 2>&1 ||
    fail "a program that wants version 0.0.1 gets $version"
}

# The sessions of docs/testing.md, one after the other, in one shell.
testing() {
  ln -s "$prefix" "$work/qcmap"
  awk '/^```/ { inside = !inside; shown = inside && $0 == "```"; next } shown' "$source/docs/testing.md" \
    >"$work/page"
  sed -n 's/^[$>] //p' "$work/page" >"$work/script"
  (cd "$source" && HOME=$work PATH=$prefix/bin:$PATH bash "$work/script" >"$work/log" 2>&1) ||
    { cat "$work/log"; fail "docs/testing.md: a command fails"; }
  diff <(grep -v '^[$>] ' "$work/page") "$work/log"
}

# Without the server and the tools, as a subproject has it by default.
subproject() {
  consumer subproject -DSUBPROJECT="$source"
  [ ! -e "$work/subproject/mvq_qcmap/tools/qcmapctl/qcmapctl" ] || fail "the tool was built, too"
}

# The headers and libraries of the simulated platform play the vendor's. The library's folder is
# absolute, and the files say so.
device() {
  local root=$work/vendor libdir=$work/device/libraries
  mkdir -p "$root/lib"
  cp -R "$source/platform/include" "$root"
  cp -a "$prefix"/lib/lib{mutil,qcmap_client,qmi_client}.so* "$root/lib"
  quietly cmake -S "$source" -B "$work/build" -DMVQ_QCMAP_PLATFORM=device \
    -DMVQ_QCMAP_PLATFORM_ROOT="$root" -DCMAKE_INSTALL_LIBDIR="$libdir" \
    -DCMAKE_INSTALL_PREFIX="$work/device" -DCMAKE_BUILD_TYPE=Debug
  grep -q "RPATH \"$libdir\"" "$work/build/tools/qcmapctl/cmake_install.cmake" ||
    fail "the tool will not find the library in $libdir"
  quietly cmake --build "$work/build" --target mvq_qcmap mvq-qcmap-trace docs/all
  quietly cmake --install "$work/build" --component runtime
  quietly cmake --install "$work/build" --component development
  PKG_CONFIG_PATH=$libdir/pkgconfig LD_LIBRARY_PATH=$root/lib compile g++ 14
  runs env LD_LIBRARY_PATH="$root/lib" "$work/build/tools/mvq-qcmap-trace/mvq-qcmap-trace" \
    --record "$work/recording" -- "$work/consumer"
  [ "$(tail -n 1 "$work/recording")" = '{"end":true}' ] || fail "the program is not recorded"
}

# The library and the libraries beyond the seam, from copies of the tree in folders whose names
# differ in length. A compiler cache would bring objects from one folder to the other.
reproducible() {
  export CCACHE_DISABLE=1
  local copy library
  for copy in one another; do
    mkdir "$work/$copy"
    tar -C "$source" --exclude=./build --exclude=./.git -c . | tar -C "$work/$copy" -x
    quietly cmake -S "$work/$copy" -B "$work/$copy/build" -DCMAKE_BUILD_TYPE=Debug \
      -DMVQ_QCMAP_{SERVER,TOOLS,TESTS}=OFF
    quietly cmake --build "$work/$copy/build"
    quietly cmake --install "$work/$copy/build" --prefix "$work/$copy/installed" --strip
  done
  for library in "$work"/one/installed/lib/*.so.*; do
    cmp "$library" "$work/another/installed/lib/${library##*/}" ||
      fail "${library##*/} depends on the folder in which it is built"
  done
}

"$check"
