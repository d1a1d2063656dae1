#!/usr/bin/env bash
# Installs, moves the tree, and builds and runs the programs of the documents against it, as their readers would:
# install.sh COMPILER BUILD_FOLDER PROJECT_FOLDER
set -euo pipefail
compiler=$1 build=$2 project=$3 readme=$3/README.md
# shellcheck source=tests/samples.sh
. "$(dirname "$0")/samples.sh"
work=$(mktemp -d)
server='' watcher=''
trap 'kill $server $watcher 2> /dev/null || true; rm -rf "$work"' EXIT

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
cmake -G Ninja -S . -B cmake -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix" > /dev/null
cmake --build cmake > /dev/null
samples "$readme" sh | grep pkg-config > pkg-config.sh
sed -i "s,^clang++-14,$compiler," pkg-config.sh
export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
bash -e pkg-config.sh
samples "$project/docs/integration.md" cpp > watcher.cpp
sed -e 's/boost/watcher/g' pkg-config.sh | bash -e

# Headers that a service is written with, and the library's own on their own, also in C++17.
for header in dov/dov.h dov/halclient.h dov/DovWrapper.h aidl/vendor/tavro/hardware/mirx/BnMirx.h android/binder_process.h; do
    echo "#include <$header>" | "$compiler" -x c++ -std=c++17 -stdlib=libc++ -Wall -Werror -fsyntax-only \
        -I"$prefix/include" -isystem "$prefix/include/tavro-dov-client" -
done

start_service() {
    "$prefix/bin/mirx-simulator" > journal &
    server=$!
}
# Waits until FILE has a line PATTERN for the COUNTth time: line_of FILE COUNT PATTERN
line_of() { timeout 20 bash -c "until [ \"\$(grep -c '$3' '$1')\" -ge $2 ]; do sleep 0.05; done" || { cat "$1" >&2; exit 1; }; }

start_service
line_of journal 1 serving
for program in cmake/boost ./boost; do
    "$program"
done
line_of journal 4 '^release '

# The program that listens goes on listening to the next service.
./watcher > heard 2> watcher.log &
watcher=$!
line_of heard 1 listening
kill -9 $server
wait $server || true
start_service
line_of heard 2 listening
"$prefix/bin/dovctl" res 0x01010010=1234567
line_of heard 1 '0x1010010 1234567'
kill $watcher
