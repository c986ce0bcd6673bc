# Sourced by setup.sh of windows/ and arm64/: a cache of folders, each made by its recipe and kept until that changes.
# The caller sets $cache, $work and $log, defines recipe_NAME (which fills $dest, and may keep in $scratch what a killed
# run can go on with) and stamp NAME (all that decides what a stage makes).

say() { echo "${0#"$PWD/"}: $*" >&2; }
fail() { say "$*"; exit 1; }

# logged COMMAND...: its output goes to the log, whose end is shown when it fails.
logged() { "$@" >>"$log" 2>&1 || { tail -n 40 "$log" >&2; fail "failed: $* (all of it: $log)"; }; }

unfetched='Failed to fetch|Unable to fetch|Could not resolve|Could not connect|Connection (failed|timed out|refused)'
unfetched+='|Temporary failure|Unable to locate package|Unable to find a source package|has no installation candidate'
unfetched+='|Hash Sum mismatch|unexpected size|is not valid yet|404  Not Found'

# fetched WHAT COMMAND...: a command that gets packages. That these cannot be had today is told apart
# from every other failure of it by what apt says.
fetched() {
  local what=$1 out=$work/fetch.log
  shift
  "$@" >"$out" 2>&1 && { cat "$out" >>"$log"; return; }
  cat "$out" >>"$log"
  local reason
  reason=$(grep -m 1 -E "$unfetched" "$out" | sed 's/^ *//') || true
  if [ -n "$reason" ]; then
    say "cannot be fetched today: $what ($reason)"
    exit 75
  fi
  tail -n 40 "$out" >&2
  fail "failed: $*"
}

# install_tools PACKAGE...: those that the machine lacks.
install_tools() {
  local package missing=()
  for package in "$@"; do
    dpkg-query -W -f '${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  say "installing ${missing[*]}"
  fetched "the lists of packages" apt-get update -q
  fetched "${missing[*]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
}

# The machine's own entry for the main archive of its release.
archive() {
  local codename site
  codename=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
  # shellcheck disable=SC2016
  site=$(apt-get indextargets --format '$(REPO_URI)' "Created-By: Packages" "Release: $codename" "Component: main" |
    head -n 1)
  [ -n "$site" ] || fail "apt knows no source for $codename main"
  echo "[signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $site $codename main"
}

# The sums of all files, so that a damaged cache is noticed. What Wine itself changes at run time lies elsewhere.
manifest() { (cd "$1" && find . -xdev -type f -print0 | sort -z | xargs -0 -r sha256sum); }

whole() {
  [ "$(cat "$cache/$1.stamp" 2>/dev/null)" = "$(stamp "$1")" ] &&
    (cd "$cache/$1" && sha256sum --quiet --check "$cache/$1.manifest") >>"$log" 2>&1
}

stage() {
  local name=$1 begin=$SECONDS stamp dest scratch
  whole "$name" && return
  stamp=$(stamp "$name")
  scratch=$work/$name-$stamp
  dest=$work/$name.new
  say "$name ..."
  # What another recipe or a killed run left half done.
  for old in "$work/$name"-*; do [ "$old" = "$scratch" ] || rm -rf --one-file-system "$old"; done
  rm -rf --one-file-system "$dest"
  mkdir -p "$scratch"
  ("recipe_$name")
  rm -rf --one-file-system "$cache/$name" "$cache/$name".{stamp,manifest}
  manifest "$dest" >"$cache/$name.manifest"
  mv -T "$dest" "$cache/$name"
  echo "$stamp" >"$work/stamp" && mv "$work/stamp" "$cache/$name.stamp"
  rm -rf --one-file-system "$scratch"
  say "$name: $((SECONDS - begin)) s"
}

# What is half made when a run ends goes; of a killed one it goes at the next.
begin() {
  mkdir -p "$work"
  exec 9>"$cache/lock"
  flock 9
  : >"$log"
  trap 'rm -rf --one-file-system "$work"/*.new; find "$work" -type d -empty -delete 2>/dev/null || true' EXIT
}

finish() {
  rm -rf --one-file-system "$work"
  echo "$cache"
}
