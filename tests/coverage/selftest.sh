#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# selftest.sh ROOT WORK: shows that unreached.pl accepts a list that is right and no other, and that
# mutants.pl makes the faults that it should.
set -euo pipefail
root=$1
work=$2
rm -rf "$work"
mkdir -p "$work/src"
cd "$work"

printf 'f() {\n    g();\n    h();\n    g();\n}\n' >src/a.cpp
cat >report.json <<'END'
{"files": [{"file": "src/a.cpp", "lines": [
  {"line_number": 1, "count": 1}, {"line_number": 2, "count": 3}, {"line_number": 3, "count": 1},
  {"line_number": 4, "count": 0}, {"line_number": 5, "count": 0, "gcovr/noncode": true}]}]}
END

# expect EXIT-CODE LIST-LINE...
expect() {
  local code=$1 result=0
  shift
  printf '%s\n' "$@" >list
  perl "$root/tests/coverage/unreached.pl" . report.json list >out || result=$?
  [ "$result" = "$code" ] || {
    echo "exit code $result instead of $code with this list:"
    cat list out
    exit 1
  }
}
expect 0 '# Never.' 'src/a.cpp: g(); (2)'
grep -qx '    Never.' out
expect 1
expect 1 'src/a.cpp: g(); (2)'
expect 1 '# Never.' 'src/a.cpp: g();'
expect 1 '# Never.' 'src/a.cpp: g(); (2)' 'src/a.cpp: h();'
expect 0 '# Never.' 'src/a.cpp: g(); (2)' '' '# Chance: sometimes.' 'src/a.cpp: h();'

cat >src/b.cpp <<'END'
#define N 1
static_assert(1 < 2);
bool f(int a) {  // 1 < 2
    if (a)
        return a < 0x1F && !g("1 < 2");
    return true;
}
END
cat >expected <<'END'
src/b.cpp: if ([ -> !]a)
src/b.cpp: return a [< -> <=] 0x1F && !g("1 < 2");
src/b.cpp: return a < 0x1F [&& -> ||] !g("1 < 2");
src/b.cpp: return a < 0x1F && [! -> ]g("1 < 2");
src/b.cpp: return a < [0x1F -> 0x20] && !g("1 < 2");
src/b.cpp: return [true -> false];
END
perl "$root/tests/mutants/mutants.pl" . src/b.cpp | cut -f 6 | diff expected -
