# shellcheck shell=bash
# Homebrew for the build scripts on a Mac (sourced, not run). Homebrew refuses to run as
# root: under sudo it runs as the user who called sudo, who owns the Homebrew installation.

# The brew program: on PATH, or at Homebrew's prefix for Apple silicon or Intel (sudo may
# have reset PATH).
homebrew_program() {
  local candidate
  for candidate in "$(command -v brew 2>/dev/null || true)" /opt/homebrew/bin/brew /usr/local/bin/brew; do
    if [ -n "$candidate" ] && [ -x "$candidate" ]; then
      echo "$candidate"
      return 0
    fi
  done
  echo "Homebrew is not installed (see https://brew.sh)." >&2
  return 1
}

# Runs brew with the arguments, as the calling user when this runs as root through sudo.
brew_as_owner() {
  local brew
  brew=$(homebrew_program) || return 1
  if [ "$(id -u)" -ne 0 ]; then
    "$brew" "$@"
  elif [ -n "${SUDO_USER:-}" ] && [ "$SUDO_USER" != root ]; then
    sudo -u "$SUDO_USER" -H "$brew" "$@"
  else
    echo "Homebrew does not run as root: start this with sudo from the account that installed Homebrew." >&2
    return 1
  fi
}
