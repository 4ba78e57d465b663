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
# Where BUILD is for another processor, TOOLCHAIN names its toolchain file, FLAGS what its compiler needs, PKG_CONFIG_LIBDIR
# where its packages are, and EMULATOR the words before a program that is started.
set -euo pipefail
step=$1 build=$2 work=$3 compiler=$4
here=$(dirname "$(readlink -f "$0")")
prefix=$work/moved
read -ra emulator <<<"${EMULATOR:-}"
read -ra flags <<<"${FLAGS:-}"

run() {
    "${emulator[@]}" "$@"
}

expect_state() { # PROGRAM
    local output
    output=$(run "$1")
    echo "$output"
    grep -qx 'APP[0-9]* is LOADING' <<<"$output"
}

build_project() { # SOURCE NAME
    cmake -S "$1" -B "$work/$2" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix" \
        ${TOOLCHAIN:+"-DCMAKE_TOOLCHAIN_FILE=$TOOLCHAIN" -DCMAKE_FIND_ROOT_PATH="$prefix"} \
        -DCMAKE_DISABLE_FIND_PACKAGE_simdjson=ON -DCMAKE_DISABLE_FIND_PACKAGE_jsoncpp=ON
    cmake --build "$work/$2"
}

compile_by_pkg_config() { # PACKAGE SOURCE PROGRAM
    local found
    PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name "$1.pc")")
    export PKG_CONFIG_PATH
    # Headers of others are none of our warnings'.
    read -ra found < <(pkg-config --cflags --libs "$1" | sed "s|-I\([^ ]*directfb\)|-isystem ${SYSROOT:-}\1|")
    "$compiler" -std=c++20 "${flags[@]}" "$2" -o "$3" "${found[@]}"
    LD_LIBRARY_PATH=$(pkg-config --variable=libdir corvane)
    export LD_LIBRARY_PATH
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
    compile_by_pkg_config corvane "$here/consumer/main.cpp" "$work/by-pkg-config"
    expect_state "$work/by-pkg-config"
    ;;
examples)
    build_project "$here/../../examples" examples
    ;;
corvanectl)
    run "$prefix/bin/corvanectl" --help | grep -i corvanectl
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
    export DFBARGS=system=dummy,no-banner,quiet,no-sighandler,disable-module=linux_input
    build_project "$here/directfb-consumer" directfb-consumer
    run "$work/directfb-consumer/directfb-consumer" | grep -x 'symbol 61451, pointer shown'
    compile_by_pkg_config corvane-directfb "$here/directfb-consumer/main.cpp" "$work/directfb-by-pkg-config"
    run "$work/directfb-by-pkg-config" | grep -x 'symbol 61451, pointer shown'
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
