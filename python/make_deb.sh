#!/usr/bin/env bash
# Makes python3-orbeln_VERSION_all.deb in the given folder: the package, the command orbeln-batch and its workflow.
set -euo pipefail

[ $# -eq 1 ] || { echo "usage: make_deb.sh FOLDER" >&2; exit 2; }
source=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$1"
target=$(cd "$1" && pwd)
version=$(sed -n 's/^version = "\(.*\)"$/\1/p' "$source/pyproject.toml")
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT
chmod 755 "$stage"

library=$stage/usr/lib/python3/dist-packages
share=$stage/usr/share/orbeln
mkdir -p "$library" "$share" "$stage/usr/bin" "$stage/DEBIAN"
mkdir -p "$stage/usr/share/doc/python3-orbeln" "$stage/usr/share/man/man1" "$stage/usr/share/bash-completion/completions"
cp -r "$source/orbeln" "$library/"
cp -r "$source/../workflow" "$share/"
rm -f "$share/workflow/orbeln-batch"
find "$stage" -name __pycache__ -prune -exec rm -r {} +
printf '#!/usr/bin/python3\nimport sys\n\nfrom orbeln.batch.command import main\n\nsys.exit(main())\n' >"$stage/usr/bin/orbeln-batch"
chmod 755 "$stage/usr/bin/orbeln-batch"
cp "$source/README.md" "$stage/usr/share/doc/python3-orbeln/"
cp "$source/orbeln-batch.bash" "$stage/usr/share/bash-completion/completions/orbeln-batch"
gzip -9n <"$source/orbeln-batch.1" >"$stage/usr/share/man/man1/orbeln-batch.1.gz"
find "$stage" -type d -exec chmod 755 {} +
find "$stage" -type f ! -perm -100 -exec chmod 644 {} +
cat >"$stage/DEBIAN/control" <<END
Package: python3-orbeln
Version: $version
Architecture: all
Section: science
Priority: optional
Maintainer: ORBEL-N maintainers <orbeln@localhost>
Installed-Size: $(du -sk "$stage/usr" | cut -f1)
Depends: python3 (>= 3.9), python3-numpy, python3-pandas, orbeln
Recommends: python3-matplotlib, snakemake
Description: protein torsion angles from NMR chemical shifts (Python and batches)
 Predictions of orbeln as data frames, pictures and restraints from Python, and
 orbeln-batch, which predicts whole archives of entries and goes on where it was
 stopped.
END
cat >"$stage/DEBIAN/postinst" <<'END'
#!/bin/sh
set -e
if [ "$1" = configure ] && command -v py3compile >/dev/null; then py3compile -p python3-orbeln; fi
END
cat >"$stage/DEBIAN/prerm" <<'END'
#!/bin/sh
set -e
if command -v py3clean >/dev/null; then py3clean -p python3-orbeln; fi
END
chmod 755 "$stage/DEBIAN/postinst" "$stage/DEBIAN/prerm"
dpkg-deb --root-owner-group --build "$stage" "$target/python3-orbeln_${version}_all.deb"
