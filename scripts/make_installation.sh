#!/usr/bin/env bash
# A whole installation from the two data sets: trains it, packs it, compares it with the committed one, measures it.
# Called by `make installation`; the settings come in the environment:
#
#   PAIRED      folder of train.tsv.xz, train-more.tsv.xz, proteins.tsv, proteins-more.tsv (training/README.md); with
#               dev.tsv.xz and dev-input.tar.xz also the accuracy is measured
#   STRUCTURES  folder of chains.tsv, residues.tsv.xz, phipsi_dssp.tsv.xz, refdb_map.tsv, refdb_residues.tsv.xz
#   OUT         result: OUT/tab the tables, OUT/data the packed ones, OUT/ACCURACY.md the report
#   CACHE       results of finished stages (OUT/cache); a second run goes on from them
#   BLASTDB     large BLAST database for the profiles of the sequence networks (none)
#   PROFILES    folder of checkpoints PROTEIN.chk of the validation proteins, for the report (none)
#   LOOKED      how often the validation proteins were looked at, this run included, for the report
#   ACCURACY    no = do not look at the validation proteins
#   QUICK       yes = a few proteins and one epoch each: a test of the kit
#   PYTHON      /usr/bin/python3
set -euo pipefail
cd "$(dirname "$0")/.."
python=${PYTHON:-/usr/bin/python3}
build=build/release

fail() {
  echo "make installation: $1" >&2
  exit 1
}

check_folder() { # variable, what it holds, files
  local folder=${!1:-}
  [ -n "$folder" ] || fail "give $1=DIR, the folder of $2 (formats: training/README.md)"
  [ -d "$folder" ] || fail "$1=$folder is no folder"
  local file
  for file in "${@:3}"; do
    [ -r "$folder/$file" ] || fail "$1=$folder holds no readable $file (formats: training/README.md)"
  done
}

check_folder PAIRED "proteins with shifts and torsions" \
  train.tsv.xz train-more.tsv.xz proteins.tsv proteins-more.tsv
check_folder STRUCTURES "chains with torsions" chains.tsv residues.tsv.xz phipsi_dssp.tsv.xz refdb_map.tsv refdb_residues.tsv.xz
[ -n "${OUT:-}" ] || fail "give OUT=DIR, the folder for the result"
out=$(realpath -m "$OUT")
cache=$(realpath -m "${CACHE:-$out/cache}")
# The program cuts its arguments at every hyphen, and the cache's paths are given to it.
case $cache in *-*) fail "the path $cache holds a hyphen: choose another OUT or CACHE" ;; esac
[ -x "$(command -v "$python")" ] || fail "no $python (Debian: python3)"
missing=()
for module in numpy sklearn torch; do
  "$python" -c "import $module" 2>/dev/null || missing+=("python3-$module")
done
command -v psiblast >/dev/null || missing+=(ncbi-blast+)
command -v xz >/dev/null || missing+=(xz-utils)
[ ${#missing[@]} -eq 0 ] || fail "missing Debian packages: ${missing[*]} (apt-get install ${missing[*]})"
"$python" -c 'import ctypes; ctypes.CDLL("libopenblas.so.0")' 2>/dev/null ||
  echo "make installation: without libopenblas0-pthread the training takes some twenty times longer" >&2

cmake --preset release >/dev/null
cmake --build --preset release --target orbeln orbeln-dump
mkdir -p "$out/tab" "$cache"
train() { # stages
  "$python" training/build.py --paired "$PAIRED" --structures "$STRUCTURES" --out "$out" --cache "$cache" \
    --dump "$build/orbeln-dump" --stages "$1" ${BLASTDB:+--blastdb "$BLASTDB"} ${QUICK:+--quick}
}

lane() { # name, stages; one core, its progress in CACHE/NAME.log
  OMP_NUM_THREADS=1 train "$2" 2>"$cache/$1.log" | sed -u "s/^/[$1] /" ||
    { tail -n 20 "$cache/$1.log" >&2; fail "stages $2 failed; a second run goes on from the finished ones"; }
}

export OPENBLAS_NUM_THREADS=1 # the stages that can use more cores start processes of their own
train reference,inputs
# Independent of each other from here on. The first two take about as long as each other; the third half as long.
lanes=()
lane maps folds,hybrid,chi1 & lanes+=($!)
lane structure structure,sequence & lanes+=($!)
lane level1 level1 & lanes+=($!)
failed=no
for job in "${lanes[@]}"; do wait "$job" || failed=yes; done
[ $failed = no ] || exit 1
"$python" training/pack.py --install "$out" --data "$out/data"
scripts/checksums.sh "$out/data"
others=$(comm -13 <(sort data/SHA256SUMS) <(sort "$out/data/SHA256SUMS") | sed 's/^[0-9a-f]* /  /')
equal=$(comm -12 <(sort data/SHA256SUMS) <(sort "$out/data/SHA256SUMS") | wc -l)
echo "$equal of $(wc -l < data/SHA256SUMS) committed files are reproduced bit for bit${others:+, but not:}"
if [ -n "$others" ]; then echo "$others"; fi

if [ "${ACCURACY:-yes}" = no ] || [ ! -r "$PAIRED/dev.tsv.xz" ] || [ ! -r "$PAIRED/dev-input.tar.xz" ]; then
  echo "accuracy not measured"
else
  ORBELN_DIR=$out "$python" scripts/accuracy.py --program "$build/orbeln" --inputs "$PAIRED/dev-input.tar.xz" \
    --truth "$PAIRED/dev.tsv.xz" --report "$out/ACCURACY.md" ${PROFILES:+--profiles "$PROFILES"} \
    ${LOOKED:+--looked "$LOOKED"}
  echo "Report: $out/ACCURACY.md"
fi
echo "To commit this installation: cp -r $out/data/. data/ && make data-table, and the report to docs/"
