// SPDX-License-Identifier: MIT
// Every verb of kora4ctl: a function that adds it to the command line. A verb has a file of
// its own below verbs/; what it does on its run is in that file, too.
#pragma once

#include "process/program.h"

namespace kora4::tools {

using VerbAdder = void(Context& context);

VerbAdder AddStatus, AddGet, AddSet, AddToggle, AddDescribe, AddList, AddProfile, AddDemo,
    AddEq, AddLevels, AddWatch, AddRecord, AddReplay, AddRegister, AddUnregister, AddExplain,
    AddTrace, AddDoctor, AddDump, AddLoad, AddDiff, AddLint, AddUndo, AddReset, AddAb,
    AddCompletion, AddHelp;

// All of them, in the order of --help.
inline constexpr VerbAdder* cVerbs[] = {
    AddStatus,     AddGet,     AddSet,    AddToggle, AddDescribe,   AddList,   AddProfile,
    AddDemo,       AddEq,      AddLevels, AddWatch,  AddRecord,     AddReplay, AddRegister,
    AddUnregister, AddExplain, AddTrace,  AddDoctor, AddDump,       AddLoad,   AddDiff,
    AddLint,       AddUndo,    AddReset,  AddAb,     AddCompletion, AddHelp};

}  // namespace kora4::tools
