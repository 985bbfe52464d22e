# shellcheck shell=bash
# fuzz SECONDS   tries made-up inputs on each fuzz target for that long; what it finds goes to build/fuzz
seconds=${1:-}
failed=()
[[ $seconds =~ ^[1-9][0-9]*$ ]] || fail 'usage: ./dev fuzz SECONDS'
build fuzz
say "Fuzzing, $seconds s for each target, $(nproc) at a time"
# What was found earlier goes on from there; the seeds are read, never written.
for target in fuzz/corpus/*; do
    mkdir -p "build/fuzz/finds/${target##*/}"
    printf '%s\0' "${target##*/}"
done | ASAN_OPTIONS=quarantine_size_mb=16:malloc_context_size=5 xargs -0 -P "$(nproc)" -I {} \
    sh -c 'build/fuzz/bin/fuzz.{} -max_total_time='"$seconds"' -max_len=300 -timeout=10 \
        -print_final_stats=1 -artifact_prefix=build/fuzz/{}- \
        build/fuzz/finds/{} fuzz/corpus/{} > build/fuzz/{}.log 2>&1; echo $? > build/fuzz/{}.rc'
for target in fuzz/corpus/*; do
    target=${target##*/}
    log=build/fuzz/$target.log
    printf '%-12s %12s executions, %s new inputs\n' "$target" \
        "$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")" \
        "$(sed -n 's/^stat::new_units_added: *//p' "$log")"
    [ "$(cat "build/fuzz/$target.rc")" = 0 ] && continue
    failed+=("$target")
    tail -n 40 "$log"
done
[ ${#failed[@]} = 0 ] || fail "fuzzing failed: ${failed[*]}; inputs: build/fuzz/<target>-*"
