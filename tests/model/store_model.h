// SPDX-License-Identifier: MIT
// A model of the settings store and of what the API's methods do to it: a map of texts and
// numbers by value name, and the rules of the methods. Knows nothing of the library.
#ifndef KORA4_TESTS_MODEL_STORE_MODEL_H
#define KORA4_TESTS_MODEL_STORE_MODEL_H

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "model/seats.h"
#include "support/baseline_model.h"
#include "support/raw_store.h"

namespace kora4::test {

// The names of the technologies that clients are told of.
struct ToldTechnology {
    RawTechnology raw;
    KORA4APITechnology api;
};
inline constexpr std::array<ToldTechnology, cToldTechnologyCount> cToldTechnologies = {{
    {RawTechnology::eVolume, eVolumeLeveler},
    {RawTechnology::eEnhancement, eDialogEnhancer},
    {RawTechnology::eDynamicEQ, eIntelligentEQ},
    {RawTechnology::eStandardEQ, eGraphicEQ},
    {RawTechnology::eHeadphone, eVirtualizerHP},
    {RawTechnology::eVirtualSurround, eVirtualizerSpkr},
}};

// What a client can know of the store: the values are those of the active profile.
struct View : StoreState {
    std::array<ULONG, cToldTechnologyCount> values;  // the graphic EQ's is not used
    GraphicEQData eq;
};

// The store, and the API's methods as changes of it.
class StoreModel {
  public:
    using Value = std::variant<std::uint32_t, std::wstring>;
    // By key (true: the dynamic one) and value name.
    using Address = std::pair<bool, std::wstring>;
    using Values = std::map<Address, Value>;

    const Values& Stored() const { return m_stored; }
    View Look() const;

    // The result of a call by an object that has, or has not, entered a demo.
    HRESULT Result(const Command& command, bool inDemo) const;
    // Does what a call does that gives S_OK; fills in what it hands out.
    void Perform(const Command& command, Reply* pReply);

    // What the last Perform wrote or deleted.
    const std::vector<Address>& Touched() const { return m_touched; }

    // What a program does that is not a client of the API.
    void Write(const Address& address, const Value& value);
    void WriteSetting(bool dynamic, std::uint32_t pid, std::uint32_t value);
    std::uint32_t Setting(bool dynamic, std::uint32_t pid, std::uint32_t fallback) const;
    // The fields and the switch of a technology, as the store would hold them.
    void WriteSwitch(RawTechnology technology, std::uint32_t profile, bool on);
    void WriteField(RawTechnology technology, std::uint32_t profile, std::uint32_t pid,
                    const Value& value);

  private:
    using Record = std::vector<std::pair<std::uint32_t, Value>>;  // by property id

    std::uint32_t Number(const Address& address, std::uint32_t fallback) const;
    std::uint32_t Profile() const { return Setting(true, cProfilePid, 0); }
    bool Enable() const { return Setting(true, cEnablePid, 1) != 0; }
    bool HasName(std::uint32_t profile) const;
    bool Switch(RawTechnology technology, std::uint32_t profile) const;
    Record ReadRecord(RawTechnology technology, std::uint32_t profile, bool builtIn) const;
    ULONG ApiValue(const ToldTechnology& technology, const Record& record) const;
    void WriteRecord(RawTechnology technology, std::uint32_t profile, bool on,
                     const Record& record);
    void Announce(const std::wstring& counter);
    void SetValue(const ToldTechnology& technology, const Record& changes);
    void SwitchTo(std::uint32_t profile, bool enable);
    void LeaveDemo();
    void Revert();
    void Create(std::uint32_t profile);
    void PerformProfiles(const Command& command, Reply* pReply);
    void PerformValues(const Command& command, Reply* pReply);

    Values m_stored;
    std::vector<Address> m_touched;
};

const ToldTechnology* FindTechnology(LONG api);
// The place of one that there is.
std::size_t IndexOf(LONG api);

}  // namespace kora4::test

#endif  // KORA4_TESTS_MODEL_STORE_MODEL_H
