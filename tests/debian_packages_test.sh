#!/usr/bin/env bash
# Builds the .deb files with cpack into a scratch directory, unpacks each into a scratch
# root with dpkg -x, and checks what a user installing them gets: the files of each
# package, its dependencies, and that the unpacked tree is usable as it stands (the
# programs run, pkg-config and find_package point into it).
set -euo pipefail

usage="usage: debian_packages_test.sh cpack CPackConfig.cmake scratch version runtime-package libdir program..."
cpack=${1:?$usage}
config=${2:?$usage}
scratch=${3:?$usage}
version=${4:?$usage}
runtime=${5:?$usage}
libdir=${6:?$usage}
shift 6
programs=("$@")
failures=0

fail() {
  echo "debian packages: $*" >&2
  failures=$((failures + 1))
}

rm -rf "$scratch"
mkdir -p "$scratch/debs"
"$cpack" --config "$config" -B "$scratch/debs" >"$scratch/cpack.log" 2>&1 || {
  cat "$scratch/cpack.log" >&2
  exit 1
}

# deb PACKAGE: the .deb file of one package, unpacked into $scratch/PACKAGE.
deb() {
  local file
  file=$(find "$scratch/debs" -maxdepth 1 -name "${1}_${version}-1_*.deb" | head -1)
  [ -n "$file" ] || { fail "no .deb for $1 in: $(ls "$scratch/debs")"; return 1; }
  dpkg-deb -x "$file" "$scratch/$1"
  dpkg-deb -f "$file" Depends >"$scratch/$1.depends"
  dpkg-deb -c "$file" >"$scratch/$1.contents"
}

expect_files() {
  local package=$1 path
  shift
  for path in "$@"; do
    [ -e "$scratch/$package/$path" ] || [ -L "$scratch/$package/$path" ] || fail "$package lacks $path"
  done
}

expect_depends() {
  local package=$1 dependency
  shift
  for dependency in "$@"; do
    grep -qF "$dependency" "$scratch/$package.depends" || fail "$package does not depend on $dependency: $(cat "$scratch/$package.depends")"
  done
}

lib=usr/$libdir
if deb "$runtime"; then
  expect_files "$runtime" "$lib/libnox_utils.so.$version" "$lib/libnox_allocator.so.$version"
  expect_files "$runtime" "$lib/libnox_utils.so.${version%.*}" "$lib/libnox_allocator.so.${version%.*}"
  expect_depends "$runtime" libprotobuf32 libyajl2 libcivetweb1 libstdc++6
  ! grep -q "include/\|\.so$" "$scratch/$runtime.contents" || fail "$runtime holds development files"
fi
if deb libnox-utils-dev; then
  expect_files libnox-utils-dev usr/include/nox/utils.h usr/include/nox/utils/DynamicObject.h \
    usr/include/nox/allocator/Allocator.h usr/include/nox/utils/impl/DynamicObject.proto \
    "$lib/libnox_utils.so" "$lib/pkgconfig/nox_utils.pc" "$lib/cmake/nox_utils/nox_utilsConfig.cmake" \
    "$lib/cmake/nox_utils/nox_utilsConfigVersion.cmake" "$lib/cmake/nox_utils/nox_utilsTargets.cmake"
  expect_depends libnox-utils-dev "$runtime (= $version-1)" libprotobuf-dev libyajl-dev
fi
if deb nox-utils-tools; then
  for program in "${programs[@]}"; do
    expect_files nox-utils-tools "usr/bin/$program" "usr/share/man/man1/$program.1"
  done
  expect_depends nox-utils-tools "$runtime (= $version-1)"
  ! grep -q "\.so\|include/" "$scratch/nox-utils-tools.contents" || fail "nox-utils-tools holds library files"
fi

# The three unpacked into one root work together, with nothing from the build tree.
root=$scratch/root
mkdir -p "$root"
for package in "$runtime" libnox-utils-dev nox-utils-tools; do
  [ -d "$scratch/$package" ] && cp -a "$scratch/$package/." "$root/"
done
for program in "${programs[@]}"; do
  shown=$(LD_LIBRARY_PATH=$root/$lib "$root/usr/bin/$program" --version 2>&1) || true
  [ "$shown" = "$program $version" ] || fail "unpacked $program --version printed: $shown"
done
if [ -x "$root/usr/bin/nox-convert" ]; then
  back=$(echo '{"a":[1,2.5,"x"]}' | LD_LIBRARY_PATH=$root/$lib "$root/usr/bin/nox-convert" |
    LD_LIBRARY_PATH=$root/$lib "$root/usr/bin/nox-convert") || true
  [ "$back" = '{"a":[1,2.5,"x"]}' ] || fail "unpacked nox-convert round trip gave: $back"
fi
cflags=$(PKG_CONFIG_PATH=$root/$lib/pkgconfig pkg-config --cflags nox_utils) || fail "pkg-config refuses the unpacked nox_utils.pc"
[[ $cflags == *"-I$root/$lib/pkgconfig/../../include"* || $cflags == *"-I$root/usr/include"* ]] ||
  fail "pkg-config cflags do not point into the unpacked root: $cflags"

echo "debian packages: $failures failures"
[ "$failures" -eq 0 ]
