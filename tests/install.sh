#!/usr/bin/env bash
# Builds and runs the programs of the documents with an installed and moved tree: install.sh COMPILER BUILD_FOLDER PROJECT_FOLDER
set -euo pipefail
compiler=$1 build=$2 project=$3 readme=$3/README.md
# shellcheck source=tests/samples.sh
. "$(dirname "$0")/samples.sh"
work=$(mktemp -d)
server='' watcher=''
trap 'kill $server $watcher 2> /dev/null || true; rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/first" > /dev/null
mv "$work/first" "$work/moved here"
prefix="$work/moved here"
cd "$work"
export DOV_SERVICE_DIR=$work/services

# The installed files must not refer to the build folder or to the cache.
if ldd "$prefix"/bin/* "$prefix"/lib/*.so "$prefix"/lib/*/*.so | sed -n 's/.*=> //p' | sed 's/ (0x.*//' |
    grep -v -e "^$prefix/" -e '^/lib' -e '^/usr/lib'; then
    echo "the installed programs load these libraries from outside the tree, or cannot find them" >&2
    exit 1
fi
if grep -rlF -e "$build" -e "$work/first" "$prefix"/include "$prefix"/lib/cmake "$prefix"/lib/pkgconfig "$prefix"/share; then
    echo "the installed files contain the path of the build folder" >&2
    exit 1
fi

samples "$readme" cpp > boost.cpp
samples "$readme" cmake > CMakeLists.txt
cmake -G Ninja -S . -B cmake -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix" > /dev/null
cmake --build cmake > /dev/null
if cmake -G Ninja -S . -B gcc -DCMAKE_CXX_COMPILER=g++ -DCMAKE_PREFIX_PATH="$prefix" > gcc.log 2>&1 ||
    ! tr -s ' \n' ' ' < gcc.log | grep -q 'it needs clang and libc++'; then
    echo "the package does not say that it needs clang" >&2
    cat gcc.log >&2
    exit 1
fi
samples "$readme" sh | grep -i pkg.config > pkg-config.sh
sed -i -e "s,^clang++-14,eval $compiler," -e "s,FOLDER,'moved here'," pkg-config.sh
bash -e pkg-config.sh
samples "$project/docs/integration.md" cpp > watcher.cpp
sed -e 's/boost/watcher/g' pkg-config.sh | bash -e

# The headers for callers and services compile on their own, also as C++17.
for header in dov/dov.h dov/halclient.h dov/DovWrapper.h aidl/vendor/tavro/hardware/mirx/BnMirx.h android/binder_process.h; do
    echo "#include <$header>" | "$compiler" -x c++ -std=c++17 -stdlib=libc++ -Wall -Werror -fsyntax-only \
        -I"$prefix/include" -isystem "$prefix/include/tavro-dov-client" -
done

start_service() {
    "$prefix/bin/mirx-simulator" --declare > journal &
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

# The listening program must keep listening when the service is replaced.
./watcher > heard 2> watcher.log &
watcher=$!
line_of journal 1 '^listen '
kill -9 $server
wait $server || true
start_service
line_of journal 1 '^listen '
"$prefix/bin/dovctl" res 0x01010010=1234567
line_of heard 1 '0x1010010 1234567'
kill $watcher
