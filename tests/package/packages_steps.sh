#!/bin/bash
# What packages_test.sh does inside of the new system, which has the packages in /packages.
set -euo pipefail
export DEBIAN_FRONTEND=noninteractive

say() { echo "-- $*"; }

list_files() { # all files outside of what the system keeps of packages in general
    find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /run -o -path /tmp -o -path /packages -o -path /root \
        -o -path /var/cache -o -path /var/log -o -path /var/lib/apt -o -path /var/lib/dpkg \) -prune -o -print | sort
}

await() { # WHAT COMMAND...: at most 10 s
    local what=$1 tries
    shift
    for ((tries = 0; tries < 200; ++tries)); do
        if "$@" >/dev/null 2>&1; then
            return
        fi
        sleep 0.05
    done
    echo "$what did not happen in 10 s" >&2
    exit 1
}

mapfile -t names < <(for file in /packages/*.deb; do dpkg-deb --field "$file" Package; done)

say "what the packages need besides each other"
apt-get -q -y install --no-install-recommends /packages/*.deb >/tmp/first.log || { cat /tmp/first.log; exit 1; }
apt-get -q -y purge "${names[@]}" >/tmp/purge.log
list_files >/tmp/before

say "install"
apt-get -q -y install --no-install-recommends /packages/*.deb >/tmp/install.log || { cat /tmp/install.log; exit 1; }
getent group corvane
test -d /run/corvane || systemd-tmpfiles --create corvane.conf
stat -c '%A %U %G %n' /run/corvane | grep -x 'drwxrws--T root corvane /run/corvane'
test "$(readlink /usr/local/etc/cursor.png)" = /usr/share/corvane/cursor.png
corvanectl --version
corvane-procmand --version
for name in man1/corvanectl.1 man7/corvane.7 man8/corvane-procmand.8; do
    test -f "/usr/share/man/$name.gz"
done

say "build the examples with the installed packages, as they are"
cp -r /usr/share/doc/corvane/examples /root
cmake -S /root/examples -B /root/build -G Ninja >/tmp/cmake.log
cmake --build /root/build >/tmp/build.log || { cat /tmp/build.log; exit 1; }
read -ra flags < <(pkg-config --cflags --libs corvane)
g++ -std=c++20 /root/examples/hello-window/main.cpp -o /root/hello "${flags[@]}"

say "a whole box"
export CORVANE_RUNTIME_DIR=/run/corvane CORVANE_RPC_GROUP=corvane
corvane-procmand --compositor memory --state-folder /root/state >/tmp/procmand.log 2>&1 &
procmand=$!
await "the process manager" corvanectl ps
corvanectl launch --name tv --type demo /root/build/box-window
await "the window" sh -c 'corvanectl windows | grep -q tv'
corvanectl focus tv on
await "the focus" sh -c 'corvanectl focus tv | grep -qx on'
corvanectl ps
corvanectl stop tv
await "the end of the application" sh -c '! corvanectl windows | grep -q tv'
kill "$procmand"
wait "$procmand"

say "purge"
rm -rf /root/build /root/state /root/hello /root/examples /run/corvane/*
apt-get -q -y purge "${names[@]}" >/tmp/purge.log
list_files >/tmp/after
diff /tmp/before /tmp/after
say "nothing is left"
