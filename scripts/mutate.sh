#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# mutate.sh [COUNT [SEED [FOLDER...]]]: installs what is missing, makes COUNT small faults (default
# 100), one at a time and chosen at random, in the contract, the store, the monitor and the checks of
# what clients set, and runs the tests of that place until one notices. Says of each fault who noticed
# it; tests/mutants/equivalent.txt lists those that change nothing, with the reason. Exits 0 only if at
# least 95 of 100 of the others are noticed. The faults are made in a copy, in build/mutants.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

least=95
usage="use: mutate.sh [COUNT [SEED [FOLDER...]]]."
count=${1:-100}
seed=${2:-$RANDOM}
[[ $count =~ ^[1-9][0-9]*$ ]] || die "'$count' is not a number of faults; $usage"
[[ $seed =~ ^[0-9]+$ ]] || die "'$seed' is not a seed; $usage"
folders=("${@:3}")
[ "${#folders[@]}" -gt 0 ] || folders=(src/contract src/store src/monitor src/api)

# Which tests know a folder, the quickest first: the folders, what the program is, and its name and
# arguments. A "native" program and a "linked" one, which runs under Wine, contain the code; a "client"
# calls the library. Clients are built before the faults are made and keep the contract as published.
tests=(
  "contract|native|codec_test"
  "contract store|native|visdata_test"
  "contract store|native|store_heap_test"
  "contract store|native|store_clients_test"
  "contract store|native|store_patches_test"
  "contract|native|contract_test"
  "contract|native|published_test"
  "contract|native|documents_test"
  "api|linked|api_test"
  "contract|linked|trace_test"
  "contract store monitor|linked|platform_test"
  "monitor|linked|monitor_test"
  "monitor|linked|monitor_many_test"
  "monitor|linked|monitor_force_test"
  "contract store monitor api|client|platform_calls_test"
  "contract store monitor api|client|trace_lines_test"
  "contract store monitor api|client|model_test 4000 1"
  "contract store monitor api|client|api_contract_test --gtest_filter=-*WithoutPause*:*ComeAndGo*:*Notif*"
  "contract store api|client|random_store_test 200 1"
  "contract store monitor api|client|api_contract_test --gtest_filter=*Notif*:-*WithoutPause*:*ComeAndGo*"
  "monitor api|client|process_notification_test"
  "monitor|client|process_teardown_test"
  "monitor api|client|process_lifetime_test"
  "contract store|client|round_trip_test"
  "store|client|process_writer_test"
)

require "${build_needs[@]}" "${wine_needs[@]}" "${test_needs[@]}"
mutants=$root/build/mutants
tree=$mutants/tree
pool=$mutants/wine-pool
faulty= # the file with a fault
mend() {
  [ -z "$faulty" ] || cp "$mutants/original" "$faulty"
  faulty=
}
trap 'mend; "$root/scripts/wine-pool.sh" end "$pool" >/dev/null 2>&1' EXIT
mkdir -p "$tree"
say "copying the sources to build/mutants"
# With the time of now: what was built from a fault of an earlier run is older.
git -C "$root" ls-files -z | (cd "$root" && tar --null -T - -c) | tar -x -m -C "$tree"
for preset in native release; do
  (cd "$tree" && cmake --preset "$preset" -Wno-dev) >"$mutants/build.log" 2>&1 ||
    { cat "$mutants/build.log" >&2; die "'$preset' cannot be configured; see above."; }
done

# tests_of FOLDER KIND: the commands.
tests_of() {
  local test
  for test in "${tests[@]}"; do
    [[ $test =~ ^([^|]*)\|$2\|(.*)$ && " ${BASH_REMATCH[1]} " == *" ${1#src/} "* ]] &&
      echo "${BASH_REMATCH[2]}"
  done
  true
}

# is_part FILE KIND PROGRAM: whether a file goes into what that test runs, as it was last built: into
# the library's modules, or into a program's own objects.
is_part() {
  local preset=release objects="^src/"
  [ "$2" != native ] || preset=native
  [ "$2" = client ] || objects="^src/|/$3.dir/"
  ninja -C "$tree/build/$preset" -t deps 2>"$mutants/build.log" |
    awk -v file="/$1" -v objects="$objects" '
      /^[^ ]/ { object = $1 }
      index($0, file) && object ~ objects { found = 1 }
      END { exit !found }'
}

# make KIND PROGRAM...: in the copy. Of clients only the library.
make() {
  local preset=release targets=("${@:2}")
  [ "$1" != native ] || preset=native
  [ "$1" != client ] || targets=(QXA64T)
  [ "${#targets[@]}" = 0 ] || cmake --build "$tree/build/$preset" --target "${targets[@]}" \
    >"$mutants/build.log" 2>&1
}

# run KIND SECONDS PROGRAM ARGUMENT...
run() {
  local kind=$1 seconds=$2 program=$3 command
  shift 3
  command=("$root/scripts/wine-pool.sh" run "$pool" "$tree/build/release/bin/$program.exe")
  [ "$kind" != native ] || command=("$tree/build/native/bin/$program")
  mkdir -p "$mutants/work/$program"
  (cd "$mutants/work/$program" &&
    GTEST_FAIL_FAST=1 timeout -k 5 "$seconds" "${command[@]}" "$@" >"$mutants/test.log" 2>&1 </dev/null)
}

# Without any fault every test must pass; later it may take three times as long.
declare -A limits
measure() {
  local folder=$1 kind commands command words start
  for kind in native linked client; do
    mapfile -t commands < <(tests_of "$folder" "$kind")
    { make "$kind" "${commands[@]%% *}" &&
      { [ "$kind" != client ] || make linked "${commands[@]%% *}"; }; } ||
      { tail -n 30 "$mutants/build.log" >&2; die "the tests do not build; see above."; }
    for command in "${commands[@]}"; do
      [ -z "${limits[$command]:-}" ] || continue
      read -ra words <<<"$command"
      start=$SECONDS
      run "$kind" 900 "${words[@]}" ||
        { tail -n 30 "$mutants/test.log" >&2; die "'$command' fails without any fault; see above."; }
      limits[$command]=$((3 * (SECONDS - start) + 20))
    done
  done
}

# judge FILE FOLDER: sets `result`: "unbuilt", "survived", or who noticed. A header goes into many
# objects; the library is built soonest.
judge() {
  local kinds=(native linked client) kind commands command words failed
  [[ $1 != *.h ]] || kinds=(client native linked)
  result=unbuilt
  for kind in "${kinds[@]}"; do
    commands=()
    while read -r command; do
      ! is_part "$1" "$kind" "${command%% *}" || commands+=("$command")
    done < <(tests_of "$2" "$kind")
    [ "${#commands[@]}" -gt 0 ] || continue
    make "$kind" "${commands[@]%% *}" || return 0
    for command in "${commands[@]}"; do
      read -ra words <<<"$command"
      run "$kind" "${limits[$command]}" "${words[@]}" && continue
      failed=$(grep -a -m 1 -oP '^\[  FAILED  \] \K[^, ]+' "$mutants/test.log") || failed=
      # Where no test is named it may have been the machine.
      [ -n "$failed" ] || ! run "$kind" "${limits[$command]}" "${words[@]}" || continue
      result="${words[0]} ${failed:-ended}"
      return 0
    done
    # From now on it is a test that the compiler refuses.
    result="the compiler, in the tests"
  done
  result=survived
}

mapfile -t files < <(cd "$tree" && find "${folders[@]}" -name '*.h' -o -name '*.cpp' | sort)
perl "$tree/tests/mutants/mutants.pl" "$tree" "${files[@]}" >"$mutants/all"
mapfile -t chosen < <(
  perl -MList::Util=shuffle -e 'srand(shift); print shuffle(<STDIN>)' "$seed" <"$mutants/all")
say "measuring the tests without a fault"
for folder in "${folders[@]}"; do
  measure "$folder"
done
say "$count of ${#chosen[@]} faults, seed $seed"
noticed=0 unnoticed=0 equivalent=0 unbuilt=0
for mutant in "${chosen[@]}"; do
  [ $((noticed + unnoticed)) -lt "$count" ] || break
  # What replaces something may be empty, and the tab is white space to `read`.
  IFS=$'\x1f' read -r file line column length new name <<<"${mutant//$'\t'/$'\x1f'}"
  if grep -qxF -- "$name" "$tree/tests/mutants/equivalent.txt"; then
    equivalent=$((equivalent + 1))
    continue
  fi
  for folder in "${folders[@]}"; do
    [[ $file != "$folder"/* ]] || break
  done
  cp "$tree/$file" "$mutants/original"
  faulty=$tree/$file
  perl -s -i -pe 'substr($_, $column, $length) = $new if $. == $line + 1' -- \
    -line="$line" -column="$column" -length="$length" -new="$new" "$faulty"
  judge "$file" "$folder"
  mend
  case $result in
    unbuilt) unbuilt=$((unbuilt + 1)) ;;
    survived)
      unnoticed=$((unnoticed + 1))
      echo "SURVIVED $name"
      ;;
    *)
      noticed=$((noticed + 1))
      echo "noticed  $name [$result]"
      ;;
  esac
done
judged=$((noticed + unnoticed))
[ "$judged" -gt 0 ] || die "no fault could be built; $usage"
say "$noticed of $judged faults noticed ($((noticed * 1000 / judged)) per mille);" \
  "$equivalent more change nothing, and $unbuilt do not build"
[ $((noticed * 100)) -ge $((judged * least)) ]
