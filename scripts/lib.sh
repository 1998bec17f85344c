# Functions of all scripts, which source this. Changes the caller's folder to the project's root.
# shellcheck shell=bash
set -euo pipefail
export LC_ALL=C.UTF-8  # The checks read other programs' output.
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."

jobs=${JOBS:-2}
logs=build/logs
mkdir -p "$logs"

build_packages=(cmake ninja-build pkgconf googletest nlohmann-json3-dev libcli11-dev
  zlib1g-dev node-d3-axis node-d3-scale node-d3-zoom python3)
clang_packages=(clang-19 lld-19 libc++-19-dev libc++abi-19-dev libunwind-19-dev libclang-rt-19-dev)

say() { printf '== %s\n' "$*"; }

fail() {
  printf 'error: %s\n' "$*" >&2
  exit 1
}

# quietly NAME COMMAND...: keeps the command's output in a log and shows its end only if it fails. Runs
# it without errexit: a function must return its own failure.
quietly() {
  local log=$logs/$1.log
  shift
  "$@" >"$log" 2>&1 && return
  tail -n 100 "$log" >&2
  printf 'error: this failed: %s (all of its output: %s)\n' "$*" "$log" >&2
  return 1
}

# need PACKAGE...: installs those that are missing; fails, with the reason, if it cannot.
need() {
  local package missing=() log=$logs/apt.log
  for package in "$@"; do
    dpkg-query -W -f='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed ||
      missing+=("$package")
  done
  [[ ${#missing[@]} -gt 0 ]] || return 0
  if [[ $(id -u) -ne 0 ]] && ! command -v sudo >/dev/null; then
    printf 'error: neither root nor sudo, so install these first: %s\n' "${missing[*]}" >&2
    return 1
  fi
  say "installing ${missing[*]}"
  # The second attempt is for a brief failure of the mirror or the network.
  apt_install "${missing[@]}" >"$log" 2>&1 </dev/null && return
  apt_install "${missing[@]}" >"$log" 2>&1 </dev/null && return
  printf 'error: cannot install %s: %s (all of its output: %s)\n' \
    "${missing[*]}" "$(tail -n 1 "$log")" "$log" >&2
  return 1
}

apt_install() {
  apt_get update || true  # One broken source may not matter: the installation shows.
  apt_get install --no-install-recommends "$@"
}

apt_get() {
  local as_root=()
  [[ $(id -u) -eq 0 ]] || as_root=(sudo)
  [[ $(id -u) -eq 0 || -z ${CI:-} ]] || as_root+=(-n)  # In CI nobody can type a password.
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get -q -y -o DPkg::Lock::Timeout=300 "$@"
}

# need_for PRESET: installs what the preset's build needs.
need_for() {
  case $1 in
    gcc) need "${build_packages[@]}" g++ ;;
    armv7)
      need "${build_packages[@]}" "${clang_packages[@]}" qemu-user
      scripts/armv7-sysroot
      ;;
    bench)
      need cmake ninja-build "${clang_packages[@]}" libspdlog-dev libfmt-dev
      scripts/benchmark-source
      ;;
    fuzz) need "${build_packages[@]}" "${clang_packages[@]}" g++ ;;
    *) need "${build_packages[@]}" "${clang_packages[@]}" ;;
  esac
}

# Sets `preset` to `clang`, or to `gcc` where Clang 19 cannot be installed.
choose_preset() {
  preset=clang
  need_for clang && return
  say "Clang 19 cannot be installed here: using g++"
  preset=gcc
}

# build PRESET [OPTION...]: options go to `cmake --build`.
build() {
  need_for "$1"
  say "building ($1)"
  quietly "build-$1" configure_and_build "$@"
}

configure_and_build() {
  local preset=$1
  shift
  cmake --preset "$preset" && cmake --build "build/$preset" --parallel "$jobs" "$@"
}

# run_ctest PRESET [OPTION...]: fails if there is no test to run.
run_ctest() {
  local preset=$1
  shift
  ctest --test-dir "build/$preset" --output-on-failure --no-tests=error --parallel "$jobs" "$@"
}

# check_tests PRESET [PART...]: for the checks. Builds a preset or parts of it (`library`, `recorder`, `tools`), runs
# the tests and says how many passed.
check_tests() {
  local preset=$1 targets=() labels=()
  shift
  if [[ $# -gt 0 ]]; then
    targets=(--target "${@/%/_tests}")
    labels=(--label-regex "^($(IFS='|' && echo "$*"))\$")
  fi
  build "$preset" "${targets[@]}"
  quietly "test-$preset" run_ctest "$preset" "${labels[@]}"
  passed "$(sed -n 's/^100% tests passed, 0 tests failed out of \([0-9]*\)$/\1 tests passed/p' \
    "$logs/test-$preset.log")"
}

# passed FIGURE: a check's last line.
passed() {
  [[ -n $1 ]] || fail "$(basename "$0") has no figure to show"
  printf '%s: %s\n' "$(basename "$0")" "$1"
}

# sources PATTERN...: our own files of these names, one per line; fails if there are none.
sources() {
  local pattern names=()
  for pattern in "$@"; do names+=(-o -name "$pattern"); done
  find . \( -path './build*' -o -path './cmake-build*' -o -path ./.git \) -prune -o -type f \( "${names[@]:1}" \) -print |
    sort | grep . || fail "no file is named $*"
}
