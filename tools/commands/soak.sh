# shellcheck shell=bash
# soak [ROUNDS]  whole installations in a row through all exports, 2000 or as many as given, and then
#                in 8 processes at once a tenth of that in each; prints what they hold of the system
rounds=${1:-2000}
processes=()
good=1
build release tarn tarn_soak
start_wine
TARN_DLL=$(windows_path "$PWD/build/release/bin/tarn.dll")
export TARN_DLL
say "$rounds rounds in one process"
run_windows build/release/tests/soak.exe "$rounds" || good=0
say "$((rounds / 10)) rounds in each of 8 processes at once"
for i in {1..8}; do
    run_windows build/release/tests/soak.exe $((rounds / 10)) &> "build/soak-$i.log" &
    processes+=($!)
done
for i in {1..8}; do
    wait "${processes[i - 1]}" || good=0
    printf -- '-- %s\n' "$i"
    cat "build/soak-$i.log"
done
[ $good = 1 ] || fail 'something went wrong or is not flat: see above'
