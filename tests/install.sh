#!/usr/bin/env bash
# Builds and runs the programs of the documents with an installed and moved tree: install.sh COMPILER BUILD_FOLDER PROJECT_FOLDER
# shellcheck source=tests/common.sh
. "$(dirname "$0")/common.sh"
compiler=$1 build=$2 readme=$3/README.md prefix="$work/moved here"
cmake --install "$build" --prefix "$work/first" > /dev/null
mv "$work/first" "$prefix"
cd "$work"
export DOV_SERVICE_DIR=$work/own  # made and declared by the simulator

! ldd "$prefix"/bin/* "$prefix"/lib/*.so "$prefix"/lib/*/*.so | sed -n 's/.*=> //p' | sed 's/ (0x.*//' |
    grep -v -e "^$prefix/" -e '^/lib' -e '^/usr/lib' ||
    complain "the installed programs load these libraries from outside the tree, or cannot find them"
! grep -rlF -e "$build" -e "$work/first" "$prefix"/include "$prefix"/lib/cmake "$prefix"/lib/pkgconfig "$prefix"/share ||
    complain "these installed files contain the path of the build folder"

samples "$readme" cpp > boost.cpp
samples "$readme" cmake > CMakeLists.txt
cmake -G Ninja -S . -B cmake -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix" > /dev/null
cmake --build cmake > /dev/null
{ ! cmake -S . -B gcc -DCMAKE_CXX_COMPILER=g++ -DCMAKE_PREFIX_PATH="$prefix" > gcc.log 2>&1 &&
    tr -s ' \n' ' ' < gcc.log | grep -q 'it needs clang and libc++'; } || complain "g++ is accepted, or refused without a reason"
samples "$readme" sh | grep -i pkg.config > pkg-config.sh
sed -i -e "s,^clang++-14,eval $compiler," -e "s,FOLDER,'moved here'," pkg-config.sh
bash -e pkg-config.sh
samples "$3/docs/integration.md" cpp > watcher.cpp
sed -e 's/boost/watcher/g' pkg-config.sh | bash -e

# The headers for callers and services compile on their own, also as C++17.
for header in dov/dov.h dov/halclient.h dov/DovWrapper.h aidl/vendor/tavro/hardware/mirx/BnMirx.h android/binder_process.h; do
    echo "#include <$header>" | "$compiler" -x c++ -std=c++17 -stdlib=libc++ -Wall -Werror -fsyntax-only \
        -I"$prefix/include" -isystem "$prefix/include/tavro-dov-client" -
done

serve "$prefix/bin/mirx-simulator" --declare
cmake/boost
./boost
await journal 4 '^release '

# The listening program must keep listening when the service is replaced.
./watcher > heard 2> watcher.log &
await journal 1 '^listen '
stop
serve "$prefix/bin/mirx-simulator" --declare
await journal 1 '^listen '
"$prefix/bin/dovctl" res 0x01010010=1234567
await heard 1 '0x1010010 1234567'
