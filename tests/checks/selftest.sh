#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# selftest.sh ROOT WORK: each check passes a clean little tree and finds what is put into
# it to be found.
set -euo pipefail
root=$1 work=$2
checks=$root/tests/checks
failures=0

# fresh: a little tree that breaks no rule.
fresh() {
  rm -rf "$work/tree"
  mkdir -p "$work/tree"/src/{contract,trace,platform,store/{access,clients},monitor,api,server}
  mkdir -p "$work/tree"/{idl,sdk/include,tools/{base,registry,settings,kora4ctl/verbs,kora4sim/engine}}
  cd "$work/tree"
  cp "$root/.clang-format" .
  echo '[uuid(01234567-89AB-CDEF-0123-456789ABCDEF)] interface IThing;' >idl/thing.idl
  printf '#include <cstdint>\n\n#include "contract/facts.h"\n' >src/trace/trace.h
  echo '#include <cstdint>' >src/contract/facts.h
  echo 'const wchar_t* const cName = L"Name of it";' >>src/contract/facts.h
  echo '#include "contract/facts.h"' >src/store/access/key_access.h
  echo '#include <windows.h>' >src/store/access/task_memory.cpp
  echo '#include "store/access/key_access.h"' >src/store/clients/client.h
  printf '#include <windows.h>\n\n#include "thing.h"\n#include "trace/trace.h"\n' >src/monitor/monitor.cpp
  echo '#include "store/clients/client.h"' >src/api/api.h
  echo '#include "api/api.h"' >src/server/server.cpp
  echo '#include "contract/facts.h"' >src/contract/results.h
  printf '#include <string>\n\n#include "contract/results.h"\n' >tools/base/results.h
  echo '#include "base/results.h"' >tools/registry/store.h
  echo '#include "registry/store.h"' >tools/settings/settings.h
  echo '#include "settings/settings.h"' >tools/kora4ctl/verbs/get.cpp
  printf '#include "settings/settings.h"\n#include "thing.h"\n' >tools/kora4sim/engine/engine.cpp
}

report() {
  if [ "$2" = 0 ]; then
    echo "ok      $1"
  else
    echo "FAILED  $1"
    sed 's/^/        /' "$work/output"
    failures=$((failures + 1))
  fi
}

run() {
  case $1 in
    format) bash "$checks/format.sh" "$work/tree" ;;
    *) perl "$checks/check.pl" "$1" "$work/tree" ;;
  esac >"$work/output" 2>&1
}

# finds RULE WORDS FILE TEXT: appending TEXT to FILE makes RULE complain with WORDS.
finds() {
  fresh
  mkdir -p "$(dirname "$3")"
  printf '%b\n' "$4" >>"$3"
  local result=0
  if run "$1" || ! grep -qF -- "$2" "$work/output"; then result=1; fi
  report "$1 finds '$2' in $3" "$result"
}

# allows RULE FILE TEXT
allows() {
  fresh
  printf '%b\n' "$3" >>"$2"
  local result=0
  run "$1" || result=1
  report "$1 allows ${3%%\\n*} in $2" "$result"
}

for rule in arrows pure lines literals words format; do
  fresh
  result=0
  run "$rule" || result=1
  report "$rule passes a clean tree" "$result"

  rm -rf "$work/tree"
  mkdir -p "$work/tree"
  result=0
  if run "$rule"; then result=1; fi
  report "$rule refuses to pass an empty tree" "$result"
done

up='must not include'
finds arrows "contract $up store/access" src/contract/facts.h '#include "store/access/key_access.h"'
finds arrows "store/access $up store/clients" src/store/access/key_access.h '#include "store/clients/client.h"'
finds arrows "monitor $up contract" src/monitor/monitor.cpp '#include "contract/facts.h"'
finds arrows "store/clients $up api" src/store/clients/client.h '  #  include "api/api.h"'
finds arrows "api $up server" src/api/api.h '#include "server/server.h"'
finds arrows "trace $up platform" src/trace/trace.h '#include "platform/handles.h"'
finds arrows "neither rooted" src/api/api.h '#include "api.h"'
finds arrows "no module" src/lost.h '// text'
finds arrows "contract $up trace" src/contract/results.h '#include "trace/trace.h"'
finds arrows "base $up registry" tools/base/results.h '#include "registry/store.h"'
finds arrows "registry $up settings" tools/registry/store.h '#include "settings/settings.h"'
finds arrows "kora4ctl $up kora4sim" tools/kora4ctl/verbs/get.cpp '#include "kora4sim/engine/engine.h"'
finds arrows "kora4sim $up kora4ctl" tools/kora4sim/engine/engine.cpp '#include "kora4ctl/verbs.h"'
finds arrows "tables of src/ only" tools/kora4ctl/verbs/get.cpp '#include "store/clients/client.h"'
finds arrows "tables of src/ only" tools/settings/settings.h '#include <store/access/key_access.h>'
finds arrows "neither rooted at tools/" tools/kora4ctl/verbs/get.cpp '#include "verbs.h"'
finds arrows "no module of the tools" tools/lost/lost.h '// text'
allows arrows tools/registry/store.h '#include "platform/open_mutex.h"'
allows arrows tools/settings/settings.h '#include "contract/facts.h"\n#include <nlohmann/json.hpp>'
finds pure "platform header" src/contract/facts.h '#include <windows.h>'
finds pure "platform header" src/trace/trace.h '#include <wrl/client.h>'
finds pure "platform header" src/platform/thread_annotations.h '#include <windows.h>'
finds pure "includes one that is not" src/store/clients/client.h '#include "store/access/task_memory.cpp"'
allows pure src/platform/open_mutex.h '#include <windows.h>'
finds lines "601 lines" src/api/api.h "$(printf '// line\\n%.0s' {1..599})// last"
guid='0x01234567, 0x89AB, 0xCDEF, {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF}'
fresh
finds literals "a second copy of the GUID" src/api/api.h "constexpr KeyGuid cOther{$guid};"
finds literals "a second copy of the GUID" tools/registry/store.h "constexpr KeyGuid cOther{$guid};"
finds literals "a second copy of the text Name of it" tools/settings/settings.h 'auto name = u"Name of it";'
finds lines "601 lines" tools/registry/store.h "$(printf '// line\\n%.0s' {1..599})// last"
finds format "code should be clang-formatted" tools/registry/store.h 'int  f( ) ;'
finds pure "platform header" src/contract/results.h '#include <windows.h>'
finds literals "a second copy of the text Name of it" src/api/api.h 'auto name = u"Name of it";'
finds literals "a second copy of the table" src/api/api.h \
  'int a[] = {1, 2, 3, 4};\nint b[] = {1,\n  2, 3, 4};'
finds literals "a second copy of the array" src/api/api.h \
  'auto a = "0014,0001,0002,0003,0004";\nauto b = "0014,0001,0002,0003,0004";'
allows literals src/api/api.h '// as in L"Name of it"\n/* L"Name of it" */'
allows literals src/api/api.h 'int a[] = {0, 0, 0, 0};\nint b[] = {0, 0, 0, 0};'
finds words "unfinished mark" src/api/api.h "// TO""DO: more"
finds words "skipped test" src/api/api.h "GTEST_SK""IP();"
finds words "path of somebody" src/api/api.h "auto p = \"/wor""k/x\";"
finds words "reference to no known document" src/api/api.h "// see iss""ue 7"
finds format "code should be clang-formatted" src/api/api.h 'int  f( ) ;'

echo "$failures failures"
[ "$failures" = 0 ]
