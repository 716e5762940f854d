# Completion of zrmodule for bash: commands, options, files, folders and the names of classes.

_zrmodule_words() {   # _zrmodule_words WORD...: offers those that begin with the current word
  local word
  for word in "$@"; do
    [[ $word != "$current"* ]] || COMPREPLY+=("$word")
  done
}

_zrmodule_paths() {   # _zrmodule_paths [-d]: offers files and folders, or folders only
  local path
  compopt -o filenames 2>/dev/null
  while IFS= read -r path; do COMPREPLY+=("$path"); done < <(compgen "${1:--f}" -- "$current")
}

# The names of the classes in the folders of --folder, or in the folders where hosts look. A class begins a line of the list,
# with its identifier at the end.
_zrmodule_classes() {
  local index folders=() line
  for ((index = 2; index < COMP_CWORD; index++)); do
    [[ ${COMP_WORDS[index - 1]} != --folder ]] || folders+=("${COMP_WORDS[index]}")
  done
  while IFS= read -r line; do
    [[ $line =~ ^([^ ].*)\ \ [0-9A-F]{8}-[0-9A-F-]{27}$ ]] && _zrmodule_words "${BASH_REMATCH[1]}"
  done < <(zrmodule list "${folders[@]}" 2>/dev/null)
}

_zrmodule() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} word name=
  COMPREPLY=()
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    [[ $word == -* ]] || { name=$word; break; }
  done
  case $previous in
    --folder) _zrmodule_paths -d; return ;;
    --configuration) _zrmodule_paths; return ;;
    --class) _zrmodule_classes; return ;;
    --timeout | -n) return ;;
  esac
  if [[ $current == -* ]]; then
    local options=(--json --help)
    case $name in
      '') options+=(--version) ;;
      list) options+=(--configuration) ;;
      probe) options+=(--class --folder --timeout) ;;
      new) options+=(--folder) ;;
      uuid) options+=(-n) ;;
    esac
    _zrmodule_words "${options[@]}"
    return
  fi
  case $name in
    '') _zrmodule_words list check probe new uuid code info ;;
    list) _zrmodule_paths -d ;;
    check | probe) _zrmodule_paths ;;
  esac
}

complete -F _zrmodule zrmodule
