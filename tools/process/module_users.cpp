// SPDX-License-Identifier: MIT
// Looks at the modules of each process. The Restart Manager of Windows knows who has a file
// open, but not who has loaded one that was renamed since, and not every system has it.
#include "process/module_users.h"

#include <psapi.h>

#include <algorithm>
#include <filesystem>

#include "base/text.h"
#include "platform/handles.h"

namespace kora4::tools {
namespace {

// Lets an administrator look into programs of other users. Without the privilege, those are
// left out.
void AllowLookingIntoOthers() {
    UniqueHandle token;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES, token.Put()))
        return;
    TOKEN_PRIVILEGES wanted{1, {{{}, SE_PRIVILEGE_ENABLED}}};
    if (LookupPrivilegeValueW(nullptr, L"SeDebugPrivilege", &wanted.Privileges[0].Luid))
        AdjustTokenPrivileges(token.Get(), FALSE, &wanted, 0, nullptr, nullptr);
}

// Asks again with more room while that is not enough; the answer is in bytes.
template <typename Item, typename Ask>
std::vector<Item> All(Ask ask) {
    std::vector<Item> items(256);
    for (;;) {
        DWORD size = 0;
        if (!ask(items.data(), static_cast<DWORD>(items.size() * sizeof(Item)), &size))
            return {};
        const std::size_t count = size / sizeof(Item);
        const bool isEnough = count < items.size();
        items.resize(isEnough ? count : 2 * items.size());
        if (isEnough)
            return items;
    }
}

std::string NameOf(HANDLE process, HMODULE module) {
    std::wstring path(32768, L'\0');
    path.resize(
        GetModuleFileNameExW(process, module, path.data(), static_cast<DWORD>(path.size())));
    return Narrow(path);
}

std::string Canonical(const std::string& path) {
    std::error_code error;
    const auto whole = std::filesystem::weakly_canonical(Widen(path), error);
    return Lower(error ? path : Narrow(whole.wstring()));
}

}  // namespace

std::vector<ModuleUser> UsersOfModule(const std::string& path) {
    AllowLookingIntoOthers();
    const std::string wanted = Canonical(path);
    const std::string fileName =
        Lower(Narrow(std::filesystem::path(Widen(path)).filename().wstring()));
    std::vector<ModuleUser> users;
    for (const DWORD number : All<DWORD>(EnumProcesses)) {
        const UniqueHandle process(
            OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, number));
        if (!process || number == GetCurrentProcessId())
            continue;
        const auto modules = All<HMODULE>([&process](HMODULE* items, DWORD room, DWORD* size) {
            return EnumProcessModulesEx(process.Get(), items, room, size, LIST_MODULES_64BIT);
        });
        for (const HMODULE module : modules) {
            const std::string name = NameOf(process.Get(), module);
            if (Lower(name).ends_with(fileName) && Canonical(name) == wanted) {
                users.push_back({number, NameOf(process.Get(), nullptr)});
                break;
            }
        }
    }
    std::sort(users.begin(), users.end(), [](const ModuleUser& one, const ModuleUser& other) {
        return one.process < other.process;
    });
    return users;
}

}  // namespace kora4::tools
