// SPDX-License-Identifier: MIT
// The journal as a file: its text, who may have written it, and how it gets to its place
// whole.
#include "registry/journal.h"

#include <windows.h>

#include <aclapi.h>

#include <memory>

#include "base/failure.h"
#include "base/output.h"
#include "base/results.h"
#include "base/text.h"
#include "process/handles.h"

namespace kora4::tools {
namespace {

constexpr char cFormat[] = "kora4-journal";
constexpr int cVersion = 1;

[[noreturn]] void Refuse(const std::string& doing, const std::string& path) {
    const DWORD error = GetLastError();
    throw Failure(ExitCode::eFailed,
                  doing + " " + path + ": " + InWords(HRESULT_FROM_WIN32(error)) + ".",
                  error == ERROR_ACCESS_DENIED
                      ? "The file may belong to another user: run this as that user or as an "
                        "administrator."
                      : "");
}

std::string UnfinishedPath(const std::string& path) {
    return path + ".new";
}

UniqueHandle Open(const std::string& path, DWORD access, DWORD disposition) {
    const HANDLE file = CreateFileW(Widen(path).c_str(), access, FILE_SHARE_READ, nullptr,
                                    disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    return UniqueHandle(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

bool IsAbsent(DWORD error) {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

bool Exists(const std::string& path) {
    return GetFileAttributesW(Widen(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

void MakeFolderOf(const std::string& path) {
    const std::size_t end = path.find_last_of("\\/");
    if (end == std::string::npos)
        return;
    const std::string folder = path.substr(0, end);
    if (!CreateDirectoryW(Widen(folder).c_str(), nullptr) &&
        GetLastError() != ERROR_ALREADY_EXISTS)
        Refuse("Creating the folder", folder);
}

// ---- The owner --------------------------------------------------------------------------

struct LocalDeleter {
    void operator()(void* memory) const { LocalFree(memory); }
};

bool IsWellKnown(PSID owner, WELL_KNOWN_SID_TYPE type) {
    return IsWellKnownSid(owner, type) != FALSE;
}

bool IsCurrentUser(PSID owner) {
    HANDLE opened = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened))
        return false;
    const UniqueHandle token(opened);
    alignas(TOKEN_USER) unsigned char buffer[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
    DWORD length = 0;
    return GetTokenInformation(token.Get(), TokenUser, buffer, sizeof buffer, &length) &&
           EqualSid(owner, reinterpret_cast<TOKEN_USER*>(buffer)->User.Sid);
}

// Every user may create a file in that folder; an administrator who repairs the store from one
// would write on behalf of that user.
bool IsTrusted(HANDLE file) {
    PSID owner = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (GetSecurityInfo(file, SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner, nullptr,
                        nullptr, nullptr, &descriptor) != ERROR_SUCCESS)
        return false;
    const std::unique_ptr<void, LocalDeleter> memory(descriptor);
    return owner && (IsCurrentUser(owner) || IsWellKnown(owner, WinBuiltinAdministratorsSid) ||
                     IsWellKnown(owner, WinLocalSystemSid));
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
    const std::string unfinished = UnfinishedPath(m_path);
    {
        const UniqueHandle file = Open(unfinished, GENERIC_WRITE, CREATE_ALWAYS);
        if (!file)
            Refuse("Creating", unfinished);
        const std::string text = ToText(journal);
        DWORD written = 0;
        if (!WriteFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &written,
                       nullptr) ||
            written != text.size() || !FlushFileBuffers(file.Get()))
            Refuse("Writing", unfinished);
    }
    if (!MoveFileExW(Widen(unfinished).c_str(), Widen(m_path).c_str(),
                     MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        Refuse("Putting the journal in its place at", m_path);
}

void JournalFile::Remove() const {
    for (const std::string& path : {m_path, UnfinishedPath(m_path)})
        if (!DeleteFileW(Widen(path).c_str()) && !IsAbsent(GetLastError()))
            Refuse("Removing", path);
}

JournalFile::State JournalFile::Read(Journal& journal) const {
    const UniqueHandle file = Open(m_path, GENERIC_READ, OPEN_EXISTING);
    if (!file) {
        if (!IsAbsent(GetLastError()))
            Refuse("Opening", m_path);
        return Exists(UnfinishedPath(m_path)) ? State::eCutShort : State::eAbsent;
    }
    if (!IsTrusted(file.Get()))
        return State::eUnreadable;
    std::string text;
    char buffer[4096];  // not cMaxTextBytes: any size will do
    DWORD read = 0;
    do {
        if (!ReadFile(file.Get(), buffer, sizeof buffer, &read, nullptr))
            Refuse("Reading", m_path);
        text.append(buffer, read);
    } while (read > 0);
    // The only newline is written last: without it the journal was cut short.
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
