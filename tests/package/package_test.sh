#!/bin/bash
# Uses an installation as a stranger does. Run by ctest as: package_test.sh STEP BUILD WORK COMPILER
#   install       installs BUILD below WORK and then moves it, for an installation may be moved
#   find_package  builds and runs the consumer with CMake; neither JSON library may be asked for
#   pkg-config    the same without CMake
#   examples      builds the examples as a project of their own
#   corvanectl    runs the installed program
#   components    installs each component by itself: together they are the whole installation, and none has what is another's
#   uninstall     installs, uninstalls, and finds that nothing is left
#   static        builds static libraries, installs them, and builds and runs the consumer with them
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

expect_nothing_of() { # COMMAND...: must print nothing
    local output
    output=$("$@") || true
    if [ -n "$output" ]; then
        printf 'this should not be there:\n%s\n' "$output"
        exit 1
    fi
}

build_project() { # SOURCE NAME [OPTION...]
    cmake -S "$1" -B "$work/$2" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix" \
        ${TOOLCHAIN:+"-DCMAKE_TOOLCHAIN_FILE=$TOOLCHAIN" -DCMAKE_FIND_ROOT_PATH="$prefix"} \
        "${@:3}"
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
    build_project "$here/consumer" consumer \
        -DCMAKE_DISABLE_FIND_PACKAGE_simdjson=ON -DCMAKE_DISABLE_FIND_PACKAGE_jsoncpp=ON
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
components)
    list() { (cd "$1" && find . -type f -o -type l | sort); }
    rm -rf "$work/components" "$work/whole"
    mkdir -p "$work/components"
    cmake --install "$build" --prefix "$work/whole" >"$work/components.log"
    for component in runtime directfb tools procmand development documentation; do
        cmake --install "$build" --prefix "$work/components/$component" --component $component >>"$work/components.log"
        [ ! -d "$work/components/$component" ] || list "$work/components/$component"
    done | sort >"$work/components.txt"
    list "$work/whole" | diff - "$work/components.txt"
    expect_nothing_of find "$work/components/runtime" -name '*.h' -o -name '*.so'
    ;;
uninstall)
    rm -f "$build"/install_manifest*.txt
    rm -rf "$work/removed"
    mkdir -p "$work/removed/include"
    echo "of somebody else" >"$work/removed/include/other.h"
    cmake --install "$build" --prefix "$work/removed" >"$work/uninstall.log"
    cmake --install "$build" --prefix "$work/removed" --component tools >>"$work/uninstall.log"
    [ -e "$work/removed/include/corvane/Window.h" ]
    cmake --build "$build" --target uninstall >>"$work/uninstall.log"
    [ "$(cd "$work/removed" && find . -type f -o -type l)" = ./include/other.h ]
    expect_nothing_of find "$work/removed" -name corvane
    { cmake --build "$build" --target uninstall 2>&1 || true; } | grep 'nothing was installed'
    ;;
static)
    cmake -S "$here/../.." -B "$work/static-build" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_BUILD_TYPE="$TYPE" \
        -DBUILD_SHARED_LIBS=OFF -DCORVANE_BUILD_TOOLS=OFF -DCORVANE_BUILD_DAEMONS=OFF -DCORVANE_BUILD_EXAMPLES=OFF \
        -DCORVANE_BUILD_TESTS=OFF -DCORVANE_WITH_DIRECTFB=OFF
    cmake --build "$work/static-build"
    prefix=$work/static
    cmake --install "$work/static-build" --prefix "$prefix"
    build_project "$here/consumer" static-consumer
    compile_by_pkg_config corvane "$here/consumer/main.cpp" "$work/static-by-pkg-config"
    for program in "$work/static-consumer/consumer" "$work/static-by-pkg-config"; do
        expect_state "$program"
        expect_nothing_of grep corvane <(ldd "$program")
    done
    ;;
unit)
    if ! command -v systemd-analyze >/dev/null; then
        echo "NOT RUN: systemd-analyze is not installed"
        exit 77
    fi
    cmake --install "$build" --prefix "$work/unit" --component procmand
    cp "$work/unit/lib/systemd/system/corvane-procmand.service" "$work/unit"
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
