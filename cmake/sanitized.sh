# The build with the address and undefined-behavior sanitizers, and fuzzing in it. Sourced by ./test and tests/reliability/soak, after
# packages.sh.
sanitized_folder=build/sanitized
# What fuzzing has learned and found, which outlives the build.
fuzz_folder=build/fuzz
# Prefix of a command: its memory is at the same addresses each time, where the system allows it.
same_places=""
! setarch -R true 2>/dev/null || same_places="setarch -R"
fuzz_targets="SceneFileFuzz ImageFuzz StoreFuzz StateTextFuzz PreferencesFuzz FramesFuzz"

# has_clang OTHERWISE: status 1, and a word that this is what happens now, where there is none.
has_clang() {
  # shellcheck disable=SC2086
  install_missing $fuzz_packages || true
  command -v clang++ >/dev/null && return
  echo "There is no clang++ here (Debian's packages $fuzz_packages): $1." >&2
  return 1
}

# build_sanitized FOLDER COMPILER "CMAKE ARGUMENTS" TARGETS...
build_sanitized() {
  local folder="$1" compiler="$2" arguments="$3"
  shift 3
  build_in "$folder" "-DCMAKE_BUILD_TYPE=RelWithDebInfo -DSTAGEMARKS_SANITIZE=address,undefined -DSTAGEMARKS_TESTS=ON
    -DSTAGEMARKS_DESKTOP=OFF -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON -DCMAKE_CXX_COMPILER=$compiler $arguments" "$@"
}

# build_fuzzers "CMAKE ARGUMENTS": the fuzz targets and what they need.
build_fuzzers() { build_sanitized "$sanitized_folder" clang++ "${1:-}" fuzz_targets Stagemarks; }

# fuzz TARGET LEARNED FLAGS...: over the kept inputs and those in the folder LEARNED, where new ones are put, and from these on as
# the flags of libFuzzer say. Status 1 where something was found; what and where is printed.
fuzz() {
  local target="$1" learned="$2" kept="tests/fuzz/corpus/$1" log="$fuzz_folder/$1.log" status=0
  shift 2
  [ "$target" != ImageFuzz ] || kept=tests/render/pictures
  mkdir -p "$learned" "$fuzz_folder/found"
  # shellcheck disable=SC2086
  UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 $same_places "$sanitized_folder/bin/$target" "$@" -rss_limit_mb=2500 \
    -reload=0 -print_final_stats=1 -artifact_prefix="$fuzz_folder/found/$target-" "$learned" "$kept" >"$log" 2>&1 || status=1
  [ "$status" = 0 ] || { tail -n 40 "$log"; sed -n 's/.*Test unit written to /What was found: /p' "$log"; } >&2
  return "$status"
}

# How many inputs the last call of fuzz for TARGET has tried.
fuzzed() {
  local tried
  tried=$(sed -n 's/^stat::number_of_executed_units: *//p' "$fuzz_folder/$1.log")
  echo "${tried:-0}"
}
