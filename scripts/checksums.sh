#!/usr/bin/env bash
# Writes data/SHA256SUMS: the archives of data/, and every table that they and data/tab/ unpack to.
#   scripts/checksums.sh [DATA_FOLDER]
set -euo pipefail
export LC_ALL=C
data=$(cd "${1:-$(dirname "$0")/../data}" && pwd)
unpacked=$(mktemp -d)
trap 'rm -rf "$unpacked"' EXIT

cp -r "$data/tab" "$unpacked/"
for archive in "$data"/*.tar.xz; do
  tar xJf "$archive" -C "$unpacked"
done
{
  (cd "$data" && sha256sum -- *.tar.xz)
  (cd "$unpacked" && sha256sum -- tab/*)
} > "$data/SHA256SUMS"
echo "$data/SHA256SUMS: $(wc -l < "$data/SHA256SUMS") files"
