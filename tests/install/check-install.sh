#!/usr/bin/env bash
# Installs the built kit into a scratch prefix and builds a host program against it with
# find_package, as a host project would.
set -euo pipefail
build_dir=$1 source_dir=$2
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build_dir" --prefix "$prefix" >/dev/null
cmake -S "$source_dir/tests/install/consumer" -B "$prefix/consumer-build" -G Ninja \
  -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$prefix/consumer-build" >/dev/null
"$prefix/consumer-build/consumer"
