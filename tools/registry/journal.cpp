// SPDX-License-Identifier: MIT
// The journal as a file: its text, who may have written it, and how it gets to its place
// whole.
#include "registry/journal.h"

#include <windows.h>

#include <aclapi.h>

#include "base/output.h"
#include "base/text.h"
#include "process/files.h"

namespace kora4::tools {
namespace {

constexpr char cFormat[] = "kora4-journal";
constexpr int cVersion = 1;

bool IsAbsent(DWORD error) {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

bool Exists(const std::string& path) {
    return GetFileAttributesW(Widen(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

void MakeFolderOf(const std::string& path) {
    const std::string folder = path.substr(0, path.find_last_of("\\/"));
    if (folder != path && !CreateDirectoryW(Widen(folder).c_str(), nullptr) &&
        GetLastError() != ERROR_ALREADY_EXISTS)
        throw Win32Failure(GetLastError(), "The folder " + folder + " cannot be created");
}

// ---- The owner --------------------------------------------------------------------------

bool IsCurrentUser(PSID owner) {
    UniqueHandle token;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.Put()))
        return false;
    alignas(TOKEN_USER) unsigned char buffer[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
    DWORD length = 0;
    return GetTokenInformation(token.Get(), TokenUser, buffer, sizeof buffer, &length) &&
           EqualSid(owner, reinterpret_cast<TOKEN_USER*>(buffer)->User.Sid);
}

// Every user may create a file in that folder; an administrator who repairs the store from one
// would write on behalf of that user.
bool IsTrusted(HANDLE file) {
    PSID owner = nullptr;
    UniqueLocalMemory descriptor;
    if (GetSecurityInfo(file, SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner, nullptr,
                        nullptr, nullptr, descriptor.Put()) != ERROR_SUCCESS)
        return false;
    return owner &&
           (IsCurrentUser(owner) || IsWellKnownSid(owner, WinBuiltinAdministratorsSid) ||
            IsWellKnownSid(owner, WinLocalSystemSid));
}

// ---- The text ---------------------------------------------------------------------------

Json ToJson(const std::optional<StoredValue>& value) {
    if (!value)
        return nullptr;
    return {{"type", value->type}, {"data", ToHex(value->bytes)}};
}

std::optional<StoredValue> ValueFromJson(const Json& json) {
    if (json.is_null())
        return {};
    std::optional<Bytes> bytes = FromHex(json.at("data").get<std::string>());
    if (!bytes)
        throw std::invalid_argument("data");
    return StoredValue{json.at("type").get<std::uint32_t>(), std::move(*bytes)};
}

PropertyKey KeyFromJson(const Json& json) {
    const std::optional<PropertyKey> key = ParseValueName(json.get<std::string>());
    if (!key)
        throw std::invalid_argument("value name");
    return *key;
}

std::string ToText(const Journal& journal) {
    Json document = {{"format", cFormat}, {"version", cVersion}};
    Json entries = Json::array();
    for (const JournalEntry& entry : journal.entries)
        entries.push_back({{"keys", entry.keySet},
                           {"value", ValueName(entry.key)},
                           {"before", ToJson(entry.before)},
                           {"after", ToJson(entry.after)}});
    Json counters = Json::array();
    for (const PropertyKey& counter : journal.counters)
        counters.push_back(ValueName(counter));
    document["entries"] = std::move(entries);
    document["counters"] = std::move(counters);
    return document.dump() + "\n";
}

// Throws whatever the JSON library does, or std::invalid_argument.
Journal FromText(const std::string& text) {
    const Json document = Json::parse(text);
    if (document.at("format") != cFormat || document.at("version") != cVersion)
        throw std::invalid_argument("format");
    Journal journal;
    for (const Json& entry : document.at("entries")) {
        const auto keySet = entry.at("keys").get<std::uint32_t>();
        if (keySet < eKeySetStatic || keySet > eKeySetApp)
            throw std::invalid_argument("keys");
        journal.entries.push_back(
            {static_cast<KORA4KeySet>(keySet), KeyFromJson(entry.at("value")),
             ValueFromJson(entry.at("before")), ValueFromJson(entry.at("after"))});
    }
    for (const Json& counter : document.at("counters"))
        journal.counters.push_back(KeyFromJson(counter));
    return journal;
}

}  // namespace

std::string DefaultJournalPath() {
    wchar_t folder[MAX_PATH] = L"";
    const DWORD length = GetEnvironmentVariableW(L"ProgramData", folder, MAX_PATH);
    const bool isKnown = length > 0 && length < MAX_PATH;
    return (isKnown ? Narrow(folder) : std::string("C:\\ProgramData")) +
           "\\KORA4\\load.journal";
}

void JournalFile::Write(const Journal& journal) const {
    MakeFolderOf(m_path);
    WriteWholeFile(m_path, ToText(journal));
}

void JournalFile::Remove() const {
    for (const std::string& path : {m_path, UnfinishedPath(m_path)})
        if (!DeleteFileW(Widen(path).c_str()) && !IsAbsent(GetLastError()))
            throw CannotBe("removed", path, GetLastError());
}

JournalFile::State JournalFile::Read(Journal& journal) const {
    const UniqueHandle file = OpenPath(m_path, GENERIC_READ, OPEN_EXISTING);
    if (!file) {
        if (!IsAbsent(GetLastError()))
            throw CannotBe("opened", m_path, GetLastError());
        return Exists(UnfinishedPath(m_path)) ? State::eCutShort : State::eAbsent;
    }
    if (!IsTrusted(file.Get()))
        return State::eUnreadable;
    std::string text;
    if (!ReadToEnd(file.Get(), text))
        throw CannotBe("read", m_path, GetLastError());
    // The only newline is the last thing that is written.
    if (text.empty() || text.back() != '\n')
        return State::eCutShort;
    try {
        journal = FromText(text);
    } catch (const std::exception&) {
        return State::eUnreadable;
    }
    return State::eWhole;
}

}  // namespace kora4::tools
