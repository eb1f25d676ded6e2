// SPDX-License-Identifier: MIT
// The check of the access lists: registration gives everybody every right.
#include "kora4ctl/doctor/checks.h"

#include <aclapi.h>
#include <sddl.h>

#include <utility>

#include "base/results.h"
#include "base/text.h"
#include "contract/registry_paths.h"
#include "platform/handles.h"
#include "process/privileges.h"
#include "registry/app_keys.h"

namespace kora4::tools {
namespace {

struct Right {
    ACCESS_MASK bits;
    const char* words;
};

// In the order of what a client misses most. Registering grants more; no client asks for it.
constexpr Right cRights[] = {
    {KEY_QUERY_VALUE, "read values"},       {KEY_SET_VALUE, "write values"},
    {KEY_NOTIFY, "be notified of changes"}, {KEY_ENUMERATE_SUB_KEYS, "list subkeys"},
    {KEY_CREATE_SUB_KEY, "create subkeys"}, {READ_CONTROL, "read the access list"},
};

// What clients ask for when they open a key. The one above the others they only pass.
struct Needed {
    const wchar_t* path;
    ACCESS_MASK rights;
};
constexpr Needed cNeeded[] = {
    {cBaseKeyPath, KEY_READ},
    {cStaticKeysPath, KEY_READ | KEY_WRITE},
    {cDynamicKeysPath, KEY_READ | KEY_WRITE},
};

ACCESS_MASK Specific(ACCESS_MASK mask) {
    GENERIC_MAPPING mapping{KEY_READ, KEY_WRITE, KEY_EXECUTE, KEY_ALL_ACCESS};
    MapGenericMask(&mask, &mapping);
    return mask;
}

// What an access list lets everybody do.
struct Granted {
    ACCESS_MASK toEverybody = 0;
    bool hasDenials = false;
};

Granted Read(PACL dacl) {
    Granted granted;
    for (DWORD i = 0; i < dacl->AceCount; ++i) {
        void* place = nullptr;
        if (!GetAce(dacl, i, &place))
            continue;
        // Allowing and denying entries are laid out alike.
        auto* const entry = static_cast<ACCESS_ALLOWED_ACE*>(place);
        if (entry->Header.AceFlags & INHERIT_ONLY_ACE)
            continue;
        if (entry->Header.AceType == ACCESS_DENIED_ACE_TYPE)
            granted.hasDenials = true;
        if (entry->Header.AceType == ACCESS_ALLOWED_ACE_TYPE &&
            IsWellKnownSid(&entry->SidStart, WinWorldSid))
            granted.toEverybody |= Specific(entry->Mask);
    }
    return granted;
}

std::string AsText(PSECURITY_DESCRIPTOR descriptor) {
    wchar_t* text = nullptr;
    if (!ConvertSecurityDescriptorToStringSecurityDescriptorW(
            descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr))
        return "unreadable";
    const UniqueLocalMemory memory(text);
    return Narrow(text);
}

std::string ListOf(const wchar_t* path) {
    UniqueRegKey key;
    PACL dacl = nullptr;
    UniqueLocalMemory descriptor;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, READ_CONTROL | KEY_WOW64_64KEY, key.Put()) !=
            ERROR_SUCCESS ||
        GetSecurityInfo(key.Get(), SE_REGISTRY_KEY, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                        &dacl, nullptr, descriptor.Put()) != ERROR_SUCCESS)
        return {};
    return AsText(descriptor.Get());
}

// Wine forgets the lists of keys when its server ends, and shows the one of every key that has
// none. Windows keeps them.
bool IsForgotten(const std::string& list) {
    return RunsUnderWine() && list == ListOf(L"SOFTWARE");
}

// What was found of all keys together.
struct Seen {
    bool isAnyThere = false;
    bool isAnyForgotten = false;
};

void LookAtAccess(const Needed& needed, CheckResult& result, Seen& seen) {
    constexpr char again[] =
        "Run as an administrator: kora4ctl register (it resets the access lists; for a key "
        "that denies even this, its owner must run it)";
    const std::string name = "HKEY_LOCAL_MACHINE\\" + Narrow(needed.path);
    UniqueRegKey key;
    const LSTATUS opening = RegOpenKeyExW(HKEY_LOCAL_MACHINE, needed.path, 0,
                                          READ_CONTROL | KEY_WOW64_64KEY, key.Put());
    // A missing key is a finding of another check.
    if (opening == ERROR_FILE_NOT_FOUND)
        return;
    seen.isAnyThere = true;
    PACL dacl = nullptr;
    UniqueLocalMemory descriptor;
    const DWORD status =
        opening != ERROR_SUCCESS
            ? static_cast<DWORD>(opening)
            : GetSecurityInfo(key.Get(), SE_REGISTRY_KEY, DACL_SECURITY_INFORMATION, nullptr,
                              nullptr, &dacl, nullptr, descriptor.Put());
    if (status != ERROR_SUCCESS) {
        result.Error("The access list of " + name +
                         " cannot be read: " + InWords(HRESULT_FROM_WIN32(status)) + ".",
                     again);
        return;
    }
    // Without a list everybody may do everything.
    if (!dacl)
        return;
    if (IsForgotten(AsText(descriptor.Get()))) {
        seen.isAnyForgotten = true;
        return;
    }
    const Granted granted = Read(dacl);
    std::vector<std::string> missing;
    for (const Right& right : cRights) {
        if ((needed.rights & ~granted.toEverybody & right.bits) != 0)
            missing.emplace_back(right.words);
    }
    const std::string list = " (access list: " + AsText(descriptor.Get()) + ")";
    if ((granted.toEverybody & needed.rights) == 0)
        result.Warning(name +
                           " grants everyone no rights: other users' programs cannot "
                           "use the settings" +
                           list + ".",
                       again);
    else if (!missing.empty())
        result.Warning(name + " does not let everyone " + Join(missing, ", ") + list + ".",
                       again);
    if (granted.hasDenials)
        result.Warning(name + " contains entries that deny access" + list + ".", again);
}

}  // namespace

CheckResult CheckAccess(Examination&) {
    CheckResult result;
    Seen seen;
    for (const Needed& needed : cNeeded)
        LookAtAccess(needed, result, seen);
    if (seen.isAnyForgotten)
        result.Note(
            "The access lists set by registration are gone: Wine loses them when its server "
            "ends. Windows keeps them.",
            "To set them again, as an administrator: kora4ctl register");
    if (!seen.isAnyThere)
        result.Note("Skipped: there are no keys.");
    if (AreAppKeysOpenToOthers())
        result.Warning("Users who are not administrators can write HKEY_LOCAL_MACHINE\\" +
                           Narrow(cAppKeysPath) + " (access list: " + ListOf(cAppKeysPath) +
                           "), and control panels of other users run its command lines.",
                       "Check the commands with 'kora4ctl list', delete the key and, as an "
                       "administrator, run: kora4ctl register");
    result.summary = "every user can read and write";
    return result;
}

}  // namespace kora4::tools
