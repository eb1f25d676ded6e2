// SPDX-License-Identifier: MIT
// Checks of what registration leaves on the machine, and of the mutex.
#include "kora4ctl/doctor/checks.h"

#include "base/failure.h"
#include "base/results.h"
#include "base/text.h"
#include "contract/registry_paths.h"
#include "kora4ctl/registration/registration.h"
#include "platform/handles.h"

namespace kora4::tools {
namespace {

constexpr char cRegister[] = "Run as an administrator: kora4ctl register";

LSTATUS TryToOpen(const wchar_t* path, REGSAM access) {
    UniqueRegKey key;
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, access | KEY_WOW64_64KEY, key.Put());
}

// Registration refuses links: whoever made one chose its target.
bool IsLink(const wchar_t* path) {
    UniqueRegKey key;
    wchar_t name[32];
    DWORD length = ARRAYSIZE(name);
    DWORD type = REG_NONE;
    // A link has one value, and only a link has one of that type.
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, REG_OPTION_OPEN_LINK,
                         KEY_QUERY_VALUE | KEY_WOW64_64KEY, key.Put()) == ERROR_SUCCESS &&
           RegEnumValueW(key.Get(), 0, name, &length, nullptr, &type, nullptr, nullptr) ==
               ERROR_SUCCESS &&
           type == REG_LINK;
}

std::string PathInWords(const wchar_t* path) {
    return "HKEY_LOCAL_MACHINE\\" + Narrow(path);
}

// Whether the key can be read; whatever is wrong becomes a finding.
bool LookAtKey(const wchar_t* path, bool isWritten, CheckResult& result) {
    const std::string name = PathInWords(path);
    if (IsLink(path)) {
        result.Error(name + " is a link to another key; registration does not create links.",
                     "Remove the link, and run as an administrator: kora4ctl register");
        return false;
    }
    const LSTATUS reading = TryToOpen(path, KEY_READ);
    if (reading == ERROR_FILE_NOT_FOUND) {
        result.Error(name + " does not exist.", cRegister);
        return false;
    }
    if (reading != ERROR_SUCCESS) {
        result.Error(name + " cannot be opened: " + InWords(HRESULT_FROM_WIN32(reading)) + ".",
                     cRegister);
        return false;
    }
    if (isWritten && TryToOpen(path, KEY_SET_VALUE) != ERROR_SUCCESS)
        result.Error(name + " cannot be written by this user.", cRegister);
    return true;
}

}  // namespace

CheckResult CheckRegistration(Examination& examination) {
    const Registration found = ReadRegistration();
    examination.isLibraryThere = found.isTried && SUCCEEDED(found.creation);
    CheckResult result;
    result.findings = Examine(found).findings;
    result.summary = found.path + ", version " + found.fileVersion + ", for the " +
                     (found.where == RegisteredFor::eUser ? "user" : "machine");
    return result;
}

CheckResult CheckKeys(Examination& examination) {
    CheckResult result;
    LookAtKey(cBaseKeyPath, false, result);
    const bool isStaticThere = LookAtKey(cStaticKeysPath, true, result);
    const bool isDynamicThere = LookAtKey(cDynamicKeysPath, true, result);
    examination.isStoreThere = isStaticThere && isDynamicThere;
    if (result.findings.empty() && TryToOpen(cAppKeysPath, KEY_READ) == ERROR_FILE_NOT_FOUND)
        result.Note(
            "The companion programs' keys (AppKeys) do not exist: no such program is "
            "installed.",
            "No action needed, unless the product includes a profile editor or the like.");
    result.summary = "present, readable and writable";
    return result;
}

CheckResult CheckMutex(Examination& examination) {
    CheckResult result;
    try {
        const StoreLock lock(examination.patience, examination.context.interrupt.Event());
        examination.isMutexFree = true;
        if (lock.WasAbandoned())
            result.Warning(
                "A program died while it held the store's mutex. The mutex is free "
                "again; what that program was writing may be incomplete.",
                "Check the values: kora4ctl lint");
    } catch (const Failure& failure) {
        if (failure.Code() != ExitCode::eTimedOut)
            throw;
        result.Error(
            "A program has held the store's mutex for more than " +
                Decimal(static_cast<float>(examination.patience) / 1000) +
                " s, and every client is waiting for it. The program is unknown.",
            "End programs that use the settings, one by one, until the others continue; "
            "the last one ended held it.");
    }
    result.summary = "free";
    return result;
}

}  // namespace kora4::tools
