# What the scripts beside this file need from Debian; sourced, not run.
#
# RequirePackages NAME...  installs those that are missing, without a question, and does nothing otherwise.

BUILD_PACKAGES="g++ cmake make libcli11-dev nlohmann-json3-dev libpugixml-dev libgtest-dev libgmock-dev libbenchmark-dev"
CHECK_PACKAGES="git clang-format clang-tidy pkg-config python3 libslvs1-dev"

RequirePackages() {
    local package missing=""
    for package in "$@"; do
        case "$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null)" in
        *" installed") ;;
        *) missing="$missing $package" ;;
        esac
    done
    [ -n "$missing" ] || return 0
    echo "installing$missing" >&2
    local run="env DEBIAN_FRONTEND=noninteractive apt-get -qq -o Dpkg::Use-Pty=0"
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || { echo "run this as root once, to install:$missing" >&2; return 1; }
        run="sudo $run"
    fi
    $run update >/dev/null &&
        $run install -y --no-install-recommends $missing >/dev/null || {
        echo "apt-get could not install:$missing" >&2
        return 1
    }
}

# RunQuietly LOG COMMAND...  shows the output only when the command fails.
RunQuietly() {
    local log="$1"
    shift
    mkdir -p "$(dirname "$log")"
    "$@" >"$log" 2>&1 || { tail -n 40 "$log" >&2; echo "failed: $* (whole output in $log)" >&2; return 1; }
}
