# For ./play, ./test and ./package: installs missing Debian packages, or nothing if none is missing. Packages that only
# tests need are listed separately, so that ./play installs little.

player_packages=(build-essential cmake ninja-build pkg-config libfltk1.3-dev libfontconfig-dev libxft-dev
  libxcursor-dev libxinerama-dev nlohmann-json3-dev libsdl2-dev libsndfile1-dev libpng-dev libturbojpeg0-dev libgif-dev)
tool_packages=(libtomlplusplus-dev libebur128-dev)  # for the tools, which ./play does not build
test_packages=(libgtest-dev libbenchmark-dev clang-format-14 python3 xvfb openbox xdotool x11-utils)
package_packages=(debhelper dpkg-dev lintian blhc desktop-file-utils appstream libxml2-utils mandoc man-db mmdebstrap)

# Where there is no apt: what is missing of the player's needs, or nothing.
missing_elsewhere() {
  local name
  for name in c++ cmake ninja pkg-config fltk-config; do
    command -v "$name" >/dev/null || echo "$name"
  done
  for name in fontconfig xft xcursor xinerama nlohmann_json sdl2 sndfile libpng libturbojpeg; do
    pkg-config --exists "$name" 2>/dev/null || echo "$name"
  done
  echo '#include <gif_lib.h>' | c++ -E -x c++ - >/dev/null 2>&1 || echo giflib
}

install_missing() {
  local missing=() name
  if ! command -v apt-get >/dev/null; then
    mapfile -t missing < <(missing_elsewhere)
    [ ${#missing[@]} -gt 0 ] || return 0
    echo "There is no apt here to install what is missing: ${missing[*]}" >&2
    echo "Needed are a C++20 compiler, CMake 3.25, Ninja, pkg-config, and the libraries with their headers: FLTK 1.3 or" \
      "1.4, fontconfig, Xft, Xcursor, Xinerama, SDL2, libsndfile, libpng, libjpeg-turbo (TurboJPEG), giflib and" \
      "nlohmann-json. Install them and start this again." >&2
    return 1
  fi
  for name in "$@"; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null)" = installed ] || missing+=("$name")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
      echo "These packages are missing, and installing them needs root: ${missing[*]}" >&2
      return 1
    fi
    as_root=(sudo)
  fi
  echo "Installing ${missing[*]}" >&2
  export DEBIAN_FRONTEND=noninteractive
  "${as_root[@]}" apt-get update -qq >&2 || true
  "${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
}
