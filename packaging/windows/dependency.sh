# Functions for the recipes of the Windows build's dependencies, which Debian has only as source. A
# recipe sources this file. The results are kept between builds, named by the version of the source
# and by the recipe, in ORSKA_CACHE_DIR (default: orska in the user's cache folder).
windows=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
toolchain=$windows/../../cmake/toolchain-windows-mingw.cmake
cache=${ORSKA_CACHE_DIR:-${XDG_CACHE_HOME:-$HOME/.cache}/orska}

# source_version PACKAGE: prints the version of the source package of the installed PACKAGE.
source_version() {
  dpkg-query -W -f '${source:Version}' "$1" 2>/dev/null ||
    { echo "$1 is not installed; run scripts/deps windows" >&2; return 1; }
}

# prefix_of NAME VERSION: prints the folder for the result of the recipe on standard input.
prefix_of() {
  local recipe
  recipe=$({ cat; x86_64-w64-mingw32-g++-posix -dumpfullversion 2>/dev/null || true; } | sha256sum)
  echo "$cache/$1-mingw-${2//[^A-Za-z0-9.+-]/_}-${recipe:0:12}"
}

# begin TITLE: makes the folder $work, and hides further output unless the recipe fails. Call it on
# a line alone, so that the first failing command ends the recipe.
begin() {
  title=$1
  echo "Building $title for Windows"
  work=$(mktemp -d)
  exec 3>&2 >"$work/log" 2>&1
  trap finish EXIT
}

finish() {
  local status=$?
  [ $status -eq 0 ] || { tail -n 40 "$work/log"; echo "Building $title for Windows failed."; } >&3
  rm -rf "$work"
}

# fetch_source NAME VERSION FOLDER: unpacks a source package of the distribution into FOLDER/source.
# It uses a copy of the machine's list of package sources, so nothing of the system changes.
fetch_source() {
  local file work=$3/fetch
  mkdir -p "$work/sources" "$work/lists/partial" "$work/cache/archives/partial" "$work/download"
  for file in /etc/apt/sources.list.d/*.sources; do
    [ ! -e "$file" ] || sed -E 's/^Types:.*/Types: deb-src/' "$file" >"$work/sources/${file##*/}"
  done
  for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ ! -e "$file" ] || sed -nE 's/^deb(-src)?[[:space:]]/deb-src /p' "$file" >"$work/sources/${file##*/}"
  done
  local options=(-q -o Dir::Etc::SourceList=/dev/null -o "Dir::Etc::SourceParts=$work/sources"
    -o "Dir::State::Lists=$work/lists" -o "Dir::Cache=$work/cache" -o APT::Sandbox::User=)
  # This fails for a source with only binary packages, which does no harm: the download decides.
  apt-get "${options[@]}" update || true
  (cd "$work/download" && apt-get "${options[@]}" source --only-source --download-only "$1=$2")
  (cd "$3" && dpkg-source --no-check -x "$work/download/$1"_*.dsc source)
}

# build_and_install SOURCE FOLDER OPTION...: with CMake, into FOLDER/prefix.
build_and_install() {
  local source=$1 folder=$2
  shift 2
  cmake -S "$source" -B "$folder/build" -G Ninja "-DCMAKE_TOOLCHAIN_FILE=$toolchain" \
    -DCMAKE_BUILD_TYPE=Release "-DCMAKE_INSTALL_PREFIX=$folder/prefix" "$@"
  cmake --build "$folder/build" -j "$(nproc)"
  cmake --install "$folder/build"
}

# publish FOLDER PREFIX: moves FOLDER/prefix to its place. A folder there is always complete, even
# if several builds run at once.
publish() {
  local staging
  mkdir -p "$cache"
  touch "$1/prefix/complete"
  staging=$(mktemp -d "$cache/.staging.XXXXXX")
  cp -r "$1/prefix/." "$staging"
  chmod 755 "$staging"
  mv -T "$staging" "$2" 2>/dev/null || rm -rf "$staging"
  [ -e "$2/complete" ] || { echo "$2 could not be written" >&2; return 1; }
}
