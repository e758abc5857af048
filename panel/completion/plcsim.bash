# SPDX-License-Identifier: MIT
# Completion of plcsim in bash: options, files and faults.
#
#   source plcsim.bash

_plcsim_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -f -- "$1")
}

_plcsim() {
  local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local faults="no-reply= late= doubled= split= glued= cut= longer= wrong-unit= exception= close=
    padded-exception= wrong-echo= wrong-byte-count= wrong-length= close-after-reply= delay="
  COMPREPLY=()
  case $before in
  --load | --dump-file)
    _plcsim_files "$current"
    ;;
  --fault)
    compopt -o nospace 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -W "$faults" -- "$current")
    ;;
  --listen)
    mapfile -t COMPREPLY < <(compgen -W "127.0.0.1 0.0.0.0 ::1 ::" -- "$current")
    ;;
  --port | --refuse | --silent | --delay | --delay-ms | --late-ms | --seed) ;;
  *)
    mapfile -t COMPREPLY < <(compgen -W "--port --listen --remote --load --dump --dump-file --refuse --silent
      --delay --fault --late-ms --delay-ms --seed --trace --quiet --help --version" -- "$current")
    ;;
  esac
}

complete -F _plcsim plcsim
