# shellcheck shell=bash
# bench          what each call costs beside bare calls of the system, and what the library's bytes
#                are spent on; fails when a limit is passed
release=$PWD/build/release
rc=0
build release tarn tarn_bench
build native tarn_address_benchmark
start_wine
say "Time ($(nproc) processors, $(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1), $(wine --version))"
run_windows "$release/bench/bench.exe" "$(windows_path "$release/bin/tarn.dll")" \
    "$(windows_path "$release/bench/empty.dll")" \
    "$(windows_path /usr/share/nsis/Plugins/amd64-unicode)" || rc=$?
say 'Size'
perl bench/sizes.pl x86_64-w64-mingw32- build/release
say 'The address check, natively'
build/native/bench/address_benchmark --benchmark_color=false
exit $rc
