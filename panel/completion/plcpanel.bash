# SPDX-License-Identifier: MIT
# Completion of plcpanel in bash: commands, options, and the files that options take.
#
#   source plcpanel.bash

_plcpanel_options() {
  local all="--help --version"
  local tries="--timeout --retries --max-block --driver"
  local logs="--gap --trace --capture"
  local station="--station --multi-station --remote"
  case $1 in
  read) echo "--controller $station --vars --hex --json $tries $logs $all" ;;
  write) echo "--controller $station --vars --json --verify --dry-run $tries $logs $all" ;;
  watch) echo "--controller $station --vars --hex --json --once --stats --interval --poll --part $tries $logs $all" ;;
  check) echo "--controller $station --vars --json $tries $logs $all" ;;
  scan) echo "--controller --station --stations --tries --remote --json $tries $logs $all" ;;
  where) echo "--vars --json --names $all" ;;
  log) echo "--controller $station --vars --json --to --every --rotate-size --rotate-daily --poll $tries $logs $all" ;;
  history) echo "--json --names --from --to --plot --csv $all" ;;
  replay) echo "$station --vars --port --hex --json $tries $all" ;;
  demo) echo "$tries $logs $all" ;;
  *) echo "$all" ;;
  esac
}

# Whether an option is followed by a value.
_plcpanel_takes_value() {
  case $1 in
  --controller | --station | --stations | --tries | --vars | --port | --interval | --poll | --part | --gap | --timeout | --retries | --max-block | --driver | --capture | \
    --to | --from | --rotate-size)
    return 0
    ;;
  esac
  return 1
}

# The words that are no options: the command, and what it is about.
_plcpanel_words() {
  local index
  for ((index = 1; index < COMP_CWORD; index++)); do
    if _plcpanel_takes_value "${COMP_WORDS[index]}"; then
      ((index++))
      # --OPTION=VALUE and HOST:PORT are three words for bash.
      [[ ${COMP_WORDS[index]} == = ]] && ((index++))
      while [[ ${COMP_WORDS[index + 1]} == : ]]; do
        ((index += 2))
      done
    elif [[ ${COMP_WORDS[index]} != -* ]]; then
      echo "${COMP_WORDS[index]}"
    fi
  done
}

# A word as the program gets it, of one that may be in quotes or have backslashes. Nothing in it is run.
_plcpanel_unquoted() {
  case $1 in
  \'*) set -- "${1#\'}" && echo "${1%\'}" ;;
  \"*) set -- "${1#\"}" && echo "${1%\"}" ;;
  \~/*) echo "$HOME/$(_plcpanel_unquoted "${1#\~/}")" ;;
  *) echo "${1//\\/}" ;;
  esac
}

# The list that --vars names, wherever that stands; nothing without it.
_plcpanel_list() {
  local index
  for ((index = 1; index < ${#COMP_WORDS[@]}; index++)); do
    [[ ${COMP_WORDS[index]} == --vars ]] || continue
    [[ ${COMP_WORDS[index + 1]} == = ]] && ((index++))
    _plcpanel_unquoted "${COMP_WORDS[index + 1]}"
    return
  done
}

# A name for the command line, within the quote that is open.
_plcpanel_quoted() {
  local name
  case $current in
  \'* | \"*) echo "$1" ;;
  *)
    printf -v name %q "$1"
    name=${name//:/\\:} # words end at these for bash
    echo "${name//=/\\=}"
    ;;
  esac
}

# All names that there are: those in a log, or in the list.
_plcpanel_all_names() {
  local program list
  program=$(_plcpanel_unquoted "${COMP_WORDS[0]}")
  if [[ ${words[0]} == history ]]; then
    list=$(_plcpanel_unquoted "${words[1]}")
    [[ -r $list ]] && "$program" history "$list" --names 2>/dev/null
  else
    list=$(_plcpanel_list)
    [[ -r $list ]] && "$program" where --vars "$list" --names 2>/dev/null
  fi
}

# Completes to the variables of the list. A pattern that several fit stays as it is, and they are shown.
_plcpanel_names() {
  local wanted name names fitting=() ending=$1
  wanted=$(_plcpanel_unquoted "$current")
  mapfile -t names < <(_plcpanel_all_names)
  for name in "${names[@]}"; do
    if [[ $wanted == *[*?]* ]]; then
      # shellcheck disable=SC2053 # it is a pattern
      [[ $name == ${wanted//[/\\[} ]] && fitting+=("$name")
    elif [[ $name == "$wanted"* ]]; then
      COMPREPLY+=("$(_plcpanel_quoted "$name")$ending")
    fi
  done
  if [[ ${#fitting[@]} == 1 ]]; then
    COMPREPLY=("$(_plcpanel_quoted "${fitting[0]}")")
  else
    for name in "${!fitting[@]}"; do # they begin with nothing in common that bash would put in place of the pattern
      COMPREPLY+=("$((name + 1)): ${fitting[name]}")
    done
  fi
}

# Completes to folders, and to files with one of these endings.
_plcpanel_files() {
  local ending
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(
    compgen -d -- "$current"
    for ending in "$@"; do
      compgen -f -X "!*.$ending" -- "$current"
    done
  )
}

_plcpanel() {
  local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} words
  COMPREPLY=()
  # --OPTION=VALUE is three words for bash.
  if [[ $current == = && $before == --* ]]; then
    current=
  elif [[ $before == = && ${COMP_WORDS[COMP_CWORD - 2]} == --* ]]; then
    before=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  case $before in
  --vars) _plcpanel_files csv && return ;;
  --capture) _plcpanel_files pcap jsonl && return ;;
  --to)
    [[ " ${COMP_WORDS[*]} " != *" log "* ]] || _plcpanel_files csv sqlite
    return
    ;;
  --driver) _plcpanel_files so 'so.*' && return ;;
  --controller)
    mapfile -t COMPREPLY < <(compgen -A hostname -- "$current")
    return
    ;;
  esac
  _plcpanel_takes_value "$before" && return
  mapfile -t words < <(_plcpanel_words)
  if [[ $current == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$(_plcpanel_options "${words[0]}")" -- "$current")
  elif [[ ${#words[@]} == 0 ]]; then
    mapfile -t COMPREPLY < <(compgen -W "read write watch check scan where log history replay demo" -- "$current")
  elif [[ ${words[0]} == replay && ${#words[@]} == 1 ]]; then
    _plcpanel_files pcap pcapng jsonl
  elif [[ ${words[0]} == history && ${#words[@]} == 1 ]]; then
    _plcpanel_files sqlite
  elif [[ ${words[0]} == write ]]; then # behind the = comes a value
    [[ $current == = || $before == = ]] && return
    compopt -o nospace 2>/dev/null
    _plcpanel_names "="
  elif [[ ${words[0]} == @(read|watch|check|where|log|history|replay) ]]; then
    _plcpanel_names
  fi
}

complete -F _plcpanel plcpanel
