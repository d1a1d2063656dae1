#!/usr/bin/env bash
# Installs, moves the tree, and builds and runs the README's program against it, as its reader would:
# install.sh COMPILER BUILD_FOLDER README
set -euo pipefail
compiler=$1 build=$2 readme=$3
# shellcheck source=tests/samples.sh
. "$(dirname "$0")/samples.sh"
work=$(mktemp -d)
server=''
trap '[ -z "$server" ] || kill $server && wait $server; rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/first" > /dev/null
mv "$work/first" "$work/moved"
prefix=$work/moved
cd "$work"
mkdir services
chmod 700 services
cp "$prefix"/share/tavro-dov-client/*.xml services/
export DOV_SERVICE_DIR=$work/services

# Nothing in it comes from the build, or from the cache behind the build.
if ldd "$prefix"/bin/* "$prefix"/lib/*.so "$prefix"/lib/*/*.so | awk '/=>/ { print $3 }' |
    grep -v -e "^$prefix/" -e '^/lib' -e '^/usr/lib'; then
    echo "the installed programs take these from outside, or not at all" >&2
    exit 1
fi
if grep -rlF -e "$build" -e "$work/first" "$prefix"/include "$prefix"/lib/cmake "$prefix"/lib/pkgconfig "$prefix"/share; then
    echo "the installed files name the folder that they were made in" >&2
    exit 1
fi

samples "$readme" cpp > boost.cpp
samples "$readme" cmake > CMakeLists.txt
cmake -S . -B cmake -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix" > /dev/null
cmake --build cmake > /dev/null
samples "$readme" sh | grep pkg-config > pkg-config.sh
sed -i "s,^clang++-14,$compiler," pkg-config.sh
PKG_CONFIG_PATH=$prefix/lib/pkgconfig bash -e pkg-config.sh

# Headers that a service is written with, and the library's own on their own, also in C++17.
for header in dov/dov.h dov/halclient.h dov/DovWrapper.h aidl/vendor/tavro/hardware/mirx/BnMirx.h android/binder_process.h; do
    echo "#include <$header>" | "$compiler" -x c++ -std=c++17 -stdlib=libc++ -Wall -Werror -fsyntax-only \
        -I"$prefix/include" -isystem "$prefix/include/tavro-dov-client" -
done

"$prefix/bin/mirx-simulator" > journal &
server=$!
timeout 20 bash -c 'until grep -q serving journal; do sleep 0.05; done'
for program in cmake/boost ./boost; do
    env -u LD_LIBRARY_PATH "$program"
done
[ "$(grep -c '^release ' journal)" -eq 4 ] || { cat journal >&2; exit 1; }
"$prefix/bin/dovctl" state 0x01010010
