// SPDX-License-Identifier: MIT
// The journal as a file: its text, and how it is read back.
#include "registry/journal.h"

#include "base/output.h"
#include "base/strict_json.h"
#include "process/files.h"

namespace kora4::tools {
namespace {

constexpr char cFormat[] = "kora4-journal";
constexpr std::uint32_t cVersion = 1;

// ---- The text ---------------------------------------------------------------------------

Json ToJson(const std::optional<StoredValue>& value) {
    if (!value)
        return nullptr;
    if (value->unread)
        return {{"type", value->type}, {"unread", value->unread}};
    return {{"type", value->type}, {"data", ToHex(value->bytes)}};
}

// A fraction or a negative number would be cut to one.
std::uint32_t NumberFromJson(const Json& json) {
    if (!json.is_number_unsigned() || json.get<std::uint64_t>() > UINT32_MAX)
        throw std::invalid_argument("number");
    return json.get<std::uint32_t>();
}

std::optional<StoredValue> ValueFromJson(const Json& json) {
    if (json.is_null())
        return {};
    if (json.contains("unread"))
        return StoredValue{
            NumberFromJson(json.at("type")), {}, NumberFromJson(json.at("unread"))};
    std::optional<Bytes> bytes = FromHex(json.at("data").get<std::string>());
    if (!bytes)
        throw std::invalid_argument("data");
    return StoredValue{NumberFromJson(json.at("type")), std::move(*bytes)};
}

// A walk over anything but an array would not fail.
const Json& ArrayIn(const Json& document, const char* member) {
    const Json& array = document.at(member);
    if (!array.is_array())
        throw std::invalid_argument(member);
    return array;
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

// Throws whatever the JSON library does, Failure, or std::invalid_argument.
Journal FromText(const std::string& text) {
    const Json document = ParseStrictJson(text);
    if (document.at("format") != cFormat || NumberFromJson(document.at("version")) != cVersion)
        throw std::invalid_argument("format");
    Journal journal;
    for (const Json& entry : ArrayIn(document, "entries")) {
        const std::uint32_t keySet = NumberFromJson(entry.at("keys"));
        if (keySet < eKeySetStatic || keySet > eKeySetApp)
            throw std::invalid_argument("keys");
        journal.entries.push_back(
            {static_cast<KORA4KeySet>(keySet), KeyFromJson(entry.at("value")),
             ValueFromJson(entry.at("before")), ValueFromJson(entry.at("after"))});
    }
    for (const Json& counter : ArrayIn(document, "counters"))
        journal.counters.push_back(KeyFromJson(counter));
    return journal;
}

}  // namespace

namespace {

bool BeginsLikeJournal(std::string_view text) {
    const std::string begin = ToText({});
    const std::size_t common = std::min(text.size(), begin.find(','));
    return text.substr(0, common) == std::string_view(begin).substr(0, common);
}

}  // namespace

std::string DefaultJournalPath() {
    return GuardedFolder(DataFolder()).PathOf("load.journal");
}

JournalFile::JournalFile(const std::string& path, const FileSecurity& security)
    : m_path(path),
      m_folder(path.substr(0, path.find_last_of("\\/")), security),
      m_name(path.substr(path.find_last_of("\\/") + 1)) {}

void JournalFile::Write(const Journal& journal) const {
    m_folder.Write(m_name, ToText(journal));
}

void JournalFile::Remove() const {
    for (const std::string& name : {m_name, UnfinishedPath(m_name)})
        m_folder.Remove(name);
}

std::string JournalFile::MoveAside() const {
    const std::string unfinished = UnfinishedPath(m_name);
    const bool isJournalThere = m_folder.Find(m_name) != Standing::eAbsent;
    std::string moved = m_folder.MoveAside(isJournalThere ? m_name : unfinished);
    if (isJournalThere)
        m_folder.Remove(unfinished);
    return moved;
}

bool JournalFile::IsThere() const {
    return m_folder.Find(m_name) != Standing::eAbsent ||
           m_folder.Find(UnfinishedPath(m_name)) != Standing::eAbsent;
}

JournalFile::State JournalFile::Read(Journal& journal) const {
    switch (m_folder.Find(m_name)) {
        case Standing::eStrange:
            return State::eUnreadable;
        case Standing::eAbsent:
            switch (m_folder.Find(UnfinishedPath(m_name))) {
                case Standing::eAbsent:
                    return State::eAbsent;
                case Standing::eStrange:
                    return State::eUnreadable;
                case Standing::eTrusted:
                    return State::eCutShort;
            }
        case Standing::eTrusted:
            break;
    }
    const std::string text = m_folder.Read(m_name);
    // The only newline is the last thing that is written.
    if (text.empty() || (text.back() != '\n' && BeginsLikeJournal(text)))
        return State::eCutShort;
    try {
        journal = FromText(text);
    } catch (const std::exception&) {
        return State::eUnreadable;
    }
    return State::eWhole;
}

}  // namespace kora4::tools
