#!/bin/bash
# Uses an installation as a stranger does. Run by ctest as: package_test.sh STEP BUILD WORK COMPILER
#   install       installs BUILD below WORK and then moves it, for an installation may be moved
#   find_package  builds and runs the consumer with CMake; neither JSON library may be asked for
#   pkg-config    the same without CMake
#   examples      builds the examples as a project of their own
#   corvanectl    runs the installed program
#   unit          asks systemd whether the unit of the process manager is sound; not run where systemd-analyze is missing
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

# systemd-analyze ends with 0 after some of its complaints, and complains of other units as well.
verify_unit() { # FILE
    local output code=0
    output=$(systemd-analyze verify --man=no --recursive-errors=no "$1" 2>&1) || code=$?
    echo "$output"
    ((code == 0)) && ! grep -q "$(basename "$1")" <<<"$output"
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
unit)
    if ! command -v systemd-analyze >/dev/null; then
        echo "NOT RUN: systemd-analyze is not installed"
        exit 77
    fi
    mkdir -p "$work/unit"
    # The installation was moved, and the unit names the program where it was to be.
    sed "s|^ExecStart=[^ ]*|ExecStart=$prefix/bin/corvane-procmand|" \
        "$prefix/lib/systemd/system/corvane-procmand.service" >"$work/unit/corvane-procmand.service"
    verify_unit "$work/unit/corvane-procmand.service"
    # What the check is worth: it must notice a setting that systemd does not know, and a program that is not there.
    sed 's/^Restart=on-failure/Restart=sometimes/' "$work/unit/corvane-procmand.service" >"$work/unit/broken.service"
    sed 's/^ExecStart=[^ ]*/&-missing/' "$work/unit/corvane-procmand.service" >"$work/unit/missing.service"
    for unit in broken missing; do
        if verify_unit "$work/unit/$unit.service"; then
            echo "the unit is $unit, and nothing is said about it"
            exit 1
        fi
    done
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
