#!/usr/bin/env bash
# packages.sh FOLDER: in a fresh Debian, as root, installs the packages in FOLDER/packages, uses them as strangers
# do, on the files in FOLDER/samples, and removes them without a trace. ./dev package --try runs it.
set -euo pipefail
folder=$1
export DEBIAN_FRONTEND=noninteractive LC_ALL=C

apt() { apt-get -y -qq --no-install-recommends "$@" >/tmp/apt.log 2>&1 || { cat /tmp/apt.log; exit 1; }; }
# What apt and dpkg note for themselves does not count.
everything() { find / -xdev -path "$folder" -prune -o -print | grep -vE '^/(proc|sys|dev|tmp|var/(cache|log|lib/(apt|dpkg)))/' | sort; }

everything >/tmp/before
apt install "$folder"/packages/*.deb
vxbmp --version
vxbmp info "$folder"/samples/icon-sizes.ico
apt purge vxbmp libvxkrn-dev libvxkrn18
apt autoremove --purge
everything | diff /tmp/before - || { echo "the packages leave these files"; exit 1; }

apt install gcc g++ make cmake pkgconf "$folder"/packages/*.deb
cd /tmp
gcc -std=c11 "$folder/consumer/consumer.c" $(pkg-config --cflags --libs vxkrn) -o c_program
./c_program "$folder/samples/icon-sizes.ico" out.bmp
cmake -S "$folder/consumer" -B build >cmake.log
cmake --build build >>cmake.log
./build/cpp_program out.bmp out.ico
vxbmp info out.bmp out.ico
