#!/usr/bin/env bash
# Does what the README tells, as somebody would who has just got a machine: makes a minimal system in a folder, an
# ordinary user in it who may use sudo, and a clone of the committed tree; runs the commands there and times them.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
root=$PWD

usage() {
    cat <<'END'
usage: ./dev test fresh [--system NAME] [PART]...

  run      echo 'PRINT 2^10' | ./dev run, twice: on the new system, which installs packages and builds, and again
  image    ./dev image
  qemu     ./dev qemu --type ... --screenshot ...
  package  ./dev release, installing the package, echo 'PRINT 2^10' | korvane
  bench    ./dev bench --rounds 1 --only sieve
  test     ./dev test

Without parts it does all of them, in this order. The system is Debian's bookworm; --system takes another release of
Debian (trixie, testing) or of Ubuntu (noble, resolute; needs its package ubuntu-keyring). It is made in /var/tmp, from the
mirrors and with the proxies that this machine uses, takes up to 8 GB, and is removed in every case. What the commands
say is in build/fresh.log.
END
}

say() { printf 'dev: test fresh: %s\n' "$*" >&2; }

die() {
    say "$*"
    exit 1
}

visitor=visitor
log=$root/build/fresh.log
all_parts=(run image qemu package bench test)
run_limit=90    # seconds until the first prompt on two cores
test_limit=900

# ---- The system ------------------------------------------------------------------------------------------------

# Debian's archives as this machine knows them, as lines of LABEL URI.
known_archives() {
    # shellcheck disable=SC2016
    apt-get indextargets --format '$(ORIGIN) $(COMPONENT) $(LABEL) $(REPO_URI)' 'Created-By: Packages' |
        sed -n 's/^Debian main //p' | sort -u
}

# The archives of a release, as lines for apt.
archives() {
    local release=$1 main security
    case $release in
        jammy | noble | oracular | plucky | questing | resolute)
            local keys=/usr/share/keyrings/ubuntu-archive-keyring.gpg suite
            [ -f "$keys" ] || die "there is no $keys; Ubuntu's package ubuntu-keyring has it"
            for suite in "$release" "$release-updates" "$release-security"; do
                echo "deb [signed-by=$keys] http://archive.ubuntu.com/ubuntu $suite main universe"
            done
            return
            ;;
    esac
    local options="[signed-by=/usr/share/keyrings/debian-archive-keyring.gpg]"
    main=$(known_archives | sed -n 's/^Debian //p' | head -n 1)
    security=$(known_archives | sed -n 's/^Debian-Security //p' | head -n 1)
    echo "deb $options ${main:-http://deb.debian.org/debian} $release main"
    [[ "$release" != testing && "$release" != sid && "$release" != unstable ]] || return 0
    echo "deb $options ${main:-http://deb.debian.org/debian} $release-updates main"
    echo "deb $options ${security:-http://deb.debian.org/debian-security} $release-security main"
}

# How this machine reaches the archives.
network_settings() {
    apt-config dump | grep -E '^Acquire::(https?|Check-|Retries|ForceIPv)' | grep -v ' "";$' || true
    [ -z "${http_proxy:-}" ] || echo "Acquire::http::Proxy \"$http_proxy\";"
    [ -z "${https_proxy:-}" ] || echo "Acquire::https::Proxy \"$https_proxy\";"
}

make_system() {
    local release=$1 system=$2 lines
    network_settings >"$system.apt"
    mapfile -t lines < <(archives "$release")
    [ ${#lines[@]} -gt 0 ] || exit 1
    mmdebstrap --quiet --mode=root --variant=minbase --include=apt,ca-certificates,sudo,git --aptopt="$system.apt" \
        "$release" "$system" "${lines[@]}" >>"$log" 2>&1 ||
        die "could not make the minimal system; build/fresh.log tells why"
    cp /etc/hosts "$system/etc/hosts"
    cp /etc/resolv.conf "$system/etc/resolv.conf"
    # Where an archive is reached through a proxy that has certificates of its own.
    if compgen -G '/usr/local/share/ca-certificates/*.crt' >/dev/null; then
        cp /usr/local/share/ca-certificates/*.crt "$system/usr/local/share/ca-certificates/"
        chroot "$system" update-ca-certificates >>"$log" 2>&1
    fi
    chroot "$system" useradd --create-home --shell /bin/bash "$visitor"
    echo "$visitor ALL=(ALL) NOPASSWD: ALL" >"$system/etc/sudoers.d/$visitor"
    git -c safe.directory="$root" bundle create --quiet "$system/tmp/korvane.bundle" HEAD
}

# ---- The commands ----------------------------------------------------------------------------------------------

mount_devices() {
    local system=$1
    mount -t proc proc "$system/proc"
    mount -t sysfs -o ro sysfs "$system/sys"
    mount -t devpts -o newinstance,ptmxmode=0666,mode=0620,gid=5 devpts "$system/dev/pts"
    mount -t tmpfs -o mode=1777 tmpfs "$system/dev/shm"
}

as_visitor() {
    local system=$1 command=$2
    chroot "$system" su --login "$visitor" --command "cd korvane 2>/dev/null; $command" </dev/null
}

table=()
failures=0

# step LIMIT EXPECTED NAME COMMAND: runs a command as the visitor; it fails when its status tells so, when no line of
# its output is the expected one, or when it takes more seconds than the limit. Empty: nothing in particular.
step() {
    local limit=$1 expected=$2 name=$3 command=$4 times seconds processor result=passed start
    say "$name"
    printf '\n==== %s\n' "$name" >>"$log"
    start=$(wc -c <"$log")
    local TIMEFORMAT='%R %U %S'
    { time as_visitor "$system" "$command" >>"$log" 2>&1; } 2>"$system.times" || result=FAILED
    times=$(tail -n 1 "$system.times")
    read -r seconds processor < <(awk '{ printf "%.1f %.0f\n", $1, $2 + $3 }' <<<"$times")
    if [ "$result" = passed ] && [ -n "$expected" ] && ! tail -c "+$((start + 1))" "$log" | grep -qxF "$expected"; then
        result="FAILED: no line '$expected'"
    fi
    if [ "$result" = passed ] && [ -n "$limit" ] && [ "${seconds%.*}" -ge "$limit" ]; then
        result="TOO SLOW: over $limit s"
    fi
    say "$result after $seconds s"
    table+=("$(printf '%-52s %8s s %7s s  %s' "$name" "$seconds" "$processor" "$result")")
    if [ "$result" != passed ]; then
        failures=$((failures + 1))
        tail -c "+$((start + 1))" "$log" | tail -n 30 >&2
    fi
}

part_run() {
    step "$run_limit" ' 1024' "echo 'PRINT 2^10' | ./dev run (first time)" "echo 'PRINT 2^10' | ./dev run"
    step 5 ' 1024' "echo 'PRINT 2^10' | ./dev run (again)" "echo 'PRINT 2^10' | ./dev run"
}

part_image() { step '' '' './dev image' './dev image && test -s build/korvane.img'; }

part_qemu() {
    step '' ' 1024' './dev qemu --type lines.txt --screenshot screen.png' \
        "echo 'PRINT 2^10' >~/lines.txt && ./dev qemu --text --type ~/lines.txt --screenshot ~/screen.png &&
         test -s ~/screen.png"
}

part_bench() { step '' '' './dev bench --rounds 1 --only sieve' './dev bench --rounds 1 --only sieve'; }

# Somebody else's package, as far as the system can tell; it is installed by the system's own means.
part_package() {
    step '' '' './dev release' './dev release && cd dist && sha256sum --check --quiet SHA256SUMS'
    step '' '' 'sudo apt-get install ./korvane_*.deb' 'sudo apt-get install -y -qq ./dist/korvane_*.deb'
    step 5 ' 1024' "echo 'PRINT 2^10' | korvane" "cd && echo 'PRINT 2^10' | korvane && test -s korvane-files/maze.bas"
}

part_test() { step "$test_limit" '' './dev test' './dev test'; }

# Runs in a mount and a process namespace of its own: what is mounted here and what is started here ends with it.
run_inside() {
    local release=$1 system=$2 part
    shift 2
    say "making a minimal system ($release)"
    make_system "$release" "$system"
    mount_devices "$system"
    as_visitor "$system" 'git -c advice.detachedHead=false clone --quiet /tmp/korvane.bundle korvane' >>"$log" 2>&1 ||
        die "could not clone the tree; build/fresh.log tells why"
    for part in "$@"; do "part_$part"; done
    {
        printf '\n%-52s %10s %9s\n' "on $(nproc) cores, $(sed -n 's/^PRETTY_NAME="\(.*\)"/\1/p' "$system/etc/os-release")" \
            elapsed processor
        printf '%s\n' "${table[@]}"
    } | tee -a "$log"
    [ "$failures" = 0 ]
}

# ---- The whole -------------------------------------------------------------------------------------------------

work=   # the folder that holds the system
inside= # the process in whose namespaces everything happens

remove_system() {
    if [ -n "$inside" ]; then
        kill -KILL "$inside" 2>/dev/null || true
        wait "$inside" 2>/dev/null || true
    fi
    # What was killed may take a moment to end.
    rm -rf --one-file-system "$work" 2>/dev/null || { sleep 2; rm -rf --one-file-system "$work"; }
}

main() {
    local release=bookworm parts=() status=0
    while [ $# -gt 0 ]; do
        case $1 in
            -h | --help)
                usage
                exit 0
                ;;
            --system)
                [ $# -gt 1 ] || die "--system needs the name of a release"
                release=$2
                shift
                ;;
            *)
                [[ " ${all_parts[*]} " == *" $1 "* ]] || die "there is no part $1; --help tells what there is"
                parts+=("$1")
                ;;
        esac
        shift
    done
    [ ${#parts[@]} -gt 0 ] || parts=("${all_parts[@]}")

    [ "$(id -u)" = 0 ] || die "making a system needs root: sudo ./dev test fresh"
    command -v mmdebstrap >/dev/null || die "mmdebstrap is not installed: apt-get install mmdebstrap"
    unshare --mount --pid --fork true 2>/dev/null || die "this machine's root may not mount; nothing was tested"
    [ -z "$(git -c safe.directory="$root" status --porcelain)" ] ||
        say "what is not committed is not in the tree that is tested"

    mkdir -p build
    : >"$log"
    [ -z "${SUDO_UID:-}" ] || chown "$SUDO_UID:${SUDO_GID:-}" build "$log" # the checkout stays its owner's
    work=$(mktemp -d /var/tmp/korvane-fresh-XXXXXX)
    # Nothing is mounted in it any more when the processes in it have ended.
    trap remove_system EXIT
    trap 'say interrupted; exit 130' INT
    trap 'say "ended from outside"; exit 143' TERM HUP
    chmod 755 "$work"
    # In the background, so that a signal is acted upon at once.
    unshare --mount --pid --fork --kill-child \
        "$root/tools/test_fresh.sh" --inside "$release" "$work/system" "${parts[@]}" </dev/null &
    inside=$!
    wait "$inside" || status=$?
    inside=
    say "build/fresh.log tells all"
    return "$status"
}

if [ "${1:-}" = --inside ]; then
    system=$3
    run_inside "${@:2}"
else
    main "$@"
fi
exit # without reading on, in a script that may have been changed meanwhile
