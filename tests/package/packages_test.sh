#!/bin/bash
# Installs, uses and purges the Debian packages in a new Debian system in a folder. Run as root: packages_test.sh FOLDER
# FOLDER has the packages. The system and what else the test needs come by the machine's own apt sources.
set -euo pipefail
packages=$(readlink -f "$1")
here=$(dirname "$(readlink -f "$0")")
(($(id -u) == 0)) || { echo "packages_test.sh: needs root" >&2; exit 1; }

sources=
for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.sources /etc/apt/sources.list.d/*.list; do
    if [ -z "$sources" ] && [ -s "$file" ]; then
        sources=$file
    fi
done

# The hooks are words for mmdebstrap's shell, which knows the new system as $1.
# shellcheck disable=SC2016
mmdebstrap --quiet --mode=root --variant=apt --format=null \
    --include=g++,cmake,ninja-build,pkg-config \
    --customize-hook='mkdir "$1/packages"' \
    --customize-hook="cp '$packages'/*.deb \"\$1/packages\"; rm -f \"\$1\"/packages/*dbgsym*" \
    --customize-hook="cp '$here/packages_steps.sh' \"\$1/packages\"" \
    --customize-hook='chroot "$1" /packages/packages_steps.sh' \
    bookworm - "$sources" >/dev/null
