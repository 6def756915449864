# Debian packages that the build, the programs and the tests need, and the function that installs the missing ones.
# Sourced by ./run, ./test and tests/reliability/soak.
build_packages="g++ cmake ninja-build pkg-config libembree-dev libassimp-dev libdraco-dev libmeshoptimizer-dev
  libtiff-dev libpng-dev libjpeg-dev libopenexr-dev libwebp-dev libcli11-dev nlohmann-json3-dev libseccomp-dev libzstd-dev libxxhash-dev libutf8proc-dev zlib1g-dev
  qt6-base-dev qt6-svg-dev libfreetype-dev libfribidi-dev python3-dev pybind11-dev fonts-dejavu-core fonts-droid-fallback"
test_packages="libgtest-dev librapidcheck-dev xvfb xauth openbox xdotool python3 python3-numpy mypy dpkg-dev desktop-file-utils appstream shared-mime-info
  slurmctld slurmd munge slurm-client"
# A browser for the tests of web pages, which are skipped without one.
browser_packages="chromium"
bench_packages="libbenchmark-dev"
# A compiler that fuzzes, with what names the places in its sanitizers' reports: for ./test --sanitize, --fuzz and soak.
fuzz_packages="clang libclang-rt-14-dev llvm"
lint_packages="clang-format clang-tidy git"

install_missing() {
  local missing=""
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing="$missing $package"
  done
  [ -n "$missing" ] || return 0
  echo "Installing:$missing"
  local as_root=""
  if [ "$(id -u)" != 0 ]; then
    command -v sudo >/dev/null || { echo "These packages are missing and need root to install:$missing" >&2; return 1; }
    as_root="sudo"
  fi
  # shellcheck disable=SC2086
  { $as_root apt-get update -qq &&
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
      -o DPkg::Lock::Timeout=300 $missing; } >"${TMPDIR:-/tmp}/stagemarks-packages.$$.log" 2>&1 ||
    { cat "${TMPDIR:-/tmp}/stagemarks-packages.$$.log" >&2
      echo "The packages could not be installed (see above)." >&2
      return 1; }
  rm -f "${TMPDIR:-/tmp}/stagemarks-packages.$$.log"
}

# Configures and builds: build_in FOLDER "CMAKE ARGUMENTS" TARGETS... Quiet where all goes well.
build_in() {
  local folder="$1" arguments="$2" log
  shift 2
  log="$folder/build.log"
  mkdir -p "$folder"
  # shellcheck disable=SC2086
  cmake -S . -B "$folder" -G Ninja $arguments >"$log" 2>&1 || { cat "$log" >&2; return 1; }
  if [ -t 1 ]; then
    ninja -C "$folder" "$@" || return 1
  else
    ninja -C "$folder" "$@" >"$log" 2>&1 || { tail -n 60 "$log" >&2; return 1; }
  fi
}
