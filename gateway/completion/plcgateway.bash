# SPDX-License-Identifier: MIT
# Completion of plcgateway in bash: options, their words, and the files that they take.
#
#   source plcgateway.bash

_plcgateway_files() {
  local ending
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(
    compgen -d -- "$current"
    for ending in "$@"; do
      compgen -f -X "!*.$ending" -- "$current"
    done
  )
}

_plcgateway() {
  local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local switches="--multi-station --remote --allow-writes --check --status --json --help --version"
  local valued="--controller --vars --station --poll --gap --timeout --retries --max-block --stale-after --part --driver
    --broker --mqtt --client-id --keep-alive --ca --cert --key --login --format --prefix --group --node --device
    --primary-host --republish --figures --state --spool-size --spool-age --config"
  COMPREPLY=()
  case $before in
  --vars) _plcgateway_files csv && return ;;
  --config) _plcgateway_files ini && return ;;
  --ca | --cert) _plcgateway_files crt pem && return ;;
  --key) _plcgateway_files key pem && return ;;
  --driver) _plcgateway_files so 'so.*' && return ;;
  --login) compopt -o filenames 2>/dev/null; mapfile -t COMPREPLY < <(compgen -f -- "$current") && return ;;
  --state) compopt -o filenames 2>/dev/null; mapfile -t COMPREPLY < <(compgen -d -- "$current") && return ;;
  --format) mapfile -t COMPREPLY < <(compgen -W "json sparkplug" -- "$current") && return ;;
  --mqtt) mapfile -t COMPREPLY < <(compgen -W "3.1.1 5" -- "$current") && return ;;
  --controller | --broker) mapfile -t COMPREPLY < <(compgen -A hostname -- "$current") && return ;;
  esac
  [[ " ${valued//$'\n'/ } " == *" $before "* ]] && return
  mapfile -t COMPREPLY < <(compgen -W "$switches $valued" -- "$current")
}

complete -F _plcgateway plcgateway
