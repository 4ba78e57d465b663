#!/bin/bash
# Uses an installation as a stranger does. Run by ctest as: package_test.sh STEP BUILD WORK COMPILER
#   install       installs BUILD below WORK and then moves it, for an installation may be moved
#   find_package  builds and runs the consumer with CMake; neither JSON library may be asked for
#   pkg-config    the same without CMake
#   examples      builds the examples as a project of their own
#   corvanectl    runs the installed program
#   directfb      builds and runs the consumer of the component directfb, by CMake and by pkg-config
#   cursor        compares the installed picture of the mouse pointer with what its script draws
set -euo pipefail
step=$1 build=$2 work=$3 compiler=$4
here=$(dirname "$(readlink -f "$0")")
prefix=$work/moved

expect_state() {
    local output
    output=$("$@")
    echo "$output"
    grep -qx 'APP[0-9]* is LOADING' <<<"$output"
}

build_project() { # SOURCE NAME
    cmake -S "$1" -B "$work/$2" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix" \
        -DCMAKE_DISABLE_FIND_PACKAGE_simdjson=ON -DCMAKE_DISABLE_FIND_PACKAGE_jsoncpp=ON
    cmake --build "$work/$2"
}

case $step in
install)
    rm -rf "$work"
    cmake --install "$build" --prefix "$work/first" >"$work.log" || { cat "$work.log"; exit 1; }
    mv "$work/first" "$prefix"
    ;;
find_package)
    build_project "$here/consumer" consumer
    expect_state "$work/consumer/consumer"
    ;;
pkg-config)
    PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name corvane.pc)")
    export PKG_CONFIG_PATH
    read -ra flags < <(pkg-config --cflags --libs corvane)
    "$compiler" -std=c++20 "$here/consumer/main.cpp" -o "$work/by-pkg-config" "${flags[@]}"
    LD_LIBRARY_PATH=$(pkg-config --variable=libdir corvane) expect_state "$work/by-pkg-config"
    ;;
examples)
    build_project "$here/../../examples" examples
    ;;
corvanectl)
    "$prefix/bin/corvanectl" --help | grep -i corvanectl
    ;;
directfb)
    PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name corvane-directfb.pc)")
    export PKG_CONFIG_PATH DFBARGS=system=dummy,no-banner,quiet,no-sighandler,disable-module=linux_input
    build_project "$here/directfb-consumer" directfb-consumer
    "$work/directfb-consumer/directfb-consumer" | grep -x 'symbol 61451, pointer shown'
    read -ra flags < <(pkg-config --cflags --libs corvane-directfb | sed 's/-I\([^ ]*directfb\)/-isystem \1/')
    "$compiler" -std=c++20 "$here/directfb-consumer/main.cpp" -o "$work/directfb-by-pkg-config" "${flags[@]}"
    LD_LIBRARY_PATH=$(pkg-config --variable=libdir corvane) "$work/directfb-by-pkg-config" |
        grep -x 'symbol 61451, pointer shown'
    ;;
cursor)
    "$here/../../assets/draw_cursor.py" "$work/drawn.png"
    cmp "$work/drawn.png" "$prefix/etc/cursor.png"
    ;;
*)
    echo "unknown step: $step" >&2
    exit 2
    ;;
esac
