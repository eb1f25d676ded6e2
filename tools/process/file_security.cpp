// SPDX-License-Identifier: MIT
// Reads owner, access list, attributes and number of names of an opened file.
#include "process/file_security.h"

#include <aclapi.h>
#include <sddl.h>

#include "base/text.h"
#include "process/privileges.h"

namespace kora4::tools {
namespace {

class OwnUser {
  public:
    OwnUser() {
        UniqueHandle token;
        DWORD length = 0;
        m_isKnown =
            OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.Put()) &&
            GetTokenInformation(token.Get(), TokenUser, m_buffer, sizeof m_buffer, &length);
    }
    // Null when the platform does not tell.
    PSID Get() {
        return m_isKnown ? reinterpret_cast<TOKEN_USER*>(m_buffer)->User.Sid : nullptr;
    }

  private:
    alignas(TOKEN_USER) unsigned char m_buffer[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
    bool m_isKnown;
};

// The user of this process.
PSID UserOfProcess() {
    static OwnUser user;
    return user.Get();
}

// For the machine, administrators alone count: on Windows the same person's programs that do
// not run elevated make files as that user. Wine shows every file as its only user's.
bool IsTrusted(PSID sid, bool isForMachine) {
    if (!sid)
        return false;
    if (IsWellKnownSid(sid, WinBuiltinAdministratorsSid) ||
        IsWellKnownSid(sid, WinLocalSystemSid))
        return true;
    return (!isForMachine || RunsUnderWine()) && UserOfProcess() &&
           EqualSid(sid, UserOfProcess());
}

// Whether the list lets somebody write who is not trusted. Without a list everybody may.
bool LetsOthersWrite(PACL list, bool isForMachine) {
    constexpr ACCESS_MASK cWriting = FILE_ADD_FILE | FILE_ADD_SUBDIRECTORY | FILE_DELETE_CHILD |
                                     DELETE | WRITE_DAC | WRITE_OWNER | GENERIC_WRITE |
                                     GENERIC_ALL;
    if (!list)
        return true;
    for (DWORD i = 0; i < list->AceCount; ++i) {
        void* place = nullptr;
        if (!GetAce(list, i, &place))
            return true;
        auto* const entry = static_cast<ACCESS_ALLOWED_ACE*>(place);
        // Denials take rights away. Entries of other types count like allowing ones, but who
        // they are about stands elsewhere in them.
        if (entry->Header.AceFlags & INHERIT_ONLY_ACE ||
            entry->Header.AceType == ACCESS_DENIED_ACE_TYPE || !(entry->Mask & cWriting))
            continue;
        if (entry->Header.AceType != ACCESS_ALLOWED_ACE_TYPE ||
            !IsTrusted(&entry->SidStart, isForMachine))
            return true;
    }
    return false;
}

// Windows opens a link itself; Wine opens what it leads to, and shows that by the name alone.
bool StandsElsewhere(HANDLE file, const std::string& path) {
    if (!RunsUnderWine())
        return false;
    union {
        FILE_NAME_INFO info;
        char room[sizeof(FILE_NAME_INFO) + 0x10000];
    } name;
    if (!GetFileInformationByHandleEx(file, FileNameInfo, &name, sizeof name))
        return true;
    const std::wstring_view found(name.info.FileName,
                                  name.info.FileNameLength / sizeof(wchar_t));
    constexpr std::size_t cDrive = 2;  // "C:", which the name of an opened file lacks
    return path.size() < cDrive || Lower(Narrow(found)) != Lower(path.substr(cDrive));
}

}  // namespace

bool FileSecurity::IsForMachine() const {
    return IsElevated();
}

FileFacts FileSecurity::FactsOf(HANDLE file, const std::string& path) const {
    FileFacts facts;
    FILE_BASIC_INFO basic{};
    FILE_STANDARD_INFO standard{};
    PSID owner = nullptr;
    PACL list = nullptr;
    UniqueLocalMemory descriptor;
    // What cannot be asked is taken for the worst.
    if (!GetFileInformationByHandleEx(file, FileBasicInfo, &basic, sizeof basic) ||
        !GetFileInformationByHandleEx(file, FileStandardInfo, &standard, sizeof standard) ||
        GetSecurityInfo(file, SE_FILE_OBJECT,
                        OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, &owner, nullptr,
                        &list, nullptr, descriptor.Put()) != ERROR_SUCCESS)
        return facts;
    facts.isFolder = basic.FileAttributes & FILE_ATTRIBUTE_DIRECTORY;
    facts.isLink = basic.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT;
    facts.isElsewhere = StandsElsewhere(file, path);
    facts.hasSeveralNames = standard.NumberOfLinks > 1;
    facts.hasTrustedOwner = IsTrusted(owner, IsForMachine());
    facts.isOpenToOthers = LetsOthersWrite(list, IsForMachine());
    return facts;
}

std::wstring FileSecurity::ListForNew() const {
    std::wstring common = L"D:P(A;OICI;FA;;;BA)(A;OICI;FA;;;SY)";
    if (IsForMachine())
        return L"O:BA" + common + L"(A;OICI;FRFX;;;WD)";
    wchar_t* text = nullptr;
    if (!UserOfProcess() || !ConvertSidToStringSidW(UserOfProcess(), &text))
        return common;
    const UniqueLocalMemory memory(text);
    return common + L"(A;OICI;FA;;;" + text + L")";
}

const FileSecurity& PlatformFileSecurity() {
    static const FileSecurity platform;
    return platform;
}

UniqueHandle OpenItself(const std::string& path, DWORD access, DWORD share) {
    const HANDLE file = CreateFileW(
        Widen(path).c_str(), access | FILE_READ_ATTRIBUTES | READ_CONTROL, share, nullptr,
        OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    return UniqueHandle(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

}  // namespace kora4::tools
