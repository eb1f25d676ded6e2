// SPDX-License-Identifier: MIT
// Every verb of kora4ctl: a function that adds it to the command line. A verb has a file of
// its own below verbs/; what it does on its run is in that file, too.
#ifndef KORA4_KORA4CTL_VERBS_H
#define KORA4_KORA4CTL_VERBS_H

#include "process/program.h"

namespace kora4::tools {

using AddVerb = void(Context& context);

AddVerb AddStatus;
AddVerb AddGet;
AddVerb AddSet;
AddVerb AddToggle;
AddVerb AddDescribe;
AddVerb AddList;
AddVerb AddProfile;
AddVerb AddDemo;
AddVerb AddEq;
AddVerb AddLevels;
AddVerb AddWatch;
AddVerb AddRecord;
AddVerb AddReplay;
AddVerb AddRegister;
AddVerb AddUnregister;
AddVerb AddExplain;
AddVerb AddTrace;
AddVerb AddDoctor;
AddVerb AddDump;
AddVerb AddLoad;
AddVerb AddDiff;
AddVerb AddLint;
AddVerb AddCompletion;

// All of them, in the order of --help.
inline constexpr AddVerb* cVerbs[] = {
    AddStatus,  AddGet,      AddSet,        AddToggle,  AddDescribe,  AddList,
    AddProfile, AddDemo,     AddEq,         AddLevels,  AddWatch,     AddRecord,
    AddReplay,  AddRegister, AddUnregister, AddExplain, AddTrace,     AddDoctor,
    AddDump,    AddLoad,     AddDiff,       AddLint,    AddCompletion};

}  // namespace kora4::tools

#endif  // KORA4_KORA4CTL_VERBS_H
