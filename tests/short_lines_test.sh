#!/usr/bin/env bash
# The lines that ./dev prints while it tests have at most 100 characters: names of tests have at most
# 68, and ctest's lines are shortened: short_lines_test.sh SOURCE_FOLDER BUILD_FOLDER
# SPDX-License-Identifier: Apache-2.0
set -euo pipefail

source_folder=$1 build_folder=$2
failed=0

names=$(find "$build_folder" \( -name '*_tests.cmake' -o -name CTestTestfile.cmake \) -exec \
  sed -n 's/^add_test(\[=\[\([^]]*\)\]=\].*/\1/p' {} +)
count=$(wc -l <<< "$names")
((count >= 300)) || { echo "only $count names of tests found"; failed=1; }
if grep -E '.{69}' <<< "$names"; then
  echo "these names of tests have more than 68 characters"
  failed=1
fi

# have, want: what ctest prints, what ./dev shows of it.
name=Suite/Fixture.$(printf 'x%.0s' {1..54})
while IFS='|' read -r have want; do
  shown=$(printf '%s\n' "$have" | "$source_folder/dev" --step shorten_lines)
  [[ $shown == "$want" ]] || { printf 'have %s\nwant %s\n' "$shown" "$want"; failed=1; }
  ((${#shown} <= 100)) || { echo "${#shown} characters: $shown"; failed=1; }
done << TABLE
        Start    7: $name|
1234/1535 Test  #7: $name ...........   Passed    0.05 sec|1234/1535 $name Passed 0.05 sec
  12/1535 Test #1234: $name .......***Failed  100.05 sec|  12/1535 $name ***Failed 100.05 sec
   1/2 Test #1: A.B ....***Exception: SegFault  0.02 sec|   1/2 A.B ***Exception: SegFault 0.02 sec
100% tests passed, 0 tests failed out of 1535|100% tests passed, 0 tests failed out of 1535
two words  stay ... as they are|two words  stay ... as they are
TABLE
exit "$failed"
