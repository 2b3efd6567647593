# shellcheck shell=sh
# Sourced: installs missing packages, and uses the network only if some are missing. Also creates $place, a directory that is
# removed when the script ends.

place=$(mktemp -d) || exit 1
trap 'rm -rf "$place"' EXIT
trap 'exit 130' INT TERM HUP

is_there() { # probe
    case $1 in
    /*) test -e "$1" ;;
    *) command -v "$1" >/dev/null 2>&1 ;;
    esac
}

missing_of() { # package:probe...
    for entry in "$@"; do
        is_there "${entry#*:}" || printf '%s ' "${entry%%:*}"
    done
}

as_root() {
    if [ "$(id -u)" = 0 ]; then
        "$@"
    elif command -v sudo >/dev/null 2>&1; then
        sudo "$@"
    else
        echo "cannot run $*: not root, and sudo is missing" >&2
        return 1
    fi
}

apt_install() { # package...
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "$@"
}

# Installs missing packages; if some cannot be installed, names them and fails.
ensure_packages() { # package:probe...
    missing=$(missing_of "$@")
    [ -n "$missing" ] || return 0
    echo "installing: $missing"
    {
        as_root apt-get update
        # one by one if not at once, so that one failure does not affect the others
        apt_install $missing || for package in $missing; do
            apt_install "$package"
        done
    } >"$place/install" 2>&1 </dev/null || true
    missing=$(missing_of "$@")
    if [ -n "$missing" ]; then
        tail -n 5 "$place/install" >&2
        echo "could not be installed: $missing" >&2
    fi
    [ -z "$missing" ]
}

# The packages that each step needs, each with the command or file that shows that it is installed.
ensure_build_packages() {
    ensure_packages cmake:cmake ninja-build:ninja g++:g++ nlohmann-json3-dev:/usr/include/nlohmann/json.hpp \
        libgtest-dev:/usr/include/gtest/gtest.h libfmt-dev:/usr/include/fmt/format.h \
        libvalijson-dev:/usr/include/valijson/schema.hpp libmicrohttpd-dev:/usr/include/microhttpd.h \
        libedit-dev:/usr/include/histedit.h python3:/usr/bin/python3
}

ensure_arm_packages() {
    ensure_packages g++-arm-linux-gnueabihf:arm-linux-gnueabihf-g++ googletest:/usr/src/googletest/CMakeLists.txt
}

# The versions that define the layout and the checks.
ensure_lint_packages() {
    ensure_packages clang-format-14:clang-format-14 clang-tidy-14:clang-tidy-14
}

ensure_emulator_packages() {
    ensure_packages qemu-user:qemu-arm
}

ensure_fuzz_packages() {
    ensure_packages clang:clang++ libclang-rt-14-dev:/usr/lib/llvm-14/lib/clang/14.0.6/include/fuzzer
}

# Tests that need one of these are left out without it.
ensure_optional_packages() {
    ensure_packages zsh:zsh mandoc:mandoc chromium:chromium mypy:/usr/bin/mypy flake8:/usr/bin/flake8 \
        python3-pytest:/usr/lib/python3/dist-packages/pytest/__init__.py ansible-core:/usr/bin/ansible-playbook \
        ansible-lint:/usr/bin/ansible-lint yamllint:/usr/bin/yamllint
}

# For scripts/fleet. dropbear-bin has no service that would start.
ensure_fleet_packages() {
    ensure_packages ansible-core:/usr/bin/ansible-playbook openssh-client:ssh dropbear-bin:/usr/sbin/dropbear \
        libnss-wrapper:"/usr/lib/$(gcc -print-multiarch)/libnss_wrapper.so"
}

# For the library alone, on its other targets. armel and 64-bit RISC-V are built when their compilers are there.
ensure_target_packages() {
    ensure_arm_packages && ensure_emulator_packages &&
        ensure_packages g++-aarch64-linux-gnu:aarch64-linux-gnu-g++ musl-tools:musl-gcc abigail-tools:abidiff
}
