#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# selftest.sh ROOT WORK: each check passes a small clean tree and finds the faults that are
# planted in it.
set -euo pipefail
root=$1 work=$2
checks=$root/tests/checks
failures=0

# put FILE LINE...: a file with the comment that every file begins with.
put() {
  local file=$1
  shift
  printf '%s\n' '// SPDX-License-Identifier: MIT' "// What $file is for." "$@" >"$file"
}

# needs: one header in each module that includes from every module that the document allows.
needs() {
  local folder=none module cell
  while IFS='|' read -r _ module cell _; do
    case $module in
      ' Module ') [ "$folder" = none ] && folder=src || folder=tools ;;
      ' `'*)
        module=${module//[ \`]/}
        mkdir -p "$folder/$module"
        # shellcheck disable=SC2046 # a list of words
        put "$folder/$module/needs.h" \
          $(tr ',' '\n' <<<"$cell" | sed -n 's/^ `\(.*\)` *$/#include"\1\/needed.h"/p' | sort)
        sed -i 's/#include"/#include "/' "$folder/$module/needs.h"
        ;;
    esac
  done < <(sed -n '/^| Module | May include |/,/^$/p' docs/architecture.md)
}

# fresh: a small tree that breaks no rule.
fresh() {
  rm -rf "$work/tree"
  mkdir -p "$work/tree"/src/{contract,trace,platform,store/{access,clients},monitor,api,server}
  mkdir -p "$work/tree"/{docs,idl,scripts,sdk/include/kora4,tools/{base,registry,settings,kora4ctl/verbs,kora4sim/engine}}
  cd "$work/tree"
  cp "$root/.clang-format" .
  cp "$root/docs/architecture.md" docs/
  printf '%s\n' '#!/bin/sh' '# SPDX-License-Identifier: MIT' '# fast.sh [--fast]: does nothing.' >scripts/fast.sh
  chmod +x scripts/fast.sh
  printf '%s\n' '<!-- SPDX-License-Identifier: MIT -->' '# A page' '```sh' 'scripts/fast.sh --fast' '```' >docs/page.md
  put idl/thing.idl '[uuid(01234567-89AB-CDEF-0123-456789ABCDEF)] interface IThing;'
  needs
  put src/trace/trace.h '#include <cstdint>' '' '#include "contract/facts.h"'
  printf '%s\n' '#!/bin/sh' '# SPDX-License-Identifier: MIT' '# What it runs.' >scripts/run.sh
  put src/contract/facts.h '#include <cstdint>' 'const wchar_t* const cName = L"Name of it";' \
    'const wchar_t* const cPath = L"SOFTWARE\\Of Somebody";' \
    'const char* const cRule = "Never do that.";' \
    'constexpr std::uint32_t cAnswer = 4242;' '#define KORA4_ENGINE_FULL 0x03FFu /* all */' \
    'constexpr std::size_t cMaxTextBytes = 4096;' \
    'constexpr std::uint32_t cStaticNumber57 = 200;'
  put sdk/include/numbers.h '#define KORA4_SILENT_GAIN (-144.0f)' '#define KORA4_DEMO 241' \
    '#define KORA4_GRAPHIC_EQ_MIN_GAIN (-12.0f) /* dB */' '#define KORA4_SAMPLING_PERIOD_DEFAULT 50'
  put src/store/access/key_access.h '#include "contract/facts.h"'
  put src/store/access/task_memory.h
  put src/store/access/task_memory.cpp '#include <windows.h>'
  put src/store/clients/client.h '#include "store/access/key_access.h"'
  put src/monitor/monitor.h
  put src/monitor/monitor.cpp '#include <windows.h>' '' '#include "thing.h"' '#include "trace/trace.h"'
  put src/api/api.h '#include "store/clients/client.h"'
  put src/server/exports.cpp '#include "api/api.h"'
  put src/contract/results.h '#include "contract/facts.h"'
  put tools/base/results.h '#include <string>' '' '#include "contract/results.h"'
  put tools/registry/store.h '#include "base/results.h"'
  put tools/settings/settings.h '#include "registry/store.h"'
  put tools/kora4ctl/verbs.h
  put tools/kora4ctl/verbs/get.cpp '#include "settings/settings.h"'
  put tools/kora4sim/engine/engine.h
  put tools/kora4sim/engine/engine.cpp '#include "settings/settings.h"' '#include "thing.h"'
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
    cppcheck) bash "$checks/cppcheck.sh" "$work/tree" src ;;
    format | spelling) bash "$checks/$1.sh" "$work/tree" ;;
    blocks) perl "$checks/blocks.pl" "$work/tree" ;;
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
  mkdir -p "$(dirname "$2")"
  printf '%b\n' "$3" >>"$2"
  local result=0
  run "$1" || result=1
  report "$1 allows ${3%%\\n*} in $2" "$result"
}

# changes RULE WORDS FILE SED: FILE edited by SED makes RULE complain with WORDS.
changes() {
  fresh
  sed -i "$4" "$3"
  local result=0
  if run "$1" || ! grep -qF -- "$2" "$work/output"; then result=1; fi
  report "$1 finds '$2' in $3 after $4" "$result"
}

# lines NUMBER TEXT: that many of them.
lines() {
  local i
  for ((i = 0; i < $1; i++)); do printf '%s\n' "$2"; done
}

for rule in arrows blocks comments files functions headers lines literals pure words cppcheck format spelling; do
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

license='// SPDX-License-Identifier: MIT'
changes headers "does not begin with" src/api/api.h 1d
changes headers "does not begin with" src/api/api.h "1s/$/ and what it is for/"
changes headers "no comment that says its purpose" src/api/api.h 2d
finds headers "does not begin with" scripts/walk.sh '#!/bin/sh\n# What it is for.'
allows headers run.sh '#!/bin/sh\n# SPDX-License-Identifier: MIT\n# What it is for.'
allows headers docs/tables.md '<!-- SPDX-License-Identifier: MIT -->\n# Tables'
allows headers settings.json '{}'

finds files "lower-case words" tests/unit/ThingTest.cpp "$license"
finds files "lower-case words" src/api/api-texts.h "$license"
finds files "no header with its name" src/api/lost.cpp "$license"
finds files "lower-case words" sdk/include/kora4/ApiTexts.hpp "$license"
finds files "does not include api/kora4asl.h" src/api/commands.cpp "$license"
allows files src/api/api_texts.cpp "$license"
fresh
put sdk/include/kora4/thing.hpp
put sdk/include/kora4/thing.cpp
result=0
run files || result=1
report "files takes a .hpp for the header of a source" "$result"
allows files src/api/commands.cpp '#include "api/kora4asl.h"'
allows files tests/unit/thing_test.cpp "$license"
fresh
for i in {1..20}; do put "src/api/part_$i.h"; done
result=0
if run files || ! grep -qF 'holds 22 files' "$work/output"; then result=1; fi
report "files counts the files of a folder" "$result"

body=$(lines 58 '    Do();')
finds functions "a function of 61 lines" src/api/api.cpp "int Thing::Do() {\n$body\n    Do();\n}"
finds functions "a function of 61 lines" src/api/api.cpp \
  "Thing::Thing(int a)\n    : m_a{a}, m_b(a) {\n$body\n}"
finds functions "a function of 61 lines" src/api/api.cpp \
  "class Thing final : public Base {\n    template <typename T>\n    auto Do(T t = {}) const -> int REQUIRES(m_lock) {\n$(lines 58 '        Do();')\n    }\n};"
finds functions "a function of 61 lines" sdk/include/kora4/api.hpp "inline int Do() {\n$body\n    Do();\n}"
finds functions "braces do not match" src/api/api.cpp 'void Do() {\n    if (a) {\n}'
allows functions src/api/api.cpp "namespace a {\nint Do() {\n$body\n}\n}  // namespace a"
allows functions src/api/api.cpp "constexpr Row cRows[] = {\n$(lines 70 '    Row(1),')\n};"
allows functions src/api/api.cpp "struct Thing {\n$(lines 70 '    int Do();')\n};"

finds comments "% of the lines are comments" src/api/api.h "$(lines 399 'int i;')"
finds comments "% of the lines are comments" sdk/include/kora4/api.hpp "$(lines 399 'int i;')"

document=docs/architecture.md
changes arrows "monitor: it says" $document '/^| `monitor` | `/s/ `platform`,//'
changes arrows "base: it says 'store', the check says ''" $document '/^| `base` | nothing/s/nothing/`store`/'
changes arrows "lacks monitor" $document '/^| `monitor` | `/d'
changes arrows "lost: it says" $document '/^| `monitor` | `/s/monitor/lost/'
changes arrows "a table of what a module may include is missing" $document '/| Module | May include |/d'
changes arrows "monitor never includes proxy" src/monitor/needs.h '/proxy/d'
changes arrows "kora4sim never includes registry" tools/kora4sim/needs.h '/registry/d'
up='must not include'
finds arrows "contract $up store/access" src/contract/facts.h '#include "store/access/key_access.h"'
finds arrows "store/access $up store/clients" src/store/access/key_access.h '#include "store/clients/client.h"'
finds arrows "monitor $up contract" src/monitor/monitor.cpp '#include "contract/facts.h"'
finds arrows "store/clients $up api" src/store/clients/client.h '  #  include "api/api.h"'
finds arrows "api $up server" src/api/api.h '#include "server/server.h"'
finds arrows "trace $up platform" src/trace/trace.h '#include "platform/handles.h"'
finds arrows "neither rooted" src/api/api.h '#include "api.h"'
finds arrows "neither rooted" src/api/api.h '#include <kora4/result.hpp>'
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
finds arrows "the panel's model must not include its window" panel/model/state.h '#include "panel/window/strings.h"'
finds arrows "no public header" panel/window/strings.h '#include "contract/facts.h"'
finds arrows "no public header" panel/worker/worker.cpp '#include <veltokora4api_p.h>'
finds arrows "platform header in the panel's model" panel/model/state.h '#include <windows.h>'
finds arrows "platform-free and takes no <kora4.hpp>" panel/model/state.h '#include <kora4.hpp>'
finds arrows "no module of the panel" panel/lost/lost.h '// text'
allows arrows tools/registry/store.h '#include "platform/open_mutex.h"'
allows arrows tools/base/results.h '#include <kora4/result.hpp>'
allows arrows tools/settings/settings.h '#include "contract/facts.h"\n#include <nlohmann/json.hpp>'
finds pure "platform header" src/contract/facts.h '#include <windows.h>'
finds pure "platform header" src/trace/trace.h '#include <wrl/client.h>'
finds pure "platform header" src/platform/thread_annotations.h '#include <windows.h>'
finds pure "includes one that is not" src/store/clients/client.h '#include "store/access/task_memory.cpp"'
allows pure src/platform/open_mutex.h '#include <windows.h>'
finds lines "601 lines" src/api/api.h "$(printf '// line\\n%.0s' {1..597})// last"
guid='0x01234567, 0x89AB, 0xCDEF, {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF}'
fresh
finds literals "a second copy of the GUID" src/api/api.h "constexpr KeyGuid cOther{$guid};"
finds literals "a second copy of the GUID" tools/registry/store.h "constexpr KeyGuid cOther{$guid};"
finds literals "a second copy of the text Name of it" tools/settings/settings.h 'auto name = u"Name of it";'
finds lines "601 lines" tools/registry/store.h "$(printf '// line\\n%.0s' {1..597})// last"
finds format "code should be clang-formatted" tools/registry/store.h 'int  f( ) ;'
finds pure "platform header" src/contract/results.h '#include <windows.h>'
finds literals "a second copy of the text Name of it" src/api/api.h 'auto name = u"Name of it";'
finds literals "a second copy of the table" src/api/api.h \
  'int a[] = {1, 2, 3, 4};\nint b[] = {1,\n  2, 3, 4};'
finds literals "a second copy of the array" src/api/api.h \
  'auto a = "0014,0001,0002,0003,0004";\nauto b = "0014,0001,0002,0003,0004";'
allows literals src/api/api.h '// as in L"Name of it"\n/* L"Name of it" */'
allows literals src/api/api.h 'int a[] = {0, 0, 0, 0};\nint b[] = {0, 0, 0, 0};'
finds literals "a second copy of \"Name of it\"" tools/settings/settings.h 'auto name = "Name of it";'
finds literals "a second copy of \"Never do that.\"" tools/kora4ctl/verbs/get.cpp 'Print("Never do that.");'
finds literals "4242 is cAnswer" src/api/api.h 'constexpr int cOther = 4242;'
finds literals "0x1092 is cAnswer" tools/base/results.h 'if (a == 0x1092)'
finds literals "4242u is cAnswer" src/contract/results.h 'constexpr unsigned cSame = 4242u;'
finds literals "50 is KORA4_SAMPLING_PERIOD_DEFAULT" src/api/api.h 'constexpr int cPeriod = 50;'
finds literals "0x3ff is KORA4_ENGINE_FULL" src/trace/trace.h 'mask = 0x3ff;'
finds literals "4096 is cMaxTextBytes" tools/registry/store.h 'char text[4096];'
finds literals "-144 is KORA4_SILENT_GAIN" src/api/api.h 'constexpr int cSilence = -144;'
finds literals "-144.0f is KORA4_SILENT_GAIN" tools/base/results.h 'float silence = -144.0f;'
finds literals "-12.0 is KORA4_GRAPHIC_EQ_MIN_GAIN" src/api/api.h 'constexpr double cLowest = -12.0;'
finds literals "4242 is cAnswer" sdk/include/kora4/api.hpp 'constexpr int cOther = 4242;'
finds literals "241 is KORA4_DEMO" sdk/samples/client.cpp 'SetDemo(241);'
finds literals "50 is KORA4_SAMPLING_PERIOD_DEFAULT" sdk/samples/client.cpp 'ULONG period = 50;'
finds literals "50 is KORA4_SAMPLING_PERIOD_DEFAULT" bench/windows/place.cpp 'Put(period, 50);'
finds literals "4242 is cAnswer" bench/native/thing.cpp 'constexpr int cOther = 4242;'
finds literals "a second copy of the GUID" scripts/run.sh 'key={01234567-89AB-CDEF-0123-456789ABCDEF}'
changes literals "a second copy of 'software" scripts/run.sh '$a reg delete "HKLM\\Software\\Of Somebody"'
finds literals "a property id as a number" tools/registry/store.h 'auto key = pkey::Setting(3);'
finds literals "a property id as a number" tools/registry/store.h 'if (key.pid == 404)'
changes literals "there is no cMaxTextBytes" src/contract/facts.h '/cMaxTextBytes/d'
allows literals tools/registry/store.h 'char text[4096];  // not cMaxTextBytes: any size will do'
allows literals tools/registry/store.h '// 4242, as in "Never do that."'
allows literals src/contract/results.h 'constexpr int cSecondPid = 50;'
allows literals sdk/samples/client.cpp 'int answer = 4242;'
allows literals src/api/api.h 'int ten = 100 - 12;'
allows literals bench/windows/measure.cpp 'constexpr int cMany = 50;'
finds words "unfinished mark" src/api/api.h "// TO""DO: more"
finds words "skipped test" src/api/api.h "GTEST_SK""IP();"
finds words "path of somebody" src/api/api.h "auto p = \"/wor""k/x\";"
finds words "reference to no known document" src/api/api.h "// see iss""ue 7"
finds format "code should be clang-formatted" src/api/api.h 'int  f( ) ;'

# finds_block WORDS KIND TEXT: a document with such a block makes the check complain with WORDS.
finds_block() { finds blocks "$1" docs/page.md "\n\`\`\`$2\n$3\n\`\`\`"; }
finds_block "nothing checks a block of ''" '' 'words'
finds_block "nothing checks a block of 'rust'" rust 'fn main() {}'
finds_block "code without the name of its file" cpp 'int a;'
finds_block "code without the name of its file" c 'int a;'
finds_block "does not run the transcripts of docs/page.md" console '$ kora4ctl status'
finds_block "there is no scripts/none.sh" sh 'scripts/none.sh'
finds_block "scripts/fast.sh has no --slow" sh 'scripts/fast.sh --slow'
finds_block "scripts/fast.sh has no --fas" sh 'scripts/fast.sh --fas'
finds_block "there is no no-such-command" sh 'ls | no-such-command'
finds_block "ls has no --upside-down" sh 'ls --upside-down'
finds_block "there is no kora4ctl jump" sh 'kora4ctl jump'
finds_block "the trace has no everything" sh 'kora4ctl trace on messages everything'
finds_block "code without the name of its file" xml '<a/>'
finds_block "there is no unknown.exe" sh 'unknown.exe'
finds_block "no sample is built by" sh 'x86_64-w64-mingw32-g++ nothing.cpp'
finds_block "CMake has no find_everything" cmake 'find_everything(now)'
finds_block "this is no JSON" json '{"a": }'
finds blocks "a block without an end" docs/page.md '\n```text\nno end'
allows blocks docs/page.md '\n```text\nwords\n```'
allows blocks docs/page.md '\n```cmake\nfind_package(Threads)  # any\n```'
allows blocks docs/page.md '\n<!-- code: src/api/api.h -->\n```cpp\nint a;\n```'
allows blocks docs/page.md '\n<!-- compiled -->\n```c\nint a;\n```'
allows blocks docs/page.md '\n```cmake\ninclude(FetchContent)\nFetchContent_MakeAvailable(x)\n```'
allows blocks docs/page.md '\n```sh\nls --all | sort --reverse  # --upside-down\n```'
finds cppcheck arrayIndexOutOfBounds src/api/api.cpp 'int f() { int a[1]; a[1] = 0; return a[1]; }'
finds spelling "Teh ==> The" docs/page.md 'Teh end.'
finds spelling "recieve ==> receive" src/api/api.h '// To recieve it.'
allows spelling docs/page.md 'unknwn.idl'

echo "$failures failures"
[ "$failures" = 0 ]
