# For the scripts beside this folder: installs Debian packages where they are missing.
#
#   source "$(dirname "$0")/lib/packages.sh"
#   install_packages "${build_packages[@]}" "${test_packages[@]}"

# What a bare Debian 12 needs to build the library, the application, and the tests.
build_packages=(g++ cmake ninja-build pkg-config
  libinsighttoolkit5-dev libboost-math-dev libcli11-dev nlohmann-json3-dev libcairo2-dev zlib1g-dev
  libtiff-dev fonts-dejavu-core)
test_packages=(libgtest-dev libeigen3-dev)
# The Python package: to build it into a virtual environment, and to test it.
python_build_packages=(g++ cmake make python3 python3-dev python3-numpy python3-pip python3-setuptools
  python3-venv python3-wheel pybind11-dev)
python_test_packages=(python3 python3-dev python3-numpy pybind11-dev python3-pytest python3-hypothesis
  python3-skimage python3-scipy python3-dask python3-distributed python3-zarr python3-tqdm
  python3-pandas python3-matplotlib mypy)
bench_packages=(libbenchmark-dev libboost-random-dev libeigen3-dev libgsl-dev libopencv-core-dev
  libopencv-imgproc-dev python3 python3-numpy python3-skimage python3-dask python3-distributed)
check_packages=(clang clang-format clang-tidy libclang-rt-14-dev)

abi_packages=(abigail-tools xz-utils)
docs_packages=(doxygen python3-sphinx python3-myst-parser furo python3-numpydoc python3-dask python3-distributed
  python3-zarr python3-scipy python3-skimage python3-matplotlib)
package_packages=(lintian mmdebstrap binutils python3 gzip)
root_packages=(g++ clang cmake make pkg-config zsh) # what the outside projects in the empty root are built with

say() { printf '== %s\n' "$*"; }
fail() { printf '%s: %s\n' "$(basename "$0")" "$*" >&2; exit 1; }

# The package as seen by the package manager: yes when it is installed.
is_installed() {
  [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

install_packages() {
  local package missing=() as_root=()
  command -v dpkg-query >/dev/null || fail "needs Debian's package manager (dpkg and apt)"
  for package in "$@"; do
    is_installed "$package" || missing+=("$package")
  done
  if [ ${#missing[@]} -eq 0 ]; then
    say "All packages are there"
    return
  fi
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || fail "packages are missing (${missing[*]}); run it as root, or install sudo"
    as_root=(sudo)
  fi
  say "Installing ${missing[*]}"
  local apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq -o Dpkg::Use-Pty=0)
  mkdir -p "$root/build"
  local log=$root/build/apt.log
  # A failed update may still leave lists that are good enough; the installation tells.
  "${apt[@]}" update >"$log" 2>&1 </dev/null || true
  for package in "${missing[@]}"; do
    apt-cache show "$package" >/dev/null 2>&1 ||
      fail "the package $package cannot be had from this machine's package sources"
  done
  "${apt[@]}" install -y --no-install-recommends "${missing[@]}" >>"$log" 2>&1 </dev/null ||
    fail "the packages ${missing[*]} could not be installed (build/apt.log says why)"
}

# As many compilers at once as there are processors and memory for: 1.5 GiB each.
build_jobs() {
  local kib
  kib=$(awk '/^MemAvailable:/ { print $2 }' /proc/meminfo)
  local by_memory=$((kib / 1572864)) processors
  processors=$(nproc)
  [ "$by_memory" -ge 1 ] || by_memory=1
  echo $((by_memory < processors ? by_memory : processors))
}
