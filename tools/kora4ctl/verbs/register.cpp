// SPDX-License-Identifier: MIT
// kora4ctl register, unregister: the library in the machine's registration.
#include <kora4/activation.hpp>

#include <optional>

#include "base/failure.h"
#include "base/results.h"
#include "base/text.h"
#include "contract/version.h"
#include "kora4ctl/command_line/verb.h"
#include "kora4ctl/registration/library_file.h"
#include "kora4ctl/registration/registration.h"
#include "kora4ctl/registration/removal.h"
#include "kora4ctl/verbs.h"
#include "process/guarded_folder.h"
#include "process/module_users.h"
#include "process/privileges.h"
#include "process/registered_file.h"
#include "process/win32_failure.h"
#include "registry/app_keys.h"
#include "registry/registry_store.h"

namespace kora4::tools {

namespace {

struct Options {
    std::string path;
    bool check = false;
    bool inUse = false;
    bool appKeys = false;
    bool settings = false;
    std::string only;
};

const char* WordOf(RegisteredFor where) {
    constexpr const char* cWords[] = {"nobody", "machine", "user"};
    return cWords[static_cast<int>(where)];
}

Json FindingsOf(const Diagnosis& diagnosis) {
    Json findings = Json::array();
    for (const Observation& one : diagnosis.findings)
        findings.push_back(DocumentOf(one));
    return findings;
}

Json DocumentOf(const Registration& found, const Diagnosis& diagnosis) {
    return {{"registered", found.IsThere()},
            {"for", found.IsThere() ? Json(WordOf(found.where)) : Json(nullptr)},
            {"class", ServedClass()},
            {"title", OrNull(found.title)},
            {"path", OrNull(found.path)},
            {"threadingModel", OrNull(found.threadingModel)},
            {"appId", OrNull(found.appId)},
            {"typeLibrary", OrNull(found.typeLibrary)},
            {"fileExists", found.IsThere() && found.file != FileKind::eAbsent},
            {"fileVersion", OrNull(found.fileVersion)},
            {"apiVersion", OrNull(found.apiVersion)},
            {"toolVersion", KORA4_VERSION_TEXT},
            {"findings", FindingsOf(diagnosis)}};
}

std::string OrNothing(const std::string& text) {
    return text.empty() ? "-" : text;
}

using Rows = std::vector<std::vector<std::string>>;

void PrintRegistration(Output& output, const Registration& found, const Rows& more = {}) {
    const bool isForMachine = found.where == RegisteredFor::eMachine;
    Rows rows = {
        {"library", OrNothing(found.path)},
        {"registered for",
         isForMachine ? "the machine (HKEY_LOCAL_MACHINE)" : "this user (HKEY_CURRENT_USER)"},
        {"class", ServedClass() + " " + found.title},
        {"threading model", OrNothing(found.threadingModel)},
        {"application", OrNothing(found.appId) + " " + found.appTitle},
        {"type library", OrNothing(found.typeLibrary)},
        {"version", OrNothing(found.fileVersion) + " (file), " + OrNothing(found.apiVersion) +
                        " (library), " KORA4_VERSION_TEXT " (tool)"}};
    rows.insert(rows.end(), more.begin(), more.end());
    output.Table({}, rows);
}

ExitCode Check(const Context& context, const Options& options) {
    Output& output = context.output;
    const Registration found = ReadRegistration();
    const Diagnosis diagnosis =
        Examine(found, options.path.empty() ? std::string() : FullPath(options.path));
    if (output.json) {
        output.PrintJson(DocumentOf(found, diagnosis));
    } else {
        if (found.IsThere())
            PrintRegistration(output, found);
        for (const Observation& one : diagnosis.findings) {
            const Style style =
                one.severity == Severity::eError ? Style::eBad : Style::eWarning;
            output.Print(output.Paint(style, SeverityName(one.severity)) + ": " + one.what);
            output.Print("  " + one.next);
        }
        if (diagnosis.findings.empty())
            output.Say("The registration is valid.");
    }
    if (!found.IsThere())
        return ExitCode::eNotReady;
    return diagnosis.NeedsRepair() ? ExitCode::eFindings : ExitCode::eDone;
}

// The programs that have to be restarted before they use another file in its place.
ExitCode ShowUsers(const Context& context, const Options& options) {
    std::string path = options.path.empty() ? RegisteredFile() : FullPath(options.path);
    if (path.empty())
        path = LibraryBesideTool();
    const std::vector<ModuleUser> users = UsersOfModule(path);
    Output& output = context.output;
    if (output.json) {
        Json list = Json::array();
        for (const ModuleUser& user : users)
            list.push_back({{"process", user.process}, {"program", user.program}});
        output.PrintJson({{"path", path}, {"usedBy", list}});
        return ExitCode::eDone;
    }
    Rows rows;
    for (const ModuleUser& user : users)
        rows.push_back({std::to_string(user.process), user.program});
    output.Table({}, rows);
    if (users.empty())
        output.Say("No program has loaded " + path);
    return ExitCode::eDone;
}

// What the library's own registration answered.
void Expect(HRESULT hr, const std::string& path, const char* what) {
    if (SUCCEEDED(hr))
        return;
    const bool isDenied = hr == E_ACCESSDENIED || !IsElevated();
    throw Failure(ExitCode::eFailed,
                  "'" + path + "' could not be " + what + ": " + InWords(hr) + ".",
                  isDenied ? "Run it as an administrator."
                           : "See what is registered: kora4ctl register --check");
}

// What later runs need, and what others would otherwise be the first to make.
void PrepareMachine(Output& output, bool resetAppKeys) {
    GuardedFolder(DataFolder()).Prepare();
    UniqueRegKey key;
    LSTATUS status = ERROR_FILE_NOT_FOUND;
    if (resetAppKeys) {
        if (AreAppKeysOpenToOthers())
            output.Complain(
                "note: Users who are not administrators could write AppKeys until now. Check "
                "the commands: kora4ctl list");
        status = ResetAppKeys();
    }
    if (status == ERROR_FILE_NOT_FOUND)
        status = CreateAppKeys(KEY_READ, key);
    if (status != ERROR_SUCCESS)
        throw Win32Failure(static_cast<DWORD>(status),
                           "The library is registered, but the application keys cannot be "
                           "created",
                           "Find out why: kora4ctl doctor");
}

ExitCode Register(const Context& context, const Options& options) {
    if (options.check)
        return Check(context, options);
    if (options.inUse)
        return ShowUsers(context, options);
    Output& output = context.output;
    const std::string path =
        FullPath(options.path.empty() ? LibraryBesideTool() : options.path);
    const std::string before = ReadRegistration().path;
    {
        const ApartmentGuard apartment(ApartmentKind::eSingleThreaded);
        const RegistrableLibrary library(path);
        Expect(library.Register(), path, "registered");
    }
    if (IsElevated())
        PrepareMachine(output, options.appKeys);
    const Registration now = ReadRegistration();
    const Diagnosis diagnosis = Examine(now, path);
    if (output.json) {
        Json document = DocumentOf(now, diagnosis);
        document["before"] = OrNull(before);
        output.PrintJson(document);
        return ExitCode::eDone;
    }
    output.Say("The library is registered.");
    if (!output.quiet)
        PrintRegistration(output, now,
                          {{"store", "HKEY_LOCAL_MACHINE\\" + KeySetPath(eKeySetStatic)},
                           {"", "HKEY_LOCAL_MACHINE\\" + KeySetPath(eKeySetDynamic)}});
    if (!before.empty() && Lower(before) != Lower(now.path))
        output.Say("Previously registered: " + before);
    for (const Observation& one : diagnosis.findings)
        output.Complain(std::string(SeverityName(one.severity)) + ": " + one.what);
    return ExitCode::eDone;
}

// The library that removes its own entries: the one beside this program, or the one that the
// machine has registered. None when neither can be loaded. Never one that only a user has
// registered: an administrator would run that user's code.
std::optional<RegistrableLibrary> UnregisteringLibrary(const Registration& registration) {
    for (const std::string& path : {LibraryBesideTool(), registration.ofMachine}) {
        try {
            return RegistrableLibrary(FullPath(path));
        } catch (const Failure&) {
            // Missing or damaged: its entries are removed without it.
        }
    }
    return {};
}

void UnregisterByLibrary(const Options& options, const Registration& before) {
    const ApartmentGuard apartment(ApartmentKind::eSingleThreaded);
    const std::optional<RegistrableLibrary> library =
        options.path.empty() ? UnregisteringLibrary(before)
                             : RegistrableLibrary(FullPath(options.path));
    if (!library)
        return;
    if (const HRESULT hr = library->Unregister(); hr == E_ACCESSDENIED)
        Expect(hr, options.path.empty() ? before.path : options.path, "unregistered");
}

ExitCode Unregister(const Context& context, const Options& options) {
    Output& output = context.output;
    const Registration before = ReadRegistration();
    const bool isOfMachineOnly = !options.only.empty();
    if (isOfMachineOnly && !before.ofMachine.empty() &&
        !IsSamePath(options.only, before.ofMachine)) {
        if (output.json)
            output.PrintJson({{"registered", true},
                              {"before", OrNull(before.ofMachine)},
                              {"beforeUser", OrNull(before.ofUser)}});
        else
            output.Say("Another library is registered, and stays so, with its settings: " +
                       before.ofMachine);
        return ExitCode::eDone;
    }
    if (before.IsAnythingThere()) {
        // The library would remove the user's entries first.
        if (!isOfMachineOnly || before.ofUser.empty())
            UnregisterByLibrary(options, before);
        // Also what another file, or the user, has registered.
        RemoveEntries(before,
                      isOfMachineOnly ? EntriesOf::eMachine : EntriesOf::eMachineAndUser);
    }
    const Registration now = ReadRegistration();
    const std::string& left = isOfMachineOnly ? now.ofMachine : now.path;
    if (options.settings && left.empty() && !RemoveSettings())
        output.Complain("note: " + DataFolder() +
                        " holds files that are open in another program, or not of this one; "
                        "they stay.");
    if (output.json) {
        output.PrintJson({{"registered", !left.empty()},
                          {"before", OrNull(before.ofMachine)},
                          {"beforeUser", OrNull(before.ofUser)}});
    } else if (!before.IsAnythingThere()) {
        output.Say("The library was not registered; nothing was changed.");
    } else {
        output.Say("The library is no longer registered" +
                   (before.ofMachine.empty() ? std::string(".") : ": " + before.ofMachine));
        if (!before.ofUser.empty() && !isOfMachineOnly)
            output.Say("The user's own registration was removed: " + before.ofUser);
        if (!options.settings)
            output.Say("The settings remain in the store.");
    }
    if (options.settings && !output.json && left.empty())
        output.Say("The settings are removed.");
    if (!left.empty())
        throw Failure(ExitCode::eFailed, "The library is still registered: " + left,
                      "See what is registered: kora4ctl register --check");
    return ExitCode::eDone;
}

constexpr char cRegisterFooter[] =
    "PATH defaults to QXA64T.dll beside this program. Registering writes the class, the\n"
    "application and the type library to the registry, creates the keys of the settings store\n"
    "and lets every user write to them. It also creates, unless they exist, the keys with the\n"
    "command lines of companion programs (AppKeys) and the folder for journals and backups,\n"
    "which only administrators can write; --app-keys gives keys that exist their access list\n"
    "again. It requires an administrator.\n"
    "\n"
    "--check changes nothing. The exit code is 0 when the registration is valid, 4 when the\n"
    "library is not registered, and 7 when something is wrong: the file is missing, cannot be\n"
    "loaded or is of another version than this program, or the threading model is wrong.\n"
    "\n"
    "--in-use changes nothing either. Programs keep a library that is replaced until they "
    "end.\n";

}  // namespace

void AddRegister(Context& context) {
    const auto [verb, options] =
        AddVerb(context.root, context, "register",
                "register the library, or check its registration", Register);
    verb.add_option("PATH", options.path, "the library")->type_name("PATH");
    verb.add_flag("--check", options.check,
                  "only show what is registered, where, and whether it works");
    verb.add_flag("--in-use", options.inUse,
                  "only show the programs that have loaded the library")
        ->excludes("--check");
    verb.add_flag("--app-keys", options.appKeys,
                  "let only administrators write AppKeys that are there, too");
    verb.footer(cRegisterFooter);
}

void AddUnregister(Context& context) {
    const auto [verb, options] =
        AddVerb(context.root, context, "unregister", "unregister the library", Unregister);
    verb.add_option("PATH", options.path, "the library")->type_name("PATH");
    verb.add_flag("--settings", options.settings,
                  "remove all settings, too, with their backups");
    verb.add_option("--only", options.only,
                    "for installers: leave another library and the user's entries alone")
        ->type_name("LIBRARY");
    verb.footer(
        "PATH defaults to QXA64T.dll beside this program, or else to the file registered\n"
        "for the machine. If neither can be loaded, the entries are removed without it. A\n"
        "file that only the user has registered is not loaded; its entry is removed, too. The\n"
        "settings remain in the store, unless --settings is given: end all programs that use\n"
        "them before.\n"
        "\n"
        "With --only, nothing is changed if the machine has registered another file than\n"
        "LIBRARY, and what the user has registered stays.\n");
}

}  // namespace kora4::tools
