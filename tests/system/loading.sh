#!/bin/sh
# The library can be loaded and unloaded by a running program, says nothing, and does nothing when it is loaded.
# usage: loading.sh PROGRAM LIBRARY
set -eu
program=$1
library=$2

output=$("$program" "$library" 2>&1) || { echo "the program failed: $output"; exit 1; }
[ -z "$output" ] || { echo "something was printed: $output"; exit 1; }

# Loading runs what stands in .init_array: one entry, the compiler's own, and none of ours.
size=$(readelf -S --wide "$library" | awk '$2 == ".init_array" || $3 == ".init_array" { print $0 }' |
    sed 's/.*INIT_ARRAY *[0-9a-f]* *[0-9a-f]* *\([0-9a-f]*\).*/\1/')
[ "$((0x$size))" -le 8 ] || { echo "the library runs code when it is loaded (.init_array has 0x$size bytes)"; exit 1; }

# What the library calls neither prints to the standard streams, nor ends the process, nor handles signals.
used=$(nm -D --undefined-only "$library" | awk '{ print $2 }' | sed 's/@.*//' |
    grep -xE 'stdout|stderr|_ZSt4cout|_ZSt4cerr|printf|puts|putchar|perror|exit|_exit|abort|signal|sigaction|setlocale' || true)
[ -z "$used" ] || { echo "the library uses: $used"; exit 1; }
