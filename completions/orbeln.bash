# bash completion for orbeln and its companion programs

_orbeln_files() {
  # Folders always, files by ending when endings are given.
  compopt -o filenames 2>/dev/null
  if [ -n "${1:-}" ]; then
    mapfile -t COMPREPLY < <(compgen -d -- "$cur"; compgen -f -X "!*.@($1)" -- "$cur")
  else
    mapfile -t COMPREPLY < <(compgen -f -- "$cur")
  fi
}

_orbeln_words() {
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$cur")
}

# The last word of a list separated by commas; what stands in the list already is not offered again.
_orbeln_list() {
  local before="" left="" word
  case "$cur" in *,*) before="${cur%,*}," ;; esac
  for word in $1; do
    # "none" is a list of its own.
    case ",$before" in *,"$word",*) continue ;; ?*,*) [ "$word" = none ] && [ -n "$before" ] && continue ;; esac
    left="$left $word"
  done
  compopt -o nospace 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -P "$before" -W "$left" -- "${cur##*,}")
}

_orbeln_shift_files='str|star|nef|prot|list|shifts|shifty|csv|tsv|tab|txt'
_orbeln_shift_formats='nmrstar nmrstar2 nef xeasy sparky shifty pipp lacs csv tsv table'
_orbeln_restraint_formats='xplor cyana nef gromacs amber'
_orbeln_classes='Strong Generous Warn Dyn Bad'

_orbeln_convert() {
  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}
  shopt -q extglob || shopt -s extglob
  case "$prev" in
    -o|--output) _orbeln_files tab; return ;;
    -s|--sequence) _orbeln_files 'fasta|fa|seq|txt'; return ;;
    -f|--format) _orbeln_words "$_orbeln_shift_formats"; return ;;
    -c|--chain|-l|--list|--columns|--first-resid|--list-offset) return ;;
  esac
  case "$cur" in
    -*) _orbeln_words '--output --chain --list --sequence --format --columns --first-resid --list-offset --keep-first
                       --skip-ambiguous --mse-as-met --modified-as-parent --strict --choices --quiet --help --version' ;;
    *) _orbeln_files "$_orbeln_shift_files" ;;
  esac
}

_orbeln_run() {
  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}
  shopt -q extglob || shopt -s extglob
  case "$prev" in
    -o|--output) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -d -- "$cur"); return ;;
    -s|--sequence) _orbeln_files 'fasta|fa|seq|txt'; return ;;
    -f|--format) _orbeln_words "$_orbeln_shift_formats"; return ;;
    --restraints) _orbeln_list "$_orbeln_restraint_formats star none"; return ;;
    --classes) _orbeln_list "$_orbeln_classes"; return ;;
    --coordinates) _orbeln_files 'pdb|gro'; return ;;
    -ref|--ref) _orbeln_files 'pdb|ent'; return ;;
    --numbers) _orbeln_words 'original table'; return ;;
    -c|--chain|-l|--list|--columns|--first-resid|--list-offset|--factor|--floor) return ;;
  esac
  case "$cur" in
    -*) _orbeln_words '--output --all --chain --list --sequence --format --columns --first-resid --list-offset --keep-first
                       --skip-ambiguous --mse-as-met --modified-as-parent --strict --iso --noproton --offset --noOxiCysCheck --ref --restraints
                       --coordinates --classes --factor --floor --numbers --drop-bad --unknown-types --no-report --help --version' ;;
    *) _orbeln_files "$_orbeln_shift_files" ;;
  esac
}

_orbeln_restraints() {
  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}
  shopt -q extglob || shopt -s extglob
  case "$prev" in
    --format) _orbeln_words "$_orbeln_restraint_formats star"; return ;;
    --classes) _orbeln_list "$_orbeln_classes"; return ;;
    --chi1|--input-table) _orbeln_files tab; return ;;
    --into) _orbeln_files nef; return ;;
    --numbers) _orbeln_words 'original table'; return ;;
    --coordinates) _orbeln_files 'pdb|gro'; return ;;
    -o|--output) _orbeln_files; return ;;
    --factor|--floor|--cap|--chi1-floor|--chi1-probability|--force|--chain|--residue-offset) return ;;
  esac
  case "$cur" in
    -*) _orbeln_words '--format --output --chi1 --classes --factor --floor --cap --chi1-floor --chi1-probability
                       --force --chain --coordinates --residue-offset --into --input-table --numbers --unknown-types
                       --drop-bad --wrap --quiet --help --version' ;;
    *) _orbeln_files tab ;;
  esac
}

_orbeln_report() {
  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}
  shopt -q extglob || shopt -s extglob
  case "$prev" in
    -o|--output) _orbeln_files html; return ;;
    --json) _orbeln_files json; return ;;
    --tsv) _orbeln_files tsv; return ;;
    --ref) _orbeln_files 'pdb|ent'; return ;;
    --log) _orbeln_files; return ;;
    --stem|--title) return ;;
  esac
  case "$cur" in
    -*) _orbeln_words '--output --json --tsv --stem --log --ref --title --quiet --help --version' ;;
    *) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -d -- "$cur") ;;
  esac
}

_orbeln() {
  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}
  shopt -q extglob || shopt -s extglob
  case "$prev" in
    -in|-sum|-all|-db|-rand|-adj|-prev|-next|-limits) _orbeln_files tab; return ;;
    -ref) _orbeln_files 'pdb|ent'; return ;;
    -blast_check) _orbeln_files check; return ;;
    -orbelnDir|-tabDir) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -d -- "$cur"); return ;;
    -inTitle|-refTitle|-first|-last|-s2Thresh|-excl|-np) return ;;
  esac
  _orbeln_words '-in -inTitle -ref -refTitle -proton -noproton -sum -all -verb -noverb -path -nopath -first -last
                 -s2Thresh -iso -offset -check -noclip -OxiCysCheck -noOxiCysCheck -excl -orbelnDir -tabDir -db
                 -rand -adj -prev -next -limits -seqSS -blast_check -np -help'
}

complete -F _orbeln orbeln
complete -F _orbeln_convert orbeln-convert
complete -F _orbeln_run orbeln-run
complete -F _orbeln_restraints orbeln-restraints
complete -F _orbeln_report orbeln-report
