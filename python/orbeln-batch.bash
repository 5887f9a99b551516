# bash completion for orbeln-batch
_orbeln_batch() {
  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}
  case "$prev" in
    --profile) mapfile -t COMPREPLY < <(compgen -W 'local slurm' -- "$cur"); return ;;
    --restraints) mapfile -t COMPREPLY < <(compgen -W 'xplor cyana nef none' -- "$cur"); return ;;
    --table) mapfile -t COMPREPLY < <(compgen -W 'auto parquet tsv.xz' -- "$cur"); return ;;
    -j|--cores|--group-size|--options|--convert-options) return ;;
  esac
  case "$cur" in
    -*) mapfile -t COMPREPLY < <(compgen -W '--output --cores --profile --configfile --group-size --restraints --options
          --convert-options --truth --table --retry-failed --verbose --dry-run --help' -- "$cur") ;;
    *) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- "$cur") ;;
  esac
}
complete -F _orbeln_batch orbeln-batch
