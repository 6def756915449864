# Completion of `stagemarks` for bash: verbs, options, their values, scenes, and the names in a scene.
declare -A _stagemarks_options _stagemarks_places _stagemarks_value _stagemarks_allowed
@VERBS@

# Adds those of the lines read that begin with what was typed so far.
_stagemarks_offer() {
  local word
  while IFS= read -r word; do
    [[ $word == "$typed"* ]] || continue
    # Inside a quote the shell wants the name as it is.
    if [[ $cur == [\"\']* ]]; then COMPREPLY+=("$word"); else COMPREPLY+=("$(printf %q "$word")"); fi
  done
}

_stagemarks_offer_words() {
  local word
  for word in $1; do
    [[ $word == "$cur"* ]] && COMPREPLY+=("$word")
  done
}

# Folders, and files with one of the suffixes.
_stagemarks_offer_files() {
  local path
  compopt -o filenames 2>/dev/null
  while IFS= read -r path; do
    if [[ -d $path || ${path,,} =~ \.($1)$ ]]; then COMPREPLY+=("$path"); fi
  done < <(compgen -f -- "${cur#[\"\']}")
}

# Names that the scene of this command line holds, of Stagemarks or of elements of a kind. Only our own scenes: an import takes
# too long for a key.
_stagemarks_offer_names() {
  local i scene=""
  for ((i = 0; i < ${#places[@]} && i < ${#given[@]}; i++)); do
    [[ ${places[i]} == SCENE* ]] && scene="${given[i]}"
  done
  scene="${scene//[\"\'\\]/}"
  scene="${scene/#\~/$HOME}"
  [[ $scene == *.c4d && -f $scene ]] || return
  _stagemarks_offer < <(timeout 3 "${COMP_WORDS[0]}" ${1:+"$1"} list "$scene" --names ${typed:+--begin="$typed"} 2>/dev/null)
}

# One of several with commas between them: what stands before the last comma stays.
_stagemarks_offer_parts() {
  local word head=""
  [[ $cur == *,* ]] && head="${cur%,*},"
  compopt -o nospace 2>/dev/null
  for word in $1; do
    [[ $head$word == "$cur"* ]] && COMPREPLY+=("$head$word")
  done
}

# What a verb with actions takes behind the scene.
_stagemarks_offer_elements() {
  case "$verb ${given[0]}" in
    *\ add|trash*) ;;
    states\ import) _stagemarks_offer_files 'json' ;;
    states*) _stagemarks_offer_names ;;
    *) _stagemarks_offer_names "$verb" ;;
  esac
}

# What fits in for the word that stands for a value or a place, as the help shows it.
_stagemarks_offer_for() {
  case "$1" in
    SCENE*) _stagemarks_offer_files 'c4d|gltf|glb|fbx|obj|dae' ;;
    OUT) _stagemarks_offer_files 'c4d' ;;
    FILE|FILES) _stagemarks_offer_files 'png|tif|exr' ;;
    DIR*) _stagemarks_offer_files '/' ;;
    STAGEMARK*|OLD) _stagemarks_offer_names ;;
    OBJECT*) _stagemarks_offer_names objects ;;
    CAMERA) _stagemarks_offer_names cameras ;;
    MATERIAL) _stagemarks_offer_names materials ;;
    LAYER*) _stagemarks_offer_names layers ;;
    NAMES*) _stagemarks_offer_elements ;;
  esac
}

_stagemarks() {
  local cur="${COMP_WORDS[COMP_CWORD]}" verb="" open="" word i
  # As the name is, without what the shell makes of it.
  local typed="${cur#[\"\']}"
  [[ $cur == [\"\']* ]] || typed="${typed//\\/}"
  local -a given=()
  COMPREPLY=()
  for ((i = 1; i < COMP_CWORD; i++)); do
    word="${COMP_WORDS[i]}"
    if [[ $word == -* ]]; then
      open="$word"
    elif [[ -z $verb ]]; then
      verb="$word"
    elif [[ -n $open && -n ${_stagemarks_value["$verb $open"]} ]]; then
      # One value is taken, or as many as come.
      [[ ${_stagemarks_value["$verb $open"]} == *... ]] || open=""
    else
      given+=("$word")
      open=""
    fi
  done
  local value="${_stagemarks_value["$verb $open"]}" allowed="${_stagemarks_allowed["$verb $open"]}"
  local -a places
  read -ra places <<<"${_stagemarks_places["${verb:-?}"]}"
  if [[ $cur == -* ]]; then
    _stagemarks_offer_words "${_stagemarks_options["${verb:--}"]}"
  elif [[ -z $verb ]]; then
    _stagemarks_offer_words "$_stagemarks_verbs"
  elif [[ $value == PARTS ]]; then
    _stagemarks_offer_parts "$allowed"
  elif [[ -n $allowed ]]; then
    _stagemarks_offer_words "$allowed"
  elif [[ -n $open && -n $value ]]; then
    _stagemarks_offer_for "$value"
  elif ((${#given[@]} < ${#places[@]})); then
    local place="${places[${#given[@]}]}"
    allowed="${_stagemarks_allowed["$verb $place"]}"
    if [[ -n $allowed ]]; then _stagemarks_offer_words "$allowed"; else _stagemarks_offer_for "$place"; fi
  elif ((${#places[@]} > 0)) && [[ ${places[-1]} == *... ]]; then
    _stagemarks_offer_for "${places[-1]}"
  fi
}
complete -F _stagemarks stagemarks
