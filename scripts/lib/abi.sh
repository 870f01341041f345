# For scripts/check: the binary interface of the shared libraries, as abi/ keeps it.
#
#   source "$(dirname "$0")/lib/abi.sh"
#   build_for_abi; compare_abi; keep_abi

abi_libraries=(framework/pxlib2core/libpxlib2core framework/pxlib2image/libpxlib2image
  framework/SeluBase/libSeluBase src/libSeluUtils)

# The libraries alone, with the descriptions of types that the debugger would read.
build_for_abi() {
  cmake --preset abi --log-level=WARNING
  cmake --build --preset abi -j "$(build_jobs)"
}

# describe_abi LIBRARY: what its exported names are, but for where they are declared.
describe_abi() {
  local headers=() folder
  for folder in include framework/*/include build/abi/src/generated build/abi/framework/*/generated; do
    headers+=(--headers-dir "$folder")
  done
  abidw "${headers[@]}" --drop-private-types --no-show-locs --no-corpus-path --no-comp-dir-path \
    "build/abi/$1.so"
}

keep_abi() {
  local library
  mkdir -p abi
  for library in "${abi_libraries[@]}"; do
    describe_abi "$library" | xz -9 >"abi/$(basename "$library").abi.xz"
  done
}

# Fails where a name went away or changed, or a type's layout did. New names are told, and are no failure.
compare_abi() {
  local library name work code
  work=$(mktemp -d build/abi.XXXXXX)
  for library in "${abi_libraries[@]}"; do
    name=$(basename "$library")
    xz -dc "abi/$name.abi.xz" >"$work/kept.abi"
    describe_abi "$library" >"$work/$name.abi"
    code=0
    abidiff --no-added-syms "$work/kept.abi" "$work/$name.abi" >"$work/log" || code=$?
    if [ "$code" -ne 0 ]; then
      cat "$work/log" >&2
      rm -rf "$work"
      fail "$name has another binary interface; scripts/check --keep-abi keeps it, with a line in CHANGELOG"
    fi
    say "$name: the binary interface is as it was"
  done
  rm -rf "$work"
}
