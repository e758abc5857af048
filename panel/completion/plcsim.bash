# Completion of plcsim in bash: options, files and faults.
#
#   source plcsim.bash

_plcsim_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -f -- "$1")
}

_plcsim() {
  local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local faults="no-reply= late= doubled= split= glued= cut= longer= wrong-unit= exception= close="
  COMPREPLY=()
  case $before in
  --load | --dump-file)
    _plcsim_files "$current"
    ;;
  --fault)
    compopt -o nospace 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -W "$faults" -- "$current")
    ;;
  --port | --refuse | --late-ms | --seed) ;;
  *)
    mapfile -t COMPREPLY < <(compgen -W "--port --remote --load --dump --dump-file --refuse --fault --late-ms
      --seed --trace --quiet --help --version" -- "$current")
    ;;
  esac
}

complete -F _plcsim plcsim
