// SPDX-License-Identifier: MIT
// Reads what is registered, key by key, tries to create the object, and says what is wrong
// with it.
#include "kora4ctl/registration/registration.h"

#include <kora4.hpp>

#include <cwchar>
#include <filesystem>
#include <vector>

#include "base/failure.h"
#include "base/results.h"
#include "base/text.h"
#include "contract/version.h"
#include "platform/handles.h"
#include "process/privileges.h"
#include "process/registered_file.h"

namespace kora4::tools {
namespace {

// What registration writes that is not in the public header.
constexpr wchar_t cLibraryName[] = L"QXA64T.dll";
constexpr wchar_t cThreadingModel[] = L"Both";

std::string TextOf(HKEY root, const std::wstring& path, const wchar_t* name = nullptr) {
    // Texts with variables are expanded.
    constexpr DWORD types = RRF_RT_REG_SZ;
    DWORD size = 0;
    RegGetValueW(root, path.c_str(), name, types, nullptr, nullptr, &size);
    std::wstring text(size / sizeof(wchar_t), L'\0');
    if (RegGetValueW(root, path.c_str(), name, types, nullptr, text.data(), &size) !=
        ERROR_SUCCESS)
        return {};
    text.resize(std::wcslen(text.c_str()));
    return Narrow(text);
}

std::vector<std::wstring> SubkeysOf(HKEY root, const std::wstring& path) {
    std::vector<std::wstring> names;
    UniqueRegKey key;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ | KEY_WOW64_64KEY, key.Put()) !=
        ERROR_SUCCESS)
        return names;
    wchar_t name[256];
    for (DWORD i = 0;; ++i) {
        DWORD length = 256;
        if (RegEnumKeyExW(key.Get(), i, name, &length, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS)
            return names;
        names.emplace_back(name, length);
    }
}

// The entry lies below the library's version and a language.
std::string TypeLibraryPath() {
    const std::wstring library = TypeLibraryKey();
    for (const std::wstring& version : SubkeysOf(HKEY_CLASSES_ROOT, library)) {
        const std::wstring below = library + L"\\" + version;
        for (const std::wstring& language : SubkeysOf(HKEY_CLASSES_ROOT, below)) {
            std::string path = TextOf(HKEY_CLASSES_ROOT, below + L"\\" + language + L"\\win64");
            if (!path.empty())
                return path;
        }
    }
    return {};
}

// Asks an object, which needs neither the store nor its initialisation for that.
void AskForVersion(Registration& registration) {
    registration.isTried = true;
    const ApartmentGuard apartment(ApartmentKind::eSingleThreaded);
    const Result<Api> api = Api::Create();
    registration.creation = api.Code();
    if (!api)
        return;
    const Result<Version> version = api->GetVeltoKORA4Version();
    registration.creation = version.Code();
    if (version)
        registration.apiVersion = VersionText(version->numbers);
}

constexpr char cReRegister[] =
    "Register the right file, as an administrator: kora4ctl register PATH";

std::string OrNothing(const std::string& version) {
    return version.empty() ? "nothing" : version;
}

void ExamineFile(const Registration& registration, Diagnosis& found) {
    if (registration.file != FileKind::eLibrary) {
        found.Error("The registered file " + WhatIsWrong(registration.file) + ".", cReRegister);
        return;
    }
    if (FAILED(registration.creation)) {
        found.Error("The registered library cannot create an object: " +
                        InWords(registration.creation) + ".",
                    cReRegister);
        return;
    }
    if (registration.fileVersion != KORA4_VERSION_TEXT)
        found.Warning("The registered file's version is " +
                          OrNothing(registration.fileVersion) +
                          ", this program's is " KORA4_VERSION_TEXT ".",
                      "Use the library and the program of the same version.");
    if (registration.isTried && registration.apiVersion != registration.fileVersion)
        found.Warning("The library reports version " + registration.apiVersion + ", its file " +
                          OrNothing(registration.fileVersion) + ".",
                      "The file was modified or replaced; reinstall it.");
}

}  // namespace

std::string LibraryBesideTool() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return Narrow((std::filesystem::path(path).parent_path() / cLibraryName).wstring());
}

std::string FullPath(const std::string& path) {
    std::error_code error;
    const auto whole = std::filesystem::absolute(Widen(path), error);
    return error ? path : Narrow(whole.lexically_normal().wstring());
}

bool IsSamePath(const std::string& one, const std::string& other) {
    const auto canonical = [](const std::string& path) {
        std::error_code error;
        std::filesystem::path whole = std::filesystem::weakly_canonical(Widen(path), error);
        if (error)
            whole = Widen(path);
        // Of the folder: the file may be gone by now.
        std::wstring folder(32768, L'\0');
        const DWORD length = GetLongPathNameW(whole.parent_path().c_str(), folder.data(),
                                              static_cast<DWORD>(folder.size()));
        if (length == 0 || length >= folder.size())
            return whole.wstring();
        folder.resize(length);
        return (folder / whole.filename()).wstring();
    };
    return CompareStringOrdinal(canonical(one).c_str(), -1, canonical(other).c_str(), -1,
                                TRUE) == CSTR_EQUAL;
}

std::string ServedClass() {
    return Narrow(GuidText(CLSID_VeltoKORA4APITestCoclass));
}

Registration ReadRegistration() {
    Registration found;
    const std::wstring server = cClassesKey + ServerKey();
    found.ofUser = TextOf(HKEY_CURRENT_USER, server);
    found.ofMachine = TextOf(HKEY_LOCAL_MACHINE, server);
    // Asked one by one: Wine does not show the user's entries among the classes.
    const bool isOfUser = !found.ofUser.empty() && (found.ofMachine.empty() || !IsElevated());
    found.path = isOfUser ? found.ofUser : found.ofMachine;
    if (!found.path.empty()) {
        const HKEY root = isOfUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
        found.where = isOfUser ? RegisteredFor::eUser : RegisteredFor::eMachine;
        found.hasBoth = !found.ofUser.empty() && !found.ofMachine.empty();
        found.title = TextOf(root, server.substr(0, server.rfind(L'\\')));
        found.threadingModel = TextOf(root, server, L"ThreadingModel");
    }
    const std::wstring apps = cAppIdKey;
    found.appId = TextOf(HKEY_CLASSES_ROOT, apps + cLibraryName, L"AppID");
    if (!found.appId.empty())
        found.appTitle = TextOf(HKEY_CLASSES_ROOT, apps + Widen(found.appId));
    found.typeLibrary = TypeLibraryPath();
    if (!found.IsThere())
        return found;
    found.file = KindOfFile(found.path);
    if (found.file == FileKind::eLibrary) {
        found.fileVersion = FileVersion(found.path);
        if (!IsElevated() || found.ofUser.empty())
            AskForVersion(found);
    }
    return found;
}

Diagnosis Examine(const Registration& registration, const std::string& expectedPath) {
    Diagnosis found;
    const std::string again = "Register it again, as an administrator: kora4ctl register";
    if (!registration.IsThere()) {
        found.Error("The library is not registered on this machine.",
                    "Register it, as an administrator: kora4ctl register PATH\\" +
                        Narrow(cLibraryName));
        return found;
    }
    ExamineFile(registration, found);
    if (!expectedPath.empty() && !IsSamePath(expectedPath, registration.path))
        found.Warning("Another file is registered: " + registration.path,
                      "Register this one, as an administrator: kora4ctl register \"" +
                          expectedPath + "\"");
    if (registration.threadingModel != Narrow(cThreadingModel))
        found.Error("The threading model is " +
                        (registration.threadingModel.empty()
                             ? "missing"
                             : "'" + registration.threadingModel + "'") +
                        " and should be '" + Narrow(cThreadingModel) +
                        "': objects are created in another apartment than their client's.",
                    again);
    if (registration.hasBoth)
        found.Warning(
            "This user's registration hides the machine's, except from programs that run "
            "elevated.",
            "Remove the user's, " + registration.ofUser +
                ": HKEY_CURRENT_USER\\Software\\Classes\\CLSID\\" + ServedClass());
    else if (registration.where == RegisteredFor::eUser)
        found.Warning("The library is registered for this user only.", again);
    if (registration.appTitle.empty())
        found.Warning("The application entries (AppID) are missing.", again);
    if (registration.typeLibrary.empty())
        found.Warning("The type library is not registered.", again);
    else if (!IsSamePath(registration.typeLibrary, registration.path))
        found.Warning(
            "The type library of another file is registered: " + registration.typeLibrary,
            again);
    return found;
}

}  // namespace kora4::tools
